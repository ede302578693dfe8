// A tokeniser over one line of text, for scanners that walk a line character by character.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace wren {

/// Walks one line of text. Blanks are spaces and tabs. CurrentChar is '\0' past the end.
class IWrenStringTokeniser {
 public:
  virtual ~IWrenStringTokeniser() = default;
  virtual void SetText(const std::string& text) = 0;
  virtual void SkipBlanks() = 0;
  virtual char CurrentChar() const = 0;
  /// Steps to the next character and gives it.
  virtual char NextChar() = 0;
  /// Reads up to (not including) c and leaves the position on it; to the end when c is absent.
  virtual std::string ReadUpTo(char c) = 0;
  /// The rest of the line from the position, without leading blanks.
  virtual std::string Rest() const = 0;
  virtual size_t Position() const = 0;
  virtual bool AtEnd() const = 0;
};

std::shared_ptr<IWrenStringTokeniser> CreateStringTokeniser(const std::string& text);

}  // namespace wren
