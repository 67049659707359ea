#include "protocol.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace devlink {

MessageWriter::MessageWriter(Bytes& out, Kind kind) : mOut(out), mStart(out.size()) {
  mOut.resize(mStart + 2); // the length
  number16(static_cast<std::uint16_t>(kind));
}

MessageWriter& MessageWriter::number16(std::uint16_t value) {
  return record({static_cast<std::uint8_t>(value & 0xFF), static_cast<std::uint8_t>(value >> 8)});
}

MessageWriter& MessageWriter::number32(std::uint32_t value) {
  number16(static_cast<std::uint16_t>(value & 0xFFFF));
  return number16(static_cast<std::uint16_t>(value >> 16));
}

MessageWriter& MessageWriter::text(std::string_view value) {
  number16(static_cast<std::uint16_t>(value.size()));
  return record({value.begin(), value.end()});
}

MessageWriter& MessageWriter::record(const Bytes& bytes) {
  mOut.insert(mOut.end(), bytes.begin(), bytes.end());
  const std::size_t size = mOut.size() - mStart - kHeaderBytes;
  mOut[mStart] = static_cast<std::uint8_t>(size & 0xFF);
  mOut[mStart + 1] = static_cast<std::uint8_t>(size >> 8);
  return *this;
}

bool MessageReader::take(std::size_t size) {
  mIsGood = mIsGood && size <= mLeft;
  if (!mIsGood)
    return false;
  mNextP += size;
  mLeft -= size;
  return true;
}

std::uint16_t MessageReader::number16() {
  const std::uint8_t* bytes = mNextP;
  return take(2) ? static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8) : std::uint16_t{0};
}

std::uint32_t MessageReader::number32() {
  const std::uint32_t low = number16();
  return low | static_cast<std::uint32_t>(number16()) << 16;
}

std::string MessageReader::text(std::size_t maxBytes) {
  const Bytes bytes = record(number16());
  std::string found(bytes.begin(), bytes.end());
  mIsGood = mIsGood && isText(found, maxBytes);
  return mIsGood ? found : std::string{};
}

Bytes MessageReader::record(std::size_t size) {
  const std::uint8_t* bytes = mNextP;
  return take(size) ? Bytes(bytes, bytes + size) : Bytes{};
}

std::uint8_t* MessageBuffer::room(std::size_t& size) {
  std::memmove(mBytes.data(), mBytes.data() + mStart, mEnd - mStart);
  mEnd -= mStart;
  mStart = 0;
  size = mBytes.size() - mEnd;
  return mBytes.data() + mEnd;
}

MessageBuffer::Next MessageBuffer::next(Message& message) {
  const std::uint8_t* header = mBytes.data() + mStart;
  if (mEnd - mStart < kHeaderBytes)
    return Next::incomplete;
  const std::size_t size = static_cast<std::size_t>(header[0] | header[1] << 8);
  if (size > kMaxPayloadBytes)
    return Next::bad;
  if (mEnd - mStart < kHeaderBytes + size)
    return Next::incomplete;
  message.mKind = static_cast<Kind>(header[2] | header[3] << 8);
  message.mPayloadP = header + kHeaderBytes;
  message.mSize = size;
  mStart += kHeaderBytes + size;
  return Next::message;
}

bool isText(std::string_view text, std::size_t maxBytes) {
  return text.size() <= maxBytes && std::none_of(text.begin(), text.end(), [](char c) {
           return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
         });
}

std::uint16_t portFrom(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc{} && end == text.data() + text.size() ? port : std::uint16_t{0};
}

} // namespace devlink
