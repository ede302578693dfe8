#include "WrenActionAPI.h"
#include "WrenUtils.h"

namespace wren {

std::string TCustomWrenAction::GetCopyRight() const {
  return "Marrowby .NET Framework Support";
}

const TPropertyTable& TCustomWrenAction::ClassProperties() {
  static const TPropertyTable table;
  return table;
}

void TCustomWrenAction::SendMessage(const std::string& text) {
  if (host_) host_->SendMessage(text);
}

std::string TCustomWrenAction::ExpandExpression(const std::string& value) {
  std::string result;
  if (host_ && host_->TryExpandExpression("", value, false, result)) return result;
  return value;
}

bool TCustomWrenAction::TryExpandExpression(const std::string& caption, const std::string& value,
                                            bool blankFails, std::string& result) {
  if (!host_) {
    // Without a host there are no variables: the text is used as it stands.
    result = value;
    return !(blankFails && result.empty());
  }
  return host_->TryExpandExpression(caption, value, blankFails, result);
}

// Stored secrets are kept out of plain sight in project files; this is obfuscation, not security,
// and the host documents it so.
static const char kCipherPrefix[] = "enc:";

std::string TCustomWrenAction::EncryptString(const std::string& text) const {
  static const char digits[] = "0123456789abcdef";
  std::string out = kCipherPrefix;
  unsigned char key = 0x5a;
  for (unsigned char c : text) {
    unsigned char e = c ^ key;
    key = static_cast<unsigned char>(key * 31 + 7);
    out += digits[e >> 4];
    out += digits[e & 15];
  }
  return out;
}

std::string TCustomWrenAction::DecryptString(const std::string& text) const {
  if (text.rfind(kCipherPrefix, 0) != 0) return text;
  auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  };
  std::string out;
  unsigned char key = 0x5a;
  for (size_t i = sizeof kCipherPrefix - 1; i + 1 < text.size(); i += 2) {
    int hi = nibble(text[i]), lo = nibble(text[i + 1]);
    if (hi < 0 || lo < 0) return text;
    out += static_cast<char>(static_cast<unsigned char>(hi * 16 + lo) ^ key);
    key = static_cast<unsigned char>(key * 31 + 7);
  }
  return out;
}

bool TCustomWrenAction::StopSignalled() { return host_ && host_->StopSignalled(); }

TWrenActionScript& TCustomWrenAction::AddScript(const std::string& name) {
  if (TWrenActionScript* existing = GetScriptByName(name)) return *existing;
  scripts_.push_back(TWrenActionScript{name, "lua", "", {}});
  InitialiseScriptParams(scripts_.back());
  return scripts_.back();
}

TWrenActionScript* TCustomWrenAction::GetScriptByName(const std::string& name) {
  for (TWrenActionScript& s : scripts_)
    if (SameText(s.name, name)) return &s;
  return nullptr;
}

bool TCustomWrenAction::ExecuteScript(const std::string& name, WrenVariant& result) {
  TWrenActionScript* script = GetScriptByName(name);
  if (!script || !host_) return false;
  return host_->ExecuteScript(*this, *script, result);
}

}  // namespace wren
