#include "WrenAssemblyInfoUpdater.h"

#include <algorithm>
#include <cstdio>

#include "WrenFiles.h"
#include "WrenStringTok.h"
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

// A blank as the host tokeniser counts it.
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

TWrenAssemblyInfoLanguage LanguageOf(const std::string& extension) {
  if (extension == ".pas" || extension == ".dpr" || extension == ".dpk")
    return TWrenAssemblyInfoLanguage::alPascal;
  if (extension == ".cs") return TWrenAssemblyInfoLanguage::alCSharp;
  if (extension == ".vb") return TWrenAssemblyInfoLanguage::alVB;
  if (extension == ".cpp") return TWrenAssemblyInfoLanguage::alCPP;
  return TWrenAssemblyInfoLanguage::alOther;
}

// A read-only file cannot be deleted, as on Windows; the host treats read-only the same way.
bool DeleteFileIfWritable(const std::string& path, const TWrenFileStatus& status) {
  return !status.readOnly && std::remove(path.c_str()) == 0;
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

char FoldAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// The name of an entry "Name=Value" is name, case aside; compared in place, as it runs for every
// attribute of every file.
bool EntryNamed(const std::string& entry, const std::string& name) {
  const size_t length = std::min(entry.find('='), entry.size());
  if (length != name.size()) return false;
  for (size_t i = 0; i < length; ++i)
    if (FoldAscii(entry[i]) != FoldAscii(name[i])) return false;
  return true;
}

}  // namespace

int TWrenAssemblyInfo::IndexOfEntry(const std::string& name) const {
  for (size_t i = 0; i < entries_.size(); ++i)
    if (EntryNamed(entries_[i].text, name)) return static_cast<int>(i);
  return -1;
}

void TWrenAssemblyInfo::AddEntry(const std::string& name, const std::string& value, bool quoted) {
  if (value.empty()) {
    // An empty value never replaces: it stands beside any earlier entry of the same name.
    entries_.push_back({name + "=", quoted});
    return;
  }
  const int i = IndexOfEntry(name);
  if (i < 0)
    entries_.push_back({name + "=" + value, quoted});
  else
    entries_[i] = {name + "=" + value, quoted};
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

bool TWrenAssemblyInfo::ProcessFile(const std::string& fileName, bool createBackup) {
  // The entries belong to one file: they are gone however this call ends.
  struct TEmptyEntries {
    std::vector<TEntry>& entries;
    ~TEmptyEntries() { entries.clear(); }
  } emptyEntries{entries_};

  insertPosition_ = -1;
  // One look serves the checks, the read and the rewrite.
  const TWrenFileStatus status = FileStatus(fileName);
  if (!status.exists || status.isDirectory) {
    Message("File : " + fileName + "- does not exist!");
    return false;
  }
  if (status.readOnly) {
    Message("File : " + fileName + "- is read only!");
    return false;
  }

  fileName_ = fileName;
  modified_ = false;
  lines_.clear();
  std::string bytes, error;
  if (!ReadFileBytes(fileName, status, bytes, error)) throw EWrenFileError(error);
  lines_ = SplitTextLines(bytes);
  extension_ = LowerCase(ExtractFileExt(fileName));
  language_ = LanguageOf(extension_);
  quoteChar_ = language_ == TWrenAssemblyInfoLanguage::alPascal ? '\'' : '"';

  if (createBackup) MakeBackup();
  if (lines_.empty()) return false;

  if (callBack_) callBack_->OnProcessFile(fileName_, shared_from_this());
  Scan();
  if (!updateOnly_ && !entries_.empty()) AddNewEntries();
  if (modified_) Save(fileName_, &status);
  return true;
}

void TWrenAssemblyInfo::MakeBackup() {
  const std::string backup = fileName_ + ".bak";
  const TWrenFileStatus status = FileStatus(backup);
  if (status.exists && !status.isDirectory) {
    // An old backup that will not go away is kept, and no new one is written.
    if (!DeleteFileIfWritable(backup, status)) return;
    Save(backup, &kNoFile);
    return;
  }
  Save(backup, &status);
}

void TWrenAssemblyInfo::SaveToFile(const std::string& fileName) { Save(fileName, nullptr); }

void TWrenAssemblyInfo::Save(const std::string& fileName, const TWrenFileStatus* status) {
  std::string error;
  const std::string text = JoinTextLines(lines_);
  if (!(status ? WriteFileAtomic(fileName, *status, text, error)
               : WriteFileAtomic(fileName, text, error)))
    throw EWrenFileError(error);
}

bool TWrenAssemblyInfo::IsStopLine(const std::string& line) const {
  const std::string word = LowerCase(Trim(line));
  return (extension_ == ".pas" && word == "implementation") ||
         (extension_ == ".dpr" && word == "begin") || (extension_ == ".dpk" && word == "end.");
}

void TWrenAssemblyInfo::Scan() {
  const std::shared_ptr<IWrenStringTokeniser> tok = CreateStringTokeniser("");
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (language_ == TWrenAssemblyInfoLanguage::alPascal && IsStopLine(lines_[i])) {
      insertPosition_ = static_cast<int32_t>(i);
      // New lines go above an attribute line that directly precedes the stop line.
      if (i > 0) {
        const std::string previous = Trim(lines_[i - 1]);
        if (!previous.empty() && previous[0] == '[') --insertPosition_;
      }
      return;
    }

    tok->SetText(lines_[i]);
    tok->SkipBlanks();
    const char c = tok->CurrentChar();
    if (c == '<' || c == '[') {
      opening_ = std::string(1, c);
      tok->NextChar();
      keyword_ = Trim(tok->ReadUpTo(':')) + ":";
      if (LowerCase(keyword_) == "assembly:") ProcessAttribute(i, *tok);
    } else if (c == '/' && tok->NextChar() == '*' && tok->NextChar() == '*') {
      opening_ = "/** ";
      tok->NextChar();
      tok->SkipBlanks();
      if (tok->CurrentChar() == '@') {
        keyword_ = Trim(tok->ReadUpTo(' '));
        if (LowerCase(keyword_) == "@assembly") ProcessAttribute(i, *tok);
      }
    }
  }
}

void TWrenAssemblyInfo::ProcessAttribute(size_t lineIndex, IWrenStringTokeniser& tok) {
  tok.NextChar();
  const std::string name = Trim(tok.ReadUpTo('('));
  tok.NextChar();
  tok.SkipBlanks();
  std::string marker;
  if (tok.CurrentChar() == '@') {
    marker = "@";
    tok.NextChar();
  }

  std::string value;
  closing_.clear();
  if (tok.CurrentChar() != quoteChar_) {
    // Unquoted: the value runs to the last ')' of the line, so inner parentheses survive.
    quoted_ = false;
    value = tok.Rest();
    size_t end = value.size();
    while (end > 0 && value[end - 1] != ')') --end;
    closing_ = value.substr(end);
    value.resize(end > 0 ? end - 1 : 0);
  } else {
    quoted_ = true;
    tok.NextChar();
    value = tok.ReadUpTo(quoteChar_);
    tok.NextChar();  // the closing quote
    tok.NextChar();  // the ')'
    closing_ = IsBlank(tok.CurrentChar()) ? " " + tok.Rest() : tok.Rest();
  }

  std::string newValue = value;
  if (!ProcessEntry(name, newValue)) return;
  const std::string written = quoted_ ? marker + Quote(newValue) : newValue;
  lines_[lineIndex] = opening_ + keyword_ + " " + name + "(" + written + ")" + closing_;
  modified_ = true;
  Message("Setting Attribute : " + name + " Value : " + (quoted_ ? Quote(newValue) : newValue));
}

bool TWrenAssemblyInfo::ProcessEntry(const std::string& name, std::string& value) {
  const std::string asRead = value;
  bool found = false;
  const int i = IndexOfEntry(name);
  if (i >= 0) {
    value = ValueOfLine(entries_[i].text);
    entries_.erase(entries_.begin() + i);
    found = true;
  }
  if (callBack_) callBack_->AssemblyInfoProcessEntry(fileName_, name, value);
  return found || value != asRead;
}

void TWrenAssemblyInfo::InsertLine(int32_t index, const std::string& line) {
  if (index < 0 || index > static_cast<int32_t>(lines_.size()))
    throw EStringListError("List index out of bounds (" + std::to_string(index) + ")");
  lines_.insert(lines_.begin() + index, line);
}

void TWrenAssemblyInfo::AddNewEntries() {
  Message("Processing new Attributes...");
  switch (language_) {
    case TWrenAssemblyInfoLanguage::alPascal:
      InsertLine(insertPosition_, kPascalRegion);
      ++insertPosition_;
      break;
    case TWrenAssemblyInfoLanguage::alCSharp: lines_.push_back(kCSharpRegion); break;
    case TWrenAssemblyInfoLanguage::alVB: lines_.push_back(kVBRegion); break;
    case TWrenAssemblyInfoLanguage::alCPP: lines_.push_back(kCPPRegion); break;
    case TWrenAssemblyInfoLanguage::alOther: break;
  }

  for (const TEntry& entry : entries_)
    AddNewEntry(NameOfLine(entry.text), ValueOfLine(entry.text), entry.quoted);
  entries_.clear();

  switch (language_) {
    case TWrenAssemblyInfoLanguage::alPascal: InsertLine(insertPosition_, kPascalEndRegion); break;
    case TWrenAssemblyInfoLanguage::alCSharp: lines_.push_back(kCSharpEndRegion); break;
    case TWrenAssemblyInfoLanguage::alVB: lines_.push_back(kVBEndRegion); break;
    case TWrenAssemblyInfoLanguage::alCPP: lines_.push_back(kCPPEndRegion); break;
    case TWrenAssemblyInfoLanguage::alOther: break;
  }
  modified_ = true;
}

void TWrenAssemblyInfo::AddNewEntry(const std::string& name, const std::string& value,
                                    bool quoted) {
  std::string attribute = name;
  if (UpperCase(extension_) == ".CPP") attribute += "Attribute";
  const std::string written = quoted ? Quote(value) : value;
  const std::string line = opening_ + keyword_ + " " + attribute + "(" + written + ")" + closing_;
  Message("Adding Entry : " + name + " Value : " + written);
  if (insertPosition_ == -1) {
    lines_.push_back(line);
  } else {
    InsertLine(insertPosition_, line);
    ++insertPosition_;
  }
}

}  // namespace wren
