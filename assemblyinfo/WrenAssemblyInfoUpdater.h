// Rewrites the assembly-level attributes of one source file in place and adds the missing ones.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "WrenFiles.h"
#include "WrenTypes.h"

namespace wren {

/// The source language of a file, chosen from its extension.
enum class TWrenAssemblyInfoLanguage { alPascal, alCSharp, alVB, alCPP, alOther };

/// A string-list index outside the list; raised when new lines are inserted into a Pascal file
/// whose stop line was never found.
class EStringListError : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};

/// A source file (or its backup) that could not be read or written.
class EWrenFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class IWrenAssemblyInfoCallBack;
class TWrenAssemblyInfo;

/// What the updater action holds: the entries to apply and the per-file operation.
class IWrenAssemblyInfoUpdater {
 public:
  static constexpr const char* GUID = "{01b9c1aa-c003-482e-94d2-3fc35586951f}";
  virtual ~IWrenAssemblyInfoUpdater() = default;
  /// Sets Name to Value (replacing an entry of that name) with its quoted flag; an empty value is
  /// appended as a new "Name=" item without looking for an existing one.
  virtual void AddEntry(const std::string& name, const std::string& value, bool quoted) = 0;
  /// Deletes the entry of that name, if there is one.
  virtual void RemoveEntry(const std::string& name) = 0;
  /// Rewrites one file with the current entries; the entries are emptied however it ends.
  /// Load and save errors (EWrenFileError) and list index errors (EStringListError) are thrown.
  virtual bool ProcessFile(const std::string& fileName, bool createBackup) = 0;
  /// Writes the current lines to the file, each ended by CR LF, through the atomic writer.
  virtual void SaveToFile(const std::string& fileName) = 0;
  /// The receiver of messages and questions; not owned, may be null.
  virtual void SetCallBack(IWrenAssemblyInfoCallBack* callBack) = 0;
  virtual TWrenAssemblyInfo* GetImplementation() = 0;
};

/// Receives an updater's per-file notice, its log lines and a say over every attribute value.
class IWrenAssemblyInfoCallBack {
 public:
  static constexpr const char* GUID = "{b2b650a4-166c-41a6-bbb6-5143251baa0a}";
  virtual ~IWrenAssemblyInfoCallBack() = default;
  /// Once per file, after loading and before scanning; may add or remove entries for this file.
  virtual void OnProcessFile(const std::string& fileName,
                             const std::shared_ptr<IWrenAssemblyInfoUpdater>& updater) = 0;
  virtual void AssemblyInfoProcessMessage(const std::string& message) = 0;
  /// For every assembly attribute found; the receiver may change the value.
  virtual void AssemblyInfoProcessEntry(const std::string& fileName, const std::string& entryName,
                                        std::string& entryValue) = 0;
};

/// The line-oriented attribute rewriter behind IWrenAssemblyInfoUpdater. Opening, Keyword and
/// Closing of the last attribute line read carry over to later lines and later files: new lines
/// copy the bracket style of the last attribute seen. Lines are spans of the text as read; only
/// the lines it makes are new text, and its buffers are reused from file to file.
class TWrenAssemblyInfo final : public IWrenAssemblyInfoUpdater,
                                public std::enable_shared_from_this<TWrenAssemblyInfo> {
 public:
  /// One entry: its "Name=Value" text and whether the value is written between quotes.
  struct TEntry {
    std::string text;
    bool quoted = false;
  };

  explicit TWrenAssemblyInfo(bool updateOnly) : updateOnly_(updateOnly) {}

  void AddEntry(const std::string& name, const std::string& value, bool quoted) override;
  void RemoveEntry(const std::string& name) override;
  bool ProcessFile(const std::string& fileName, bool createBackup) override;
  /// ProcessFile of the file name in folder, known to messages and scripts as fileName: its
  /// reads and writes look up name alone.
  bool ProcessFileIn(const TWrenFolderRef& folder, const std::string& name,
                     const std::string& fileName, bool createBackup);
  void SaveToFile(const std::string& fileName) override;
  void SetCallBack(IWrenAssemblyInfoCallBack* callBack) override { callBack_ = callBack; }
  /// Whether the callback is asked about attributes no entry names (the default). A callback
  /// that leaves their values as they are says no: such lines are then passed over uncopied.
  void SetAskAboutEveryAttribute(bool ask) { askEvery_ = ask; }
  TWrenAssemblyInfo* GetImplementation() override { return this; }

  /// The current lines (a copy).
  TStrings Lines() const;
  const std::vector<TEntry>& Entries() const { return entries_; }
  const std::string& Keyword() const { return keyword_.Get(); }
  const std::string& Opening() const { return opening_.Get(); }
  const std::string& Closing() const { return closing_.Get(); }
  bool Quoted() const { return quoted_; }
  TWrenAssemblyInfoLanguage Language() const { return language_; }
  bool UpdateOnly() const { return updateOnly_; }

 private:
  /// ProcessFile of the file name in folder_ (a path when there is no folder).
  bool Process(const std::string& name, bool createBackup);
  void MakeBackup(const std::string& name);
  /// Writes the lines to name, in folder when there is one, else a path; status, when given, is
  /// the file's as it was read.
  void Save(const TWrenFolderRef& folder, const std::string& name, const TWrenFileStatus* status);
  void Scan();
  bool IsStopLine(std::string_view line) const;
  /// line is the text of line lineIndex; at is just past its keyword.
  void ProcessAttribute(size_t lineIndex, std::string_view line, size_t at);
  bool ProcessEntry(int entry);
  void AddNewEntries();
  void AddNewEntry(const std::string& name, const std::string& value, bool quoted);
  void InsertLine(int32_t index, std::string_view line);
  int IndexOfEntry(std::string_view name) const;
  std::string Quote(const std::string& value) const;
  void Message(const std::string& text);

  /// A line: a span of text_ (as read) or of made_ (made here).
  struct TLine {
    size_t offset = 0;
    size_t length = 0;
    bool made = false;
  };
  std::string_view LineText(const TLine& line) const {
    return std::string_view(line.made ? made_ : text_).substr(line.offset, line.length);
  }
  /// Splits text_ into lines_: CR LF, LF and a lone CR each end a line.
  void SplitLines();
  /// A new line of text in made_.
  TLine MakeLine(std::string_view text);
  /// The lines joined into out_, each ended by CR LF.
  const std::string& JoinLines();

  std::string text_;
  std::string made_;
  std::vector<TLine> lines_;
  std::string out_;
  // The attribute being processed, and the message about it.
  std::string name_;
  std::string value_;
  std::string message_;
  std::string fileName_;
  TWrenFolderRef folder_;  // of the file being processed, when it was found by a folder walk
  std::string extension_;
  IWrenAssemblyInfoCallBack* callBack_ = nullptr;
  bool askEvery_ = true;
  /// A part of the last bracket line that new lines copy (its opening, keyword or closing).
  /// While a file is scanned it is the span of the text it came from, with what goes before and
  /// after it (constants); it is copied when a line is made from it or the file is done.
  struct TCarried {
    std::string text;
    std::string_view span, before, after;
    bool pending = false;
    void Set(std::string_view from, std::string_view head = {}, std::string_view tail = {}) {
      span = from;
      before = head;
      after = tail;
      pending = true;
    }
    const std::string& Get() {
      if (pending) {
        text.assign(before).append(span).append(after);
        pending = false;
      }
      return text;
    }
  };
  /// Copies the carried parts out of text_, which is about to change or be left.
  void SettleCarried() const {
    keyword_.Get();
    opening_.Get();
    closing_.Get();
  }
  mutable TCarried keyword_;
  mutable TCarried opening_;
  mutable TCarried closing_;
  bool quoted_ = false;
  std::vector<TEntry> entries_;
  int32_t insertPosition_ = -1;
  char quoteChar_ = '"';
  TWrenAssemblyInfoLanguage language_ = TWrenAssemblyInfoLanguage::alOther;
  const bool updateOnly_;
  bool modified_ = false;
};

/// A new updater; it lives as long as references to it do.
std::shared_ptr<IWrenAssemblyInfoUpdater> NewAssemblyInfoUpdater(bool updateOnly);

/// The lines of 8-bit text: CR LF, LF and a lone CR each end a line; a final line break adds no
/// empty line.
TStrings SplitTextLines(const std::string& bytes);
/// The lines joined, every one (the last included) ended by CR LF.
std::string JoinTextLines(const TStrings& lines);

}  // namespace wren
