#ifndef LOG_FILE_H
#define LOG_FILE_H

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

/// The log file as an output stream of whole records.
///
/// A record goes through the stream's buffer: that is one plain system call, where an unbuffered stream makes
/// a dearer one. What the disk refuses is dropped from the buffer, or it would be written later, in the
/// middle of another record.
class LogFile : private std::filebuf {
public:
  /// Opens the file at its end, or a new one; it may be read by others meanwhile.
  /// path  with the separators of this system
  void open(const std::string& path) {
    // Binary: line feeds alone, on every system.
    if (std::filebuf::open(path, std::ios::out | std::ios::app | std::ios::binary))
      pubseekoff(0, std::ios::end, std::ios::out);
  }
  using std::filebuf::close;
  using std::filebuf::is_open;

  /// Hands the text to the system. False: not all of it, and the rest is lost.
  bool write(std::string_view text) {
    const bool isWhole = put(text) && pubsync() == 0;
    if (!isWhole)
      setp(pbase(), epptr());
    return isWhole;
  }

  /// Where the next record goes: the file's size. -1 if that can't be told.
  std::int64_t position() { return pubseekoff(0, std::ios::cur, std::ios::out); }

private:
  /// Puts the text into the buffer. A record is short, and sputn asks a lot before it copies.
  bool put(std::string_view text) {
    const auto size = static_cast<std::streamsize>(text.size());
    if (size > epptr() - pptr())
      return sputn(text.data(), size) == size;
    std::memcpy(pptr(), text.data(), text.size());
    pbump(static_cast<int>(size));
    return true;
  }
};

#endif
