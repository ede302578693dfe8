// Bringing a COM reference of a Visual Studio 2002/2003 project up to the type library that is
// registered on the build machine.
#pragma once

#include <stdexcept>
#include <string>

#include "WrenActionAPI.h"

namespace wren {

/// A text that should have been a number was not: raised to the host, which ends the step.
class EConvertError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Looks a COM class up by its ProgID (ProgID → CLSID → type library GUID → first registered
/// version) and writes Guid, VersionMajor and VersionMinor into the tlbimp reference of that name in
/// a C#, VB.NET or J# project file. Runs in process; everything else in the file is left as it was.
class TWrenDotNetComReferenceFixAction : public TCustomWrenAction {
 public:
  static std::string StaticClassName() { return "TWrenDotNetComReferenceFixAction"; }
  static std::string GetActionName() { return "Fix TlbImp Project Reference"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 4220; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\ComRefAction.html"; }

  /// True only when the project file was updated and saved. A version subkey that is not
  /// hexadecimal raises EConvertError.
  bool Execute() override;

  /// The XPath format (one %s for the reference name) for the project's extension, compared in
  /// lower case; "" for a project type the action does not handle.
  static std::string ProjectTypeFromFileExt(const std::string& fileName);

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string ProgID;         // library.class, as Word.Document
  std::string ReferenceName;  // as the References section of Visual Studio shows it
  std::string ProjectFile;
};

}  // namespace wren
