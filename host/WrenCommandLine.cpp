#include "WrenCommandLine.h"

#include <vector>

namespace wren {
namespace {

/// Encloses a value in quotes so that the Windows argument rules give it back: backslashes that
/// end up in front of the closing quote are doubled.
std::string QuoteArgumentValue(const std::string& value) {
  size_t trailing = 0;
  while (trailing < value.size() && value[value.size() - 1 - trailing] == '\\') ++trailing;
  return "\"" + value + std::string(trailing, '\\') + "\"";
}

std::string RenderValue(const std::string& value, int mode) {
  switch (mode) {
    case 1:
      return QuoteArgumentValue(value);
    case 2:
      if (value.find_first_of(" \t") != std::string::npos &&
          value.find('"') == std::string::npos)
        return QuoteArgumentValue(value);
      return value;
    default:
      return value;
  }
}

class TArgument : public IArgument {
 public:
  explicit TArgument(std::string text) : text_(std::move(text)) {}
  std::string GetText() const override { return text_; }

 private:
  std::string text_;
};

/// The host's command-line builder: a list of rendered arguments joined by one blank.
class TCommandLineBuilder : public ICommandLineBuilder {
 public:
  void SetSeparator(const std::string& separator) override { separator_ = separator; }

  std::string GetCommandLineText() const override {
    std::string text;
    for (const auto& arg : args_) {
      const std::string argText = arg->GetText();
      if (argText.empty()) continue;  // an argument with neither switch nor value adds nothing
      if (!text.empty()) text += ' ';
      text += argText;
    }
    return text;
  }

  std::shared_ptr<IArgument> AddArgument(const std::string& switchText, const std::string& value,
                                         int mode) override {
    std::string text;
    if (value.empty()) {
      text = switchText;
    } else if (switchText.empty()) {
      text = RenderValue(value, mode);
    } else {
      const char last = switchText.back();
      const std::string& joint = (last == ':' || last == '=') ? std::string() : separator_;
      text = switchText + joint + RenderValue(value, mode);
    }
    auto arg = std::make_shared<TArgument>(std::move(text));
    args_.push_back(arg);
    return arg;
  }

  void Clear() override { args_.clear(); }

 private:
  std::string separator_ = " ";
  std::vector<std::shared_ptr<IArgument>> args_;
};

}  // namespace

std::shared_ptr<ICommandLineBuilder> CreateCommandLineBuilder() {
  return std::make_shared<TCommandLineBuilder>();
}

}  // namespace wren
