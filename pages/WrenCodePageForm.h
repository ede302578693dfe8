// The code-page picker the compiler option pages open from their code-page field.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

/// Lists the code pages the system supports (Windows code-page numbers); false with the system's
/// message when they cannot be listed.
using TCodePageEnumerator = std::function<bool(std::vector<int>& codePages, std::string& error)>;

/// The system's supported code pages. Windows: EnumSystemCodePages. POSIX: the Windows code pages
/// for which the platform's converter (iconv) has a conversion.
bool EnumSystemCodePageNumbers(std::vector<int>& codePages, std::string& error);

/// A modal dialog: a list of "number - name" items, OK and Cancel. OK needs a selection.
class TCodePageForm {
 public:
  enum class TModalResult { mrNone, mrOk, mrCancel };

  explicit TCodePageForm(TCodePageEnumerator enumerate = EnumSystemCodePageNumbers);

  static std::string StaticClassName() { return "TCodePageForm"; }

  /// OK: without a selection sets message to "Please select a code page." and keeps the dialog
  /// open (false); with one closes it as accepted.
  bool OKClick(std::string& message);
  void CancelClick() { modalResult = TModalResult::mrCancel; }
  /// Shows the list (filled when the form was made) through the host's list chooser, starting
  /// at the current selection. On acceptance selects the chosen item and runs OKClick; true when
  /// the form closed as accepted (modalResult mrOk), false with mrCancel otherwise.
  bool ShowModal();
  /// The number in front of the selected item's first blank; 0 when nothing is selected.
  int GetCodePage() const;

  std::string caption = "Choose a Code page";
  TLabelModel lblCodePages{"Available Code Pages"};
  TComboBoxModel lbCodePages;
  std::string btnOK = "OK";
  std::string btnCancel = "Cancel";
  /// The message shown when the code pages could not be listed; "" otherwise.
  std::string errorMessage;
  TModalResult modalResult = TModalResult::mrNone;
};

}  // namespace wren
