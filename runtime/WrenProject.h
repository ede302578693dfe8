// Build projects (.mbproj): loading, running order and byte-faithful saving.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "WrenActionAPI.h"

namespace wren {

struct TWrenProjectVariable {
  std::string name;
  std::string value;
};

/// One action of the build list.
struct TWrenProjectStep {
  std::string className;
  std::unique_ptr<TCustomWrenAction> action;
  bool enabled = true;
  int line = 0;  // line of the <Action> element in the file
};

/// Why a project could not be loaded: file, line, action and property where they apply.
struct TWrenProjectError {
  std::string file;
  int line = 0;
  std::string action;    // class name, "" when the error is outside an action
  std::string property;  // property or script name, "" when none
  std::string message;
  /// "file:line: action 'TX', property 'Y': message" (parts left out when empty).
  std::string ToString() const;
};

/// How project text is read; every reading gives the same project or the same error.
enum class TWrenProjectReading {
  /// One action at a time, so that a big project never has its whole tree in memory; what the
  /// quick look does not expect, and every error, is read again as a whole tree.
  Streamed,
  /// The whole document as one tree.
  WholeTree,
  /// One action at a time without reading again: fails wherever Streamed falls back (tests).
  StreamedOnly,
};

/// Makes an action of a registered class; nullptr for an unknown class name.
using TWrenActionFactory = std::function<std::unique_ptr<TCustomWrenAction>(const std::string&)>;

/// A loaded build project. It keeps the document it was read from so that saving an unchanged
/// project writes the same bytes, and a changed one changes only what changed.
class TWrenProject {
 public:
  TWrenProject();
  ~TWrenProject();
  TWrenProject(TWrenProject&&) noexcept;
  TWrenProject& operator=(TWrenProject&&) noexcept;

  std::string fileName;
  std::vector<TWrenProjectVariable> variables;
  std::vector<TWrenProjectStep> steps;

  /// Loads a project file. Stored property values are applied in each class's declaration order,
  /// whatever their order in the file. Nothing is kept on failure.
  bool Load(const std::string& path, const TWrenActionFactory& factory, TWrenProjectError& error);
  /// Parses project text as if read from fileName.
  bool LoadFromText(const std::string& text, const std::string& fileName,
                    const TWrenActionFactory& factory, TWrenProjectError& error,
                    TWrenProjectReading reading = TWrenProjectReading::Streamed);
  /// Writes the current state (atomically). Unchanged projects give back the bytes they came from.
  bool Save(const std::string& path, std::string& error);
  std::string SaveToText();

 private:
  bool LoadBytes(std::string text, const std::string& fileName, const TWrenActionFactory& factory,
                 TWrenProjectError& error, TWrenProjectReading reading);

  struct TDocument;
  std::unique_ptr<TDocument> doc_;
};

}  // namespace wren
