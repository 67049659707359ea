#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <cstdint>
#include <string>

namespace fuzz {

/// Reads an input from left to right. Past its end, numbers are 0 and texts empty.
class Input {
public:
  Input(const std::uint8_t* data, std::size_t size) : mNext(data), mEnd(data + size) {}

  bool isAtEnd() const { return mNext == mEnd; }
  std::size_t left() const { return static_cast<std::size_t>(mEnd - mNext); }

  std::uint8_t byte() { return isAtEnd() ? std::uint8_t{0} : *mNext++; }
  bool flag() { return (byte() & 1) != 0; }
  std::uint16_t number16() {
    const unsigned low = byte();
    return static_cast<std::uint16_t>(low | static_cast<unsigned>(byte()) << 8);
  }

  /// Returns a text of at most that number of bytes.
  std::string text(std::size_t size) {
    const std::size_t taken = size < left() ? size : left();
    std::string found(reinterpret_cast<const char*>(mNext), taken);
    mNext += taken;
    return found;
  }
  std::string rest() { return text(left()); }

private:
  const std::uint8_t* mNext;
  const std::uint8_t* mEnd;
};

} // namespace fuzz

#endif
