// The base of every action, and what a running action may ask of its host.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "WrenProcess.h"
#include "WrenProperties.h"
#include "WrenScripts.h"
#include "WrenTypes.h"

namespace wren {

class TCustomWrenAction;
class TWrenExecuteAbstractAction;

/// Receives the problems an action's Validate finds: one report per problem.
class IWrenActionValidationError {
 public:
  virtual ~IWrenActionValidationError() = default;
  virtual void AddError(const std::string& field, const std::string& message) = 0;
};

/// What the host needs to start one program for an execute action.
struct TWrenProcessRequest {
  std::string executable;
  std::string commandLine;
  std::string workingDir;
  IWrenProcess::TLineHandler onStdOut;
  IWrenProcess::TLineHandler onStdErr;
};

/// The host side of a running step: log, expansion, stop requests, scripts and process start.
class IWrenActionHost {
 public:
  virtual ~IWrenActionHost() = default;
  /// One line in the build log of the running step.
  virtual void SendMessage(const std::string& text) = 0;
  /// Expands %NAME% variables. On failure returns false and logs one line naming the caption;
  /// with blankFails an empty result also fails.
  virtual bool TryExpandExpression(const std::string& caption, const std::string& value,
                                   bool blankFails, std::string& result) = 0;
  virtual bool StopSignalled() = 0;
  /// Runs a script with its parameters as globals; parameters are read back afterwards.
  /// A script error is logged with the script's name and line and answers false.
  virtual bool ExecuteScript(TCustomWrenAction& action, TWrenActionScript& script,
                             WrenVariant& result) = 0;
  /// Starts the program of an execute action and waits for it.
  virtual TWrenProcessResult RunProcess(TWrenExecuteAbstractAction& action,
                                        const TWrenProcessRequest& request) = 0;
  /// The file name execute actions hand to GetStartingDir (the build project's); "" for none.
  virtual std::string StartingFileName() { return ""; }
};

/// The base of all actions. Subclasses publish their settings through GetPublishedProperties and
/// override the operations below. `TWrenAction` names the same type in page signatures.
class TCustomWrenAction {
 public:
  TCustomWrenAction() = default;
  virtual ~TCustomWrenAction() = default;
  TCustomWrenAction(const TCustomWrenAction&) = delete;
  TCustomWrenAction& operator=(const TCustomWrenAction&) = delete;

  /// The registered class name ("TGACInstallAction").
  virtual std::string ClassName() const = 0;
  /// The display name; every concrete class also has a static GetActionName used at registration.
  virtual std::string DisplayName() const = 0;

  virtual int GetHelpTopicID() const { return 0; }
  virtual std::string GetQuickHelpFilename() const { return ""; }
  /// Appends names of properties the generic property views must not show.
  virtual void GetHiddenProperties(TStrings& list) const { (void)list; }
  virtual std::string GetDefaultPropertyName() const { return ""; }
  virtual std::string GetCopyRight() const;
  /// Reports each problem to the sink; false when anything was reported.
  virtual bool Validate(IWrenActionValidationError& errors) {
    (void)errors;
    return true;
  }
  /// Called after the host has restored the stored properties.
  virtual void Loaded() {}
  /// One run of the step; true on success.
  virtual bool Execute() = 0;
  virtual bool CanTerminate() { return false; }
  virtual void TerminateAction() {}
  /// Declares the parameters of a script to the host's script editor.
  virtual void InitialiseScriptParams(TWrenActionScript& script) { (void)script; }

  virtual std::string GetDescription() const { return description_; }
  void SetDescription(const std::string& text) { description_ = text; }
  /// What a user should know about the class's tool before using it (limits, undocumented
  /// parts); shown by the host's action descriptions, never stored.
  virtual std::string GetNotes() const { return ""; }

  static const TPropertyTable& ClassProperties();
  virtual const TPropertyTable& GetPublishedProperties() const { return ClassProperties(); }

  // Services of the running step (through the host set with SetHost).
  void SendMessage(const std::string& text);
  /// Expands without a caption; an expansion failure gives the text unchanged.
  std::string ExpandExpression(const std::string& value);
  bool TryExpandExpression(const std::string& caption, const std::string& value, bool blankFails,
                           std::string& result);
  std::string EncryptString(const std::string& text) const;
  std::string DecryptString(const std::string& text) const;
  bool StopSignalled();

  // Scripts.
  TWrenActionScript& AddScript(const std::string& name);
  TWrenActionScript* GetScriptByName(const std::string& name);
  std::vector<TWrenActionScript>& Scripts() { return scripts_; }
  const std::vector<TWrenActionScript>& Scripts() const { return scripts_; }
  /// Runs the named script with its current parameters; false on a script error or no host.
  bool ExecuteScript(const std::string& name, WrenVariant& result);

  void SetHost(IWrenActionHost* host) { host_ = host; }
  IWrenActionHost* Host() const { return host_; }

 private:
  std::string description_;
  std::vector<TWrenActionScript> scripts_;
  IWrenActionHost* host_ = nullptr;
};

using TWrenAction = TCustomWrenAction;

/// A registered action class: its name and how to make one.
struct TWrenActionClass {
  std::string name;
  std::function<std::unique_ptr<TCustomWrenAction>()> create;
};

template <class A>
TWrenActionClass ActionClassOf() {
  return {A::StaticClassName(), [] { return std::unique_ptr<TCustomWrenAction>(new A()); }};
}

}  // namespace wren
