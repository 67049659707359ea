#ifndef RECORD_STREAM_H
#define RECORD_STREAM_H

#include <cstring>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

/// A stream buffer whose room grows with what is written, and stays from text to text.
class TextBuffer : public std::streambuf {
public:
  TextBuffer() { clear(); }

  std::string_view text() const { return {pbase(), static_cast<std::size_t>(pptr() - pbase())}; }
  void clear();

  /// The place for so many characters behind the text, which are part of it from now on.
  char* extend(std::size_t size) {
    if (static_cast<std::size_t>(epptr() - pptr()) < size)
      grow(size);
    char* const placeP = pptr();
    pbump(static_cast<int>(size));
    return placeP;
  }
  void append(const char* text, std::size_t size) { std::memcpy(extend(size), text, size); }

  bool mIsUsed = false; // a stream has written here, or given a locale

protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  void imbue(const std::locale&) override { mIsUsed = true; }

private:
  static constexpr std::size_t kUsualSize = 512;       // bytes
  static constexpr std::size_t kLargestKept = 1 << 16; // bytes; the room of a larger text goes back

  void grow(std::size_t size);

  std::string mRoom; // of its whole size, whatever the text takes of it
};

/// Holds the buffer as a base, so that it stands before the stream that needs it.
struct TextBufferHolder {
  TextBuffer mBuffer;
};

/// The text of one log record as an output stream, used again and again.
///
/// A new std::ostringstream for each record costs about as much as writing the record to the file. This one
/// keeps its room, and restart() makes it as good as new: empty, with no manipulator left from the record
/// before.
///
/// Most records are words and a number. As long as no manipulator is at work these go straight to the text,
/// past the stream's sentries and facets; the text is the same. Everything else takes the stream's own way,
/// and whatever has been there is set back by restart().
class RecordStream : private TextBufferHolder, public std::ostream {
public:
  RecordStream();

  std::string_view text() const { return mBuffer.text(); }
  /// For what the log itself writes around the text.
  char* extend(std::size_t size) { return mBuffer.extend(size); }
  void restart();

  using std::ostream::operator<<;
  RecordStream& operator<<(const char* words);
  RecordStream& operator<<(const std::string& words) { return writeWords(words.data(), words.size()); }
  RecordStream& operator<<(char c) { return writeWords(&c, 1); }
  RecordStream& operator<<(signed char c) { return *this << static_cast<char>(c); }
  RecordStream& operator<<(unsigned char c) { return *this << static_cast<char>(c); }
  RecordStream& operator<<(int value);
  RecordStream& operator<<(double value);

private:
  bool isPlain() const;
  bool isAsNew() const;
  RecordStream& writeWords(const char* words, std::size_t size);
  template <class T> RecordStream& writeAny(T value);

  std::ios mPristine;
};

#endif
