#ifndef FUZZ_PLAIN_FRAMES_H
#define FUZZ_PLAIN_FRAMES_H

#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

/// A message on the wire between client and daemon, cut with nothing of the code that is tested.
struct PlainFrame {
  unsigned kind = 0;
  std::string payload;

  unsigned number16(std::size_t at) const {
    return static_cast<std::uint8_t>(payload[at]) |
           static_cast<unsigned>(static_cast<std::uint8_t>(payload[at + 1])) << 8;
  }
  std::uint32_t number32(std::size_t at) const {
    return number16(at) | static_cast<std::uint32_t>(number16(at + 2)) << 16;
  }
};

constexpr std::size_t kMaxPlainPayload = 1024;

/// The whole frames at the start of a stream.
/// isCut  the stream goes on in a way that can't be cut: a length out of bounds
inline std::vector<PlainFrame> plainFrames(const std::string& stream, bool& isCut) {
  std::vector<PlainFrame> frames;
  std::size_t at = 0;
  isCut = false;
  while (stream.size() - at >= 4) {
    PlainFrame frame;
    frame.payload = stream.substr(at, 4);
    const std::size_t size = frame.number16(0);
    frame.kind = frame.number16(2);
    isCut = size > kMaxPlainPayload;
    if (isCut || stream.size() - at - 4 < size)
      break;
    frame.payload = stream.substr(at + 4, size);
    frames.push_back(frame);
    at += 4 + size;
  }
  return frames;
}

inline bool isPlainText(const std::string& text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      return false;
  return true;
}

} // namespace fuzz

#endif
