#ifndef HOST_PLAYER_H
#define HOST_PLAYER_H

#include "controls.h"
#include "dxf_reader.h"
#include "recorder.h"
#include "session.h"

#include <iosfwd>
#include <vector>

namespace program {

/// Name in the trace of a host line that is done, with the line as its text.
constexpr char kHostLine[] = "host line";

/// Does at the host what a session's host lines say, each when its time has come. Belongs to the main thread.
class HostPlayer {
public:
  /// log  receives a line for each caption, and for each line of the session that had no effect
  HostPlayer(const session::Session& session, Controls& controls, Recorder& recorder, std::ostream& log);

  /// Does the lines that are due.
  /// nextPass  number of the pass that comes next, where the session counts them
  void play(double seconds, std::int64_t nextPass = 0);
  /// Does one line now, and runs what it typed. Between two ticks.
  void perform(const session::Action& action);
  /// Time of the session's last line, the device's lines and absences included.
  double end() const { return mEnd; }

private:
  void select(const session::Action& action);
  void changeDrawing(const session::Action& action);
  void report(const session::Action& action, const std::string& text);

  std::vector<session::Action> mActions;
  std::size_t mNext = 0;
  double mEnd = 0;
  Controls& mControls;
  Recorder& mRecorder;
  std::ostream& mLog;
};

/// Reads a DXF file into the host's current document, which gets the file's name and a first view that shows its
/// depth: from the front right, above, with some room around. Changes nothing if the file can't be read.
dxf::Result loadDrawing(const std::string& path);

} // namespace program

#endif
