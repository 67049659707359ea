#ifndef STREAM_CAPTURE_H
#define STREAM_CAPTURE_H

#include <ostream>
#include <sstream>
#include <string>

namespace rig {

/// Keeps what is written to a stream while the object lives.
class StreamCapture {
public:
  explicit StreamCapture(std::ostream& stream) : mStream(stream), mBefore(stream.rdbuf(mText.rdbuf())) {}
  ~StreamCapture() { mStream.rdbuf(mBefore); }
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  /// Returns what has come since the last call.
  std::string take() {
    const std::string text = mText.str();
    mText.str({});
    return text;
  }

private:
  std::ostringstream mText;
  std::ostream& mStream;
  std::streambuf* const mBefore;
};

} // namespace rig

#endif
