#ifndef RECORD_STREAM_H
#define RECORD_STREAM_H

#include <locale>
#include <ostream>
#include <streambuf>
#include <string>

/// A stream buffer that appends to a string.
class StringBuffer : public std::streambuf {
public:
  std::string mText;

protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof()))
      mText.push_back(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    mText.append(text, static_cast<std::size_t>(size));
    return size;
  }
};

/// Holds the buffer as a base, so that it stands before the stream that needs it.
struct StringBufferHolder {
  StringBuffer mBuffer;
};

/// The text of one log record as an output stream, used again and again.
///
/// A new std::ostringstream for each record costs about as much as writing the record to the file. This one
/// keeps its room, and restart() makes it as good as new: empty, with no manipulator left from the record
/// before.
class RecordStream : private StringBufferHolder, public std::ostream {
public:
  RecordStream() : std::ostream(&mBuffer), mPristine(nullptr) {
    // A host that sets a locale for the process mustn't put grouping dots into our numbers.
    imbue(std::locale::classic());
    mPristine.copyfmt(*this);
    mBuffer.mText.reserve(kUsualSize);
  }

  std::string& text() { return mBuffer.mText; }

  void restart() {
    mBuffer.mText.clear();
    if (mBuffer.mText.capacity() > kLargestKept)
      std::string().swap(mBuffer.mText);
    clear();
    copyfmt(mPristine);
  }

private:
  static constexpr std::size_t kUsualSize = 512;       // bytes
  static constexpr std::size_t kLargestKept = 1 << 16; // bytes; the room of a larger record goes back

  std::ios mPristine;
};

#endif
