#include "WrenStringTok.h"

namespace wren {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

/// The host's tokeniser: a text and a position in it.
class TWrenStringTokeniser final : public IWrenStringTokeniser {
 public:
  explicit TWrenStringTokeniser(const std::string& text) : text_(text) {}

  void SetText(const std::string& text) override {
    text_ = text;
    pos_ = 0;
  }

  void SkipBlanks() override {
    while (pos_ < text_.size() && IsBlank(text_[pos_])) ++pos_;
  }

  char CurrentChar() const override { return pos_ < text_.size() ? text_[pos_] : '\0'; }

  char NextChar() override {
    if (pos_ < text_.size()) ++pos_;
    return CurrentChar();
  }

  std::string ReadUpTo(char c) override {
    size_t end = text_.find(c, pos_);
    if (end == std::string::npos) end = text_.size();
    std::string read = text_.substr(pos_, end - pos_);
    pos_ = end;
    return read;
  }

  std::string Rest() const override {
    size_t p = pos_;
    while (p < text_.size() && IsBlank(text_[p])) ++p;
    return text_.substr(p);
  }

  size_t Position() const override { return pos_; }
  bool AtEnd() const override { return pos_ >= text_.size(); }

 private:
  std::string text_;
  size_t pos_ = 0;
};

}  // namespace

std::shared_ptr<IWrenStringTokeniser> CreateStringTokeniser(const std::string& text) {
  return std::make_shared<TWrenStringTokeniser>(text);
}

}  // namespace wren
