#ifndef WORDS_H
#define WORDS_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace session {

/// Why a line can't be understood, as a person should read it. Never leaves this folder.
class LineError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A line taken apart word by word, from left to right. Operations that find something else than they were
/// asked for throw LineError; `what` names the thing in its text.
class Words {
public:
  explicit Words(std::string_view line);

  /// True if no word is left; a comment counts as the end.
  bool isAtEnd() const;
  std::string_view word(const std::string& what);
  /// A finite number within the bounds.
  double number(const std::string& what, double smallest, double largest);
  /// A whole number within the bounds; 0x starts a hexadecimal one.
  std::int64_t integer(const std::string& what, std::int64_t smallest, std::int64_t largest);
  /// The rest of the line without the blanks around it; may not be empty. A # is part of it.
  std::string text(const std::string& what);
  /// Throws if a word is left.
  void expectEnd() const;

private:
  /// Starts with a word or is empty.
  std::string_view mRest;
};

/// The word in quotes for a message.
std::string quoted(std::string_view word);

} // namespace session

#endif
