// The command-line builder that execute actions append their arguments to.
#pragma once

#include <memory>
#include <string>

namespace wren {

/// One argument as it was added; kept for callers that want its rendered text.
class IArgument {
 public:
  virtual ~IArgument() = default;
  virtual std::string GetText() const = 0;
};

/// Collects the command line of one run of an external program.
///
/// Rendering: an empty value gives the switch alone, an empty switch the value alone; otherwise
/// switch + separator + value, where a switch ending in ':' or '=' is joined to its value directly.
/// Modes: 0 = the value as it stands; 2 = quoted when it holds a blank or tab and no double quote;
/// 1 = always quoted. Quoting doubles trailing backslashes so the Windows argument rules give the
/// value back unchanged.
class ICommandLineBuilder {
 public:
  virtual ~ICommandLineBuilder() = default;
  virtual void SetSeparator(const std::string& separator) = 0;
  virtual std::string GetCommandLineText() const = 0;
  virtual std::shared_ptr<IArgument> AddArgument(const std::string& switchText,
                                                 const std::string& value, int mode) = 0;
  virtual void Clear() = 0;
};

std::shared_ptr<ICommandLineBuilder> CreateCommandLineBuilder();

}  // namespace wren
