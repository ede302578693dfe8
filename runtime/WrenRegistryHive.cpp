#include "WrenRegistryHive.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "WrenFiles.h"
#include "host/WrenTextDecode.h"

namespace wren {

namespace {

char Fold(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

std::string Folded(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = Fold(c);
  return out;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

bool StartsWithNoCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && Folded(s.substr(0, prefix.size())) == Folded(prefix);
}

/// Entries kept in the order they were first listed, looked up by name without regard to case.
template <class T>
class TOrderedNames {
 public:
  const T* Find(std::string_view name) const {
    auto it = index_.find(Folded(name));
    return it == index_.end() ? nullptr : &items_[it->second].second;
  }
  T* Find(std::string_view name) {
    return const_cast<T*>(static_cast<const TOrderedNames*>(this)->Find(name));
  }
  /// The entry of that name, added at the end when absent (the first spelling is kept).
  T& Ensure(std::string_view name) {
    auto [it, added] = index_.emplace(Folded(name), items_.size());
    if (added) items_.emplace_back(std::string(name), T{});
    return items_[it->second].second;
  }
  void Erase(std::string_view name) {
    auto it = index_.find(Folded(name));
    if (it == index_.end()) return;
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(it->second));
    index_.clear();
    for (size_t i = 0; i < items_.size(); ++i) index_.emplace(Folded(items_[i].first), i);
  }
  void Clear() {
    items_.clear();
    index_.clear();
  }
  TStrings Names() const {
    TStrings names;
    names.reserve(items_.size());
    for (const auto& item : items_) names.push_back(item.first);
    return names;
  }

 private:
  std::vector<std::pair<std::string, T>> items_;
  std::unordered_map<std::string, size_t> index_;
};

/// One key of the hive: its subkeys and its values as text (the default value is named "").
struct TKeyNode {
  TOrderedNames<std::unique_ptr<TKeyNode>> keys;
  TOrderedNames<std::string> values;
};

struct THive {
  TKeyNode roots[4];  // indexed by TRegistryRoot
};

/// An open key of a hive; holds the hive so the key stays valid on its own.
class THiveKey final : public IWrenRegistryKey {
 public:
  THiveKey(std::shared_ptr<const THive> hive, const TKeyNode* node)
      : hive_(std::move(hive)), node_(node) {}
  bool ValueExists(const std::string& name) const override {
    return node_->values.Find(name) != nullptr;
  }
  std::string ReadString(const std::string& name) const override {
    const std::string* value = node_->values.Find(name);
    return value ? *value : "";
  }
  TStrings GetValueNames() const override { return node_->values.Names(); }
  TStrings GetKeyNames() const override { return node_->keys.Names(); }

 private:
  std::shared_ptr<const THive> hive_;
  const TKeyNode* node_;
};

/// A registry read from .reg files.
class THiveRegistry final : public IWrenRegistry {
 public:
  explicit THiveRegistry(std::shared_ptr<const THive> hive) : hive_(std::move(hive)) {}
  std::unique_ptr<IWrenRegistryKey> OpenKey(TRegistryRoot root, const std::string& path,
                                            uint32_t access) const override {
    (void)access;  // the hive is read-only whatever is asked
    const TKeyNode* node = &hive_->roots[static_cast<int>(root)];
    size_t pos = 0;
    while (node && pos <= path.size()) {
      size_t end = path.find('\\', pos);
      if (end == std::string::npos) end = path.size();
      if (end > pos) {
        const auto* child = node->keys.Find(std::string_view(path).substr(pos, end - pos));
        node = child ? child->get() : nullptr;
      }
      pos = end + 1;
    }
    if (!node) return nullptr;
    return std::make_unique<THiveKey>(hive_, node);
  }

 private:
  std::shared_ptr<const THive> hive_;
};

struct TRootName {
  const char* name;
  int root;  // -1: a root the package never reads; its sections are skipped
};

const TRootName kRoots[] = {
    {"HKEY_CLASSES_ROOT", static_cast<int>(TRegistryRoot::HKEY_CLASSES_ROOT)},
    {"HKCR", static_cast<int>(TRegistryRoot::HKEY_CLASSES_ROOT)},
    {"HKEY_CURRENT_USER", static_cast<int>(TRegistryRoot::HKEY_CURRENT_USER)},
    {"HKCU", static_cast<int>(TRegistryRoot::HKEY_CURRENT_USER)},
    {"HKEY_LOCAL_MACHINE", static_cast<int>(TRegistryRoot::HKEY_LOCAL_MACHINE)},
    {"HKLM", static_cast<int>(TRegistryRoot::HKEY_LOCAL_MACHINE)},
    {"HKEY_USERS", static_cast<int>(TRegistryRoot::HKEY_USERS)},
    {"HKU", static_cast<int>(TRegistryRoot::HKEY_USERS)},
    {"HKEY_CURRENT_CONFIG", -1},
    {"HKCC", -1},
    {"HKEY_DYN_DATA", -1},
    {"HKEY_PERFORMANCE_DATA", -1},
};

/// Applies one .reg text to a hive.
class TRegParser {
 public:
  TRegParser(THive& hive, const std::string& fileName, std::string& error)
      : hive_(hive), fileName_(fileName), error_(error) {}

  bool Parse(const std::string& raw) {
    SplitLines(DecodeTextBytes(raw));
    size_t i = 0;
    while (i < lines_.size() && TrimBlanks(lines_[i]).empty()) ++i;
    if (i == lines_.size()) return Fail(1, "empty file, expected a REGEDIT4 header");
    const std::string_view header = TrimBlanks(lines_[i]);
    if (header == "Windows Registry Editor Version 5.00")
      unicode_ = true;
    else if (header != "REGEDIT4")
      return Fail(i + 1, "not a registry file (expected \"REGEDIT4\" or \"Windows Registry "
                         "Editor Version 5.00\")");
    for (++i; i < lines_.size(); ++i) {
      const std::string_view line = TrimBlanks(lines_[i]);
      if (line.empty() || line.front() == ';') continue;
      bool ok;
      if (line.front() == '[')
        ok = Section(i, line);
      else if (line.front() == '"' || line.front() == '@')
        ok = Value(i, line);
      else
        ok = Fail(i + 1, "unexpected text \"" + std::string(line) + "\"");
      if (!ok) return false;
    }
    return true;
  }

 private:
  void SplitLines(const std::string& text) {
    size_t start = 0;
    while (start <= text.size()) {
      size_t end = text.find('\n', start);
      if (end == std::string::npos) end = text.size();
      std::string line = text.substr(start, end - start);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines_.push_back(std::move(line));
      start = end + 1;
    }
  }

  bool Fail(size_t line, const std::string& message) {
    error_ = fileName_ + ":" + std::to_string(line) + ": " + message;
    return false;
  }

  bool Section(size_t i, std::string_view line) {
    if (line.back() != ']') return Fail(i + 1, "missing ']' after the key name");
    std::string_view path = line.substr(1, line.size() - 2);
    const bool remove = !path.empty() && path.front() == '-';
    if (remove) path.remove_prefix(1);

    std::vector<std::string_view> parts;
    size_t pos = 0;
    while (pos <= path.size()) {
      size_t end = path.find('\\', pos);
      if (end == std::string_view::npos) end = path.size();
      if (end > pos) parts.push_back(path.substr(pos, end - pos));
      pos = end + 1;
    }
    if (parts.empty()) return Fail(i + 1, "empty key name");

    current_ = nullptr;
    inSection_ = true;
    const TRootName* root = nullptr;
    for (const TRootName& r : kRoots)
      if (Folded(parts[0]) == Folded(r.name)) root = &r;
    if (!root) return Fail(i + 1, "unknown root key \"" + std::string(parts[0]) + "\"");
    if (root->root < 0) return true;

    TKeyNode* node = &hive_.roots[root->root];
    if (remove) {
      for (size_t k = 1; node && k + 1 < parts.size(); ++k) {
        auto* child = node->keys.Find(parts[k]);
        node = child ? child->get() : nullptr;
      }
      if (node && parts.size() == 1) {
        node->keys.Clear();  // a root itself cannot go; it is emptied
        node->values.Clear();
      } else if (node) {
        node->keys.Erase(parts.back());
      }
      return true;
    }
    for (size_t k = 1; k < parts.size(); ++k) {
      auto& child = node->keys.Ensure(parts[k]);
      if (!child) child = std::make_unique<TKeyNode>();
      node = child.get();
    }
    current_ = node;
    return true;
  }

  // A quoted string at the start of s with the \\ and \" escapes; s is left after its closing quote.
  bool QuotedString(size_t i, std::string_view& s, std::string& out) {
    out.clear();
    for (size_t k = 1; k < s.size(); ++k) {
      const char c = s[k];
      if (c == '"') {
        s.remove_prefix(k + 1);
        return true;
      }
      if (c == '\\' && k + 1 < s.size() && (s[k + 1] == '\\' || s[k + 1] == '"')) {
        out += s[++k];
      } else {
        out += c;
      }
    }
    return Fail(i + 1, "unterminated string");
  }

  bool Value(size_t& i, std::string_view line) {
    const size_t first = i;
    if (!inSection_) return Fail(first + 1, "value outside of a key section");
    std::string name;
    if (line.front() == '@') {
      line.remove_prefix(1);
    } else if (!QuotedString(first, line, name)) {
      return false;
    }
    line = TrimBlanks(line);
    if (line.empty() || line.front() != '=') return Fail(first + 1, "expected '=' after the value name");
    line = TrimBlanks(line.substr(1));

    bool remove = false;
    std::string data;
    if (line == "-") {
      remove = true;
    } else if (!line.empty() && line.front() == '"') {
      if (!QuotedString(first, line, data)) return false;
      if (!TrimBlanks(line).empty()) return Fail(first + 1, "unexpected text after the string");
    } else if (StartsWithNoCase(line, "dword:")) {
      if (!DWord(first, line.substr(6), data)) return false;
    } else if (StartsWithNoCase(line, "hex")) {
      if (!Hex(i, line, data)) return false;
    } else {
      return Fail(first + 1, "unrecognised value data \"" + std::string(line) + "\"");
    }

    if (!current_) return true;  // a removed key or a root that is not kept
    if (remove)
      current_->values.Erase(name);
    else
      current_->values.Ensure(name) = std::move(data);
    return true;
  }

  bool DWord(size_t i, std::string_view digits, std::string& out) {
    digits = TrimBlanks(digits);
    if (digits.empty() || digits.size() > 8) return Fail(i + 1, "a dword needs 1 to 8 hex digits");
    uint32_t value = 0;
    for (char c : digits) {
      const int d = HexDigit(c);
      if (d < 0) return Fail(i + 1, "bad hex digit in a dword");
      value = value << 4 | static_cast<uint32_t>(d);
    }
    out = std::to_string(value);
    return true;
  }

  static int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = Fold(c);
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  }

  // hex:..., hex(N):... with continuation lines ending in '\'. Strings (types 1 and 2) and numbers
  // (4, 5, b) are read as text; other types exist with an empty text.
  bool Hex(size_t& i, std::string_view line, std::string& out) {
    const size_t first = i;
    std::string_view rest = line.substr(3);
    uint32_t type = 3;  // plain "hex:" is binary
    if (!rest.empty() && rest.front() == '(') {
      const size_t close = rest.find(')');
      // A value type is a 32-bit number: more than eight digits would overflow it.
      if (close == std::string_view::npos || close == 1 || close > 9)
        return Fail(first + 1, "bad hex(type)");
      type = 0;
      for (char c : rest.substr(1, close - 1)) {
        const int d = HexDigit(c);
        if (d < 0) return Fail(first + 1, "bad hex(type)");
        type = type * 16 + static_cast<uint32_t>(d);
      }
      rest.remove_prefix(close + 1);
    }
    if (rest.empty() || rest.front() != ':') return Fail(first + 1, "expected ':' after hex");
    rest.remove_prefix(1);

    std::string text(TrimBlanks(rest));
    while (!text.empty() && text.back() == '\\') {
      text.pop_back();
      if (i + 1 >= lines_.size()) return Fail(i + 1, "continuation line missing at end of file");
      text += TrimBlanks(lines_[++i]);
    }

    std::string bytes;
    size_t pos = 0;
    while (pos < text.size()) {
      size_t end = text.find(',', pos);
      if (end == std::string::npos) end = text.size();
      const std::string_view item = TrimBlanks(std::string_view(text).substr(pos, end - pos));
      if (item.size() != 2 || HexDigit(item[0]) < 0 || HexDigit(item[1]) < 0)
        return Fail(first + 1, "bad byte \"" + std::string(item) + "\" in hex data");
      bytes += static_cast<char>(HexDigit(item[0]) * 16 + HexDigit(item[1]));
      pos = end + 1;
    }

    out.clear();
    auto number = [&](bool bigEndian) {
      uint64_t value = 0;
      for (size_t k = 0; k < bytes.size() && k < 8; ++k) {
        const uint64_t b = static_cast<unsigned char>(bytes[bigEndian ? k : bytes.size() - 1 - k]);
        value = value << 8 | b;
      }
      out = std::to_string(value);
    };
    switch (type) {
      case 1:
      case 2:  // REG_SZ, REG_EXPAND_SZ: UTF-16LE in version 5 files, 8-bit in REGEDIT4
        out = unicode_ ? DecodeTextBytes("\xFF\xFE" + bytes) : bytes;
        if (size_t nul = out.find('\0'); nul != std::string::npos) out.resize(nul);
        break;
      case 4:
        number(false);
        break;
      case 5:
        number(true);
        break;
      case 0xb:
        number(false);
        break;
      default:
        break;
    }
    return true;
  }

  THive& hive_;
  const std::string& fileName_;
  std::string& error_;
  std::vector<std::string> lines_;
  bool unicode_ = false;
  bool inSection_ = false;
  TKeyNode* current_ = nullptr;
};

}  // namespace

std::shared_ptr<IWrenRegistry> ParseRegistryText(const std::string& text, const std::string& fileName,
                                                 std::string& error) {
  auto hive = std::make_shared<THive>();
  if (!TRegParser(*hive, fileName, error).Parse(text)) return nullptr;
  return std::make_shared<THiveRegistry>(std::move(hive));
}

std::shared_ptr<IWrenRegistry> LoadRegistryHive(const std::vector<std::string>& files,
                                                std::string& error) {
  auto hive = std::make_shared<THive>();
  for (const std::string& file : files) {
    std::string bytes;
    if (!ReadFileBytes(file, bytes, error)) return nullptr;
    if (!TRegParser(*hive, file, error).Parse(bytes)) return nullptr;
  }
  return std::make_shared<THiveRegistry>(std::move(hive));
}

}  // namespace wren
