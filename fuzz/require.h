#ifndef FUZZ_REQUIRE_H
#define FUZZ_REQUIRE_H

#include <stdexcept>
#include <string>

namespace fuzz {

/// What a fuzz target throws when the code under test broke a promise. Under libFuzzer nobody catches it, so
/// that the input is kept as a crash; the replay catches it and names the file.
class Broken : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Throws Broken unless the promise was kept.
inline void require(bool isKept, const char* promise) {
  if (!isKept)
    throw Broken(promise);
}

/// The same with the two values that should be one.
inline void requireSame(const std::string& found, const std::string& expected, const char* promise) {
  if (found != expected)
    throw Broken(std::string(promise) + "\n  found:    " + found + "\n  expected: " + expected);
}

} // namespace fuzz

#endif
