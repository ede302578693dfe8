#include "WrenAssemblyInfoUpdater.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

const char kPascalRegion[] = "{$REGION 'Program/Assembly Information Added By Marrowby'}";
const char kPascalEndRegion[] = "{$ENDREGION}";
const char kCSharpRegion[] = "#region Assembly Information Added By Marrowby";
const char kCSharpEndRegion[] = "#endregion";
const char kVBRegion[] = "#region \"Assembly Information Added By Marrowby\"";
const char kVBEndRegion[] = "#end region";
const char kCPPRegion[] = "// Assembly Information Added By Marrowby";
const char kCPPEndRegion[] = "// End Assembly Information Added By Marrowby";

const TWrenFileStatus kNoFile;

// A blank between the parts of an attribute line.
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

size_t SkipBlanks(std::string_view text, size_t at) {
  while (at < text.size() && IsBlank(text[at])) ++at;
  return at;
}

// The position of c at or after at, else the end of text.
size_t FindOrEnd(std::string_view text, char c, size_t at) {
  const size_t found = text.find(c, at);
  return found == std::string_view::npos ? text.size() : found;
}

// The position of the first CR or LF in data[from, n), else n: both looked for in one pass, 16
// bytes at a time where the processor has SSE2, as every file is split into lines.
size_t FindLineBreak(const char* data, size_t from, size_t n) {
  size_t p = from;
#ifdef __SSE2__
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; p + 16 <= n; p += 16) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + p));
    const int mask = _mm_movemask_epi8(
        _mm_or_si128(_mm_cmpeq_epi8(chunk, cr), _mm_cmpeq_epi8(chunk, lf)));
    if (mask != 0) return p + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
  }
#endif
  while (p < n && data[p] != '\r' && data[p] != '\n') ++p;
  return p;
}

TWrenAssemblyInfoLanguage LanguageOf(const std::string& extension) {
  if (extension == ".pas" || extension == ".dpr" || extension == ".dpk")
    return TWrenAssemblyInfoLanguage::alPascal;
  if (extension == ".cs") return TWrenAssemblyInfoLanguage::alCSharp;
  if (extension == ".vb") return TWrenAssemblyInfoLanguage::alVB;
  if (extension == ".cpp") return TWrenAssemblyInfoLanguage::alCPP;
  return TWrenAssemblyInfoLanguage::alOther;
}

// A read-only file cannot be deleted, as on Windows; the host treats read-only the same way.
bool DeleteFileIfWritable(TWrenFolder* folder, const std::string& name,
                          const TWrenFileStatus& status) {
  if (status.readOnly) return false;
  return folder ? DeleteFileIn(*folder, name) : std::remove(name.c_str()) == 0;
}

}  // namespace

TStrings SplitTextLines(const std::string& bytes) {
  TStrings lines;
  lines.reserve(bytes.size() / 32 + 1);  // a guess at the line count: sources run 20-60 bytes a line
  size_t p = 0;
  const size_t n = bytes.size();
  while (p < n) {
    const size_t start = p;
    while (p < n && bytes[p] != '\r' && bytes[p] != '\n') ++p;
    lines.emplace_back(bytes, start, p - start);
    if (p < n && bytes[p] == '\r') ++p;
    if (p < n && bytes[p] == '\n') ++p;
  }
  return lines;
}

std::string JoinTextLines(const TStrings& lines) {
  size_t size = 0;
  for (const std::string& line : lines) size += line.size() + 2;
  std::string text;
  text.reserve(size);
  for (const std::string& line : lines) {
    text += line;
    text += "\r\n";
  }
  return text;
}

std::shared_ptr<IWrenAssemblyInfoUpdater> NewAssemblyInfoUpdater(bool updateOnly) {
  return std::make_shared<TWrenAssemblyInfo>(updateOnly);
}

namespace {

// The name of an entry "Name=Value" is name, case aside; compared in place, as it runs for every
// attribute of every file: an entry whose name is not as long as name is passed over at once.
bool EntryNamed(const std::string& entry, std::string_view name) {
  const size_t n = name.size();
  if (entry.size() < n || (entry.size() > n && entry[n] != '=')) return false;
  const std::string_view head(entry.data(), n);
  return SameText(head, name) && head.find('=') == std::string_view::npos;
}

}  // namespace

int TWrenAssemblyInfo::IndexOfEntry(std::string_view name) const {
  for (size_t i = 0; i < entries_.size(); ++i)
    if (EntryNamed(entries_[i].text, name)) return static_cast<int>(i);
  return -1;
}

void TWrenAssemblyInfo::AddEntry(const std::string& name, const std::string& value, bool quoted) {
  // An empty value never replaces: it stands beside any earlier entry of the same name.
  const int i = value.empty() ? -1 : IndexOfEntry(name);
  TEntry& entry = i < 0 ? entries_.emplace_back() : entries_[static_cast<size_t>(i)];
  entry.text.reserve(name.size() + 1 + value.size());
  entry.text.assign(name).append(1, '=').append(value);
  entry.quoted = quoted;
}

void TWrenAssemblyInfo::RemoveEntry(const std::string& name) {
  const int i = IndexOfEntry(name);
  if (i >= 0) entries_.erase(entries_.begin() + i);
}

void TWrenAssemblyInfo::Message(const std::string& text) {
  if (callBack_) callBack_->AssemblyInfoProcessMessage(text);
}

std::string TWrenAssemblyInfo::Quote(const std::string& value) const {
  return quoteChar_ + value + quoteChar_;
}

TStrings TWrenAssemblyInfo::Lines() const {
  TStrings lines;
  lines.reserve(lines_.size());
  for (const TLine& line : lines_) lines.emplace_back(LineText(line));
  return lines;
}

TWrenAssemblyInfo::TLine TWrenAssemblyInfo::MakeLine(std::string_view text) {
  const TLine line{made_.size(), text.size(), true};
  made_.append(text);
  return line;
}

void TWrenAssemblyInfo::SplitLines() {
  lines_.clear();
  made_.clear();
  const char* const data = text_.data();
  const size_t n = text_.size();
  for (size_t p = 0; p < n;) {
    const size_t stop = FindLineBreak(data, p, n);
    lines_.push_back({p, stop - p, false});
    p = stop;
    if (p < n && data[p] == '\r') ++p;
    if (p < n && data[p] == '\n') ++p;
  }
}

const std::string& TWrenAssemblyInfo::JoinLines() {
  size_t size = 0;
  for (const TLine& line : lines_) size += line.length + 2;
  out_.resize(size);
  char* at = out_.data();
  for (const TLine& line : lines_) {
    const char* from = (line.made ? made_ : text_).data() + line.offset;
    std::memcpy(at, from, line.length);
    at += line.length;
    *at++ = '\r';
    *at++ = '\n';
  }
  return out_;
}

bool TWrenAssemblyInfo::ProcessFile(const std::string& fileName, bool createBackup) {
  folder_.reset();
  return Process(fileName, createBackup);
}

bool TWrenAssemblyInfo::ProcessFileIn(const TWrenFolderRef& folder, const std::string& name,
                                      const std::string& fileName, bool createBackup) {
  struct TDropFolder {
    TWrenFolderRef& folder;
    ~TDropFolder() { folder.reset(); }
  } dropFolder{folder_};
  folder_ = folder;
  fileName_ = fileName;
  return Process(name, createBackup);
}

bool TWrenAssemblyInfo::Process(const std::string& name, bool createBackup) {
  // The entries belong to one file: they are gone however this call ends.
  struct TEmptyEntries {
    std::vector<TEntry>& entries;
    ~TEmptyEntries() { entries.clear(); }
  } emptyEntries{entries_};

  insertPosition_ = -1;
  SettleCarried();  // the last file's text is about to go
  const std::string& fileName = folder_ ? fileName_ : name;
  // One look serves the checks, the read and the rewrite.
  const TWrenFileStatus status = folder_ ? FileStatus(*folder_, name) : FileStatus(name);
  if (!status.exists || status.isDirectory) {
    Message("File : " + fileName + "- does not exist!");
    return false;
  }
  if (status.readOnly) {
    Message("File : " + fileName + "- is read only!");
    return false;
  }

  if (!folder_) fileName_ = name;
  modified_ = false;
  lines_.clear();
  made_.clear();
  std::string error;
  if (!(folder_ ? ReadFileBytes(*folder_, name, status, text_, error)
                : ReadFileBytes(name, status, text_, error))) {
    text_.clear();
    throw EWrenFileError(error);
  }
  SplitLines();
  extension_ = LowerCase(ExtractFileExt(fileName_));
  language_ = LanguageOf(extension_);
  quoteChar_ = language_ == TWrenAssemblyInfoLanguage::alPascal ? '\'' : '"';

  if (createBackup) MakeBackup(name);
  if (lines_.empty()) return false;

  if (callBack_) callBack_->OnProcessFile(fileName_, shared_from_this());
  Scan();
  if (!updateOnly_ && !entries_.empty()) AddNewEntries();
  if (modified_) Save(folder_, name, &status);
  return true;
}

void TWrenAssemblyInfo::MakeBackup(const std::string& name) {
  const std::string backup = name + ".bak";
  const TWrenFileStatus status = folder_ ? FileStatus(*folder_, backup) : FileStatus(backup);
  if (status.exists && !status.isDirectory) {
    // An old backup that will not go away is kept, and no new one is written.
    if (!DeleteFileIfWritable(folder_.get(), backup, status)) return;
    Save(folder_, backup, &kNoFile);
    return;
  }
  Save(folder_, backup, &status);
}

void TWrenAssemblyInfo::SaveToFile(const std::string& fileName) { Save(nullptr, fileName, nullptr); }

void TWrenAssemblyInfo::Save(const TWrenFolderRef& folder, const std::string& name,
                             const TWrenFileStatus* status) {
  std::string error;
  const std::string& text = JoinLines();
  const bool saved = folder   ? WriteFileAtomic(folder, name, status ? *status : kNoFile, text, error)
                     : status ? WriteFileAtomic(name, *status, text, error)
                              : WriteFileAtomic(name, text, error);
  if (!saved) throw EWrenFileError(error);
}

bool TWrenAssemblyInfo::IsStopLine(std::string_view line) const {
  const std::string_view word = TrimView(line);
  return (extension_ == ".pas" && SameText(word, "implementation")) ||
         (extension_ == ".dpr" && SameText(word, "begin")) ||
         (extension_ == ".dpk" && SameText(word, "end."));
}

void TWrenAssemblyInfo::Scan() {
  const bool pascal = language_ == TWrenAssemblyInfoLanguage::alPascal;
  for (size_t i = 0; i < lines_.size(); ++i) {
    const std::string_view line = LineText(lines_[i]);
    if (pascal && IsStopLine(line)) {
      insertPosition_ = static_cast<int32_t>(i);
      // New lines go above an attribute line that directly precedes the stop line.
      if (i > 0) {
        const std::string_view previous = TrimView(LineText(lines_[i - 1]));
        if (!previous.empty() && previous[0] == '[') --insertPosition_;
      }
      return;
    }

    // Only a line that opens with a bracket or "/**" can hold an attribute.
    size_t at = SkipBlanks(line, 0);
    if (at == line.size()) continue;
    const char c = line[at];
    if (c == '<' || c == '[') {
      opening_.Set(line.substr(at, 1));
      const size_t colon = FindOrEnd(line, ':', at + 1);
      const std::string_view keyword = TrimView(line.substr(at + 1, colon - at - 1));
      keyword_.Set(keyword, {}, ":");
      if (SameText(keyword, "assembly")) ProcessAttribute(i, line, colon);
    } else if (c == '/' && line.substr(at, 3) == "/**") {
      opening_.Set("/** ");
      at = SkipBlanks(line, at + 3);
      if (at < line.size() && line[at] == '@') {
        const size_t blank = FindOrEnd(line, ' ', at);
        const std::string_view keyword = TrimView(line.substr(at, blank - at));
        keyword_.Set(keyword);
        if (SameText(keyword, "@assembly")) ProcessAttribute(i, line, blank);
      }
    }
  }
}

void TWrenAssemblyInfo::ProcessAttribute(size_t lineIndex, std::string_view line, size_t at) {
  // Past the keyword's end (':' or ' '), if the line goes on.
  if (at < line.size()) ++at;
  const size_t open = FindOrEnd(line, '(', at);
  const std::string_view name = TrimView(line.substr(at, open - at));
  at = SkipBlanks(line, open < line.size() ? open + 1 : open);
  bool marker = false;
  if (at < line.size() && line[at] == '@') {
    marker = true;
    ++at;
  }

  std::string_view value;
  if (at >= line.size() || line[at] != quoteChar_) {
    // Unquoted: the value runs to the last ')' of the line, so inner parentheses survive.
    quoted_ = false;
    const std::string_view rest = line.substr(SkipBlanks(line, at));
    size_t end = rest.size();
    while (end > 0 && rest[end - 1] != ')') --end;
    closing_.Set(rest.substr(end));
    value = rest.substr(0, end > 0 ? end - 1 : 0);
  } else {
    quoted_ = true;
    const size_t close = FindOrEnd(line, quoteChar_, at + 1);
    value = line.substr(at + 1, close - at - 1);
    // Past the closing quote and the character after it (the ')'), if there; blanks after that
    // are kept as one space.
    at = std::min(close + 2, line.size());
    const size_t rest = SkipBlanks(line, at);
    closing_.Set(line.substr(rest), rest > at ? " " : "");
  }

  // Most lines name no entry, and no one asks about them: they stay as they are.
  const int entry = IndexOfEntry(name);
  if (entry < 0 && !(callBack_ && askEvery_)) return;
  name_.assign(name);
  value_.assign(value);
  // The line is text_ as read: it stays valid however the entry's value is asked for.
  if (!ProcessEntry(entry) && value_ == value) return;
  message_.assign(opening_.Get()).append(keyword_.Get()).append(" ").append(name_).append("(");
  if (quoted_) {
    if (marker) message_ += '@';
    message_.append(1, quoteChar_).append(value_).append(1, quoteChar_);
  } else {
    message_.append(value_);
  }
  message_.append(")").append(closing_.Get());
  lines_[lineIndex] = MakeLine(message_);
  modified_ = true;
  if (!callBack_) return;
  message_.assign("Setting Attribute : ").append(name_).append(" Value : ");
  if (quoted_)
    message_.append(1, quoteChar_).append(value_).append(1, quoteChar_);
  else
    message_.append(value_);
  Message(message_);
}

// Takes the value of entry i (the one named name_, or -1 for none) into value_, if there is one,
// and lets the callback change it. True when there was an entry.
bool TWrenAssemblyInfo::ProcessEntry(int i) {
  bool found = false;
  if (i >= 0) {
    const std::string& text = entries_[i].text;
    const size_t eq = text.find('=');
    value_.assign(eq == std::string::npos ? std::string_view()
                                          : std::string_view(text).substr(eq + 1));
    entries_.erase(entries_.begin() + i);
    found = true;
  }
  if (callBack_) callBack_->AssemblyInfoProcessEntry(fileName_, name_, value_);
  return found;
}

void TWrenAssemblyInfo::InsertLine(int32_t index, std::string_view line) {
  if (index < 0 || index > static_cast<int32_t>(lines_.size()))
    throw EStringListError("List index out of bounds (" + std::to_string(index) + ")");
  const TLine made = MakeLine(line);
  lines_.insert(lines_.begin() + index, made);
}

void TWrenAssemblyInfo::AddNewEntries() {
  Message("Processing new Attributes...");
  switch (language_) {
    case TWrenAssemblyInfoLanguage::alPascal:
      InsertLine(insertPosition_, kPascalRegion);
      ++insertPosition_;
      break;
    case TWrenAssemblyInfoLanguage::alCSharp: lines_.push_back(MakeLine(kCSharpRegion)); break;
    case TWrenAssemblyInfoLanguage::alVB: lines_.push_back(MakeLine(kVBRegion)); break;
    case TWrenAssemblyInfoLanguage::alCPP: lines_.push_back(MakeLine(kCPPRegion)); break;
    case TWrenAssemblyInfoLanguage::alOther: break;
  }

  for (const TEntry& entry : entries_)
    AddNewEntry(NameOfLine(entry.text), ValueOfLine(entry.text), entry.quoted);
  entries_.clear();

  switch (language_) {
    case TWrenAssemblyInfoLanguage::alPascal: InsertLine(insertPosition_, kPascalEndRegion); break;
    case TWrenAssemblyInfoLanguage::alCSharp: lines_.push_back(MakeLine(kCSharpEndRegion)); break;
    case TWrenAssemblyInfoLanguage::alVB: lines_.push_back(MakeLine(kVBEndRegion)); break;
    case TWrenAssemblyInfoLanguage::alCPP: lines_.push_back(MakeLine(kCPPEndRegion)); break;
    case TWrenAssemblyInfoLanguage::alOther: break;
  }
  modified_ = true;
}

void TWrenAssemblyInfo::AddNewEntry(const std::string& name, const std::string& value,
                                    bool quoted) {
  std::string attribute = name;
  if (UpperCase(extension_) == ".CPP") attribute += "Attribute";
  const std::string written = quoted ? Quote(value) : value;
  const std::string line = opening_.Get() + keyword_.Get() + " " + attribute + "(" + written + ")" +
                           closing_.Get();
  Message("Adding Entry : " + name + " Value : " + written);
  if (insertPosition_ == -1) {
    lines_.push_back(MakeLine(line));
  } else {
    InsertLine(insertPosition_, line);
    ++insertPosition_;
  }
}

}  // namespace wren
