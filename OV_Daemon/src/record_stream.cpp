#include "record_stream.h"

#include <algorithm>
#include <locale>

#include "number_text.h"

void TextBuffer::clear() {
  if (mRoom.empty() || mRoom.size() > kLargestKept)
    std::string(kUsualSize, ' ').swap(mRoom);
  setp(&mRoom[0], &mRoom[0] + mRoom.size());
}

void TextBuffer::grow(std::size_t size) {
  const std::size_t used = text().size();
  mRoom.resize(std::max(2 * mRoom.size(), used + size));
  setp(&mRoom[0], &mRoom[0] + mRoom.size());
  pbump(static_cast<int>(used));
}

TextBuffer::int_type TextBuffer::overflow(int_type c) {
  if (!traits_type::eq_int_type(c, traits_type::eof())) {
    const char one = traits_type::to_char_type(c);
    xsputn(&one, 1);
  }
  return traits_type::not_eof(c);
}

std::streamsize TextBuffer::xsputn(const char* text, std::streamsize size) {
  mIsUsed = true;
  append(text, static_cast<std::size_t>(size));
  return size;
}

RecordStream::RecordStream() : std::ostream(&mBuffer), mPristine(nullptr) {
  // A host that sets a locale for the process mustn't put grouping dots into our numbers.
  imbue(std::locale::classic());
  mPristine.copyfmt(*this);
  mBuffer.mIsUsed = false;
}

void RecordStream::restart() {
  mBuffer.clear();
  if (isAsNew())
    return;
  std::ostream::clear();
  copyfmt(mPristine);
  mBuffer.mIsUsed = false;
}

/// No manipulator is at work that would show in words or a number.
inline bool RecordStream::isPlain() const {
  return !mBuffer.mIsUsed && width() == 0 && flags() == mPristine.flags() &&
         precision() == mPristine.precision() && rdstate() == goodbit;
}

bool RecordStream::isAsNew() const {
  return isPlain() && fill() == ' ' && exceptions() == goodbit;
}

RecordStream& RecordStream::operator<<(const char* words) {
  if (words)
    return writeWords(words, std::strlen(words));
  static_cast<std::ostream&>(*this) << words; // ends the record's text, as on any stream
  return *this;
}

RecordStream& RecordStream::writeWords(const char* words, std::size_t size) {
  if (isPlain())
    mBuffer.append(words, size);
  else
    static_cast<std::ostream&>(*this) << std::string_view(words, size);
  return *this;
}

RecordStream& RecordStream::operator<<(int value) {
  return writeAny(value);
}

RecordStream& RecordStream::operator<<(double value) {
  return writeAny(value);
}

template <class T> RecordStream& RecordStream::writeAny(T value) {
  char number[kNumberRoom];
  const std::size_t size = isPlain() ? writeNumber(number, value) : 0;
  if (size > 0)
    mBuffer.append(number, size);
  else
    std::ostream::operator<<(value);
  return *this;
}
