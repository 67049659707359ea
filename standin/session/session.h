#ifndef SESSION_H
#define SESSION_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Sessions: text files that say what happens when, to the device and at the host. Daemon and host read the
/// same file, each plays its own lines. Who writes one means well: mistakes are named, nothing guards against
/// malice. Nothing here keeps state; all may be called from any thread.
///
///     # seconds  who     what
///     0.5        device  motion 0 0 300 0 0 0
///     6.0        host    select 1 4
///
/// A line holds time, player, verb and arguments, separated by blanks or tabs. A word that begins with #
/// starts a comment, except in the text of `type`, `caption` and `open`. Times never decrease; lines of equal time
/// are played in the order in which they stand.
///
/// A session may count the plug-in's passes in place of seconds. It says exactly what happened, so that it
/// can happen again:
///
///     p7         device  motion 0 0 300 0 0 0    # pass 7 sees this sample, and so do those after it
///     p9         device  key 3                   # pass 9 serves the key
///     p31        host    tick                    # a tick's time was up before pass 31
///     p40        host    select 1 4              # done before pass 40, between two ticks
namespace session {

enum class Who { device, host };

enum class Verb {
  // device
  /// mAxes: x y z a b c.
  motion,
  /// mEventCode.
  view,
  /// mEventCode.
  zoom,
  /// mEventCode.
  key,
  /// mRotationCode, mIsOn = zoom to all after a view; mEventCode asks the client to read them.
  rotation,
  /// mEventCode: the client is to announce its mode.
  mode,
  /// mEventCode, as given, 0 or more.
  event,
  /// mValue: the daemon is gone for that number of seconds.
  away,
  // device, its panel
  /// mAxis, mValue: the axis is multiplied by so much.
  gain,
  /// mAxis, mValue: the axis is shortened by that number of counts.
  deadzone,
  /// mAxis, mOtherAxis: each gets what the other had.
  swap,
  /// mIsOn: only the strongest axis acts.
  dominant,
  // host
  /// mSelection, mObjects.
  select,
  /// mText, as typed; without the return at the end.
  type,
  /// mIsOn.
  layout,
  /// mIsOn: the layout's viewport is entered, so that its view is turned; off returns to the layout itself.
  viewport,
  /// mObjects: they are on a locked layer from now on, and can't be moved.
  lock,
  /// mObjects: they aren't any more.
  unlock,
  /// mIsOn.
  perspective,
  /// mPointer: what the mouse pointer rests on from now on.
  pointer,
  /// mLook: eye, target, up.
  look,
  /// Zooms to extents without the command line.
  fit,
  /// mText: path of a DXF file, from the folder that the host was started in. It becomes the current drawing, with a
  /// view, a selection, a lock and variables of its own.
  open,
  /// mObjects[0]: number of the drawing that becomes current; they count from 1 in the order of opening.
  drawing,
  /// The current drawing is closed, and the one before it is current again. After the last one, an empty one is,
  /// which counts too.
  close,
  /// mText, for the report.
  caption,
  /// No action; keeps the host going until this time.
  wait,
  /// mText: name and value in the plug-in's settings file, written before the plug-in is loaded.
  setting,
  /// A tick ended because its time was up; only where passes are counted.
  tick
};

enum class Selection { objects, all, none, line };
enum class Pointer { view, tree, list, edit, wheel, none };
/// Names of the pointer's places in sessions and reports, in the order of Pointer.
constexpr const char* kPointerNames[] = {"view", "tree", "list", "edit", "wheel", "none"};

/// Event codes of the device, as the client library delivers them.
constexpr std::int32_t kEventRotationChanged = 0x20001;
constexpr std::int32_t kEventZoomAll = 0x2000C;
constexpr std::int32_t kEventAnnounceMode = 0x20013;
constexpr std::int32_t kEventFirstKey = 0x20020;
/// What codes are called in sessions and reports.
struct EventName {
  std::int32_t mCode;
  const char* mName;
  /// The name follows the verb `view`; otherwise it is a verb.
  bool mIsView;
};
constexpr EventName kEventNames[] = {
    {kEventRotationChanged, "rotation", false},
    {0x20009, "front", true},
    {0x2000A, "right", true},
    {0x2000B, "top", true},
    {kEventZoomAll, "zoom", false},
    {kEventAnnounceMode, "mode", false},
    {0x20016, "back", true},
    {0x20017, "left", true},
    {0x20018, "bottom", true},
};
/// Returns the name of a code, "key 3" for a key, and for any other the code in hexadecimal.
std::string eventName(std::int32_t code);
constexpr int kMaxKey = 100000;

/// Longest time and longest absence, seconds: one day.
constexpr double kMaxSeconds = 86400;
/// Highest number of a pass: a day at a thousand passes a second.
constexpr std::int64_t kMaxPass = 86400000;

/// One line of a session. Only the fields that the verb names above have a meaning.
struct Action {
  /// Since the start of the session; 0 if passes are counted.
  double mSeconds = 0;
  /// Number of the pass, from 1; 0 if the session's time is in seconds.
  std::int64_t mPass = 0;
  Who mWho = Who::device;
  Verb mVerb = Verb::wait;
  /// In its file, from 1.
  int mLine = 0;

  /// x y z a b c, device counts.
  std::array<std::int16_t, 6> mAxes{};
  std::int32_t mEventCode = 0;
  std::int32_t mRotationCode = 0;
  /// Seconds, a factor, or counts.
  double mValue = 0;
  /// 0 to 5 for x y z a b c.
  std::size_t mAxis = 0;
  std::size_t mOtherAxis = 0;
  bool mIsOn = false;
  Selection mSelection = Selection::none;
  /// Numbers of objects in drawing order, from 1.
  std::vector<int> mObjects;
  Pointer mPointer = Pointer::none;
  /// Eye x y z, target x y z, up x y z; world coordinates.
  std::array<double, 9> mLook{};
  /// UTF-8.
  std::string mText;
  /// The line from the verb on, as it was read.
  std::string mSource;
};

/// What came of reading a session. If anything was wrong, mActions is empty: nothing is to be played.
struct Session {
  /// Both players' lines, in order.
  std::vector<Action> mActions;
  /// Each "FILE:LINE: reason", or "FILE: reason"; the first 20.
  std::vector<std::string> mErrors;

  bool isGood() const { return mErrors.empty(); }
  /// Whether it counts passes.
  bool isCounted() const { return !mActions.empty() && mActions.front().mPass > 0; }
  /// The lines of one player, in order.
  std::vector<Action> actionsOf(Who who) const;
};

/// Reads a session from a file. A missing file, a folder or a binary file is an error like a bad line.
Session read(const std::string& path);

/// Reads a session from a text in memory; fileName is for the error messages.
Session parse(std::string_view text, const std::string& fileName);

/// Reads one line of a device without time and player, as in "motion 0 0 300 0 0 0"; so the daemon takes them
/// from its standard input. Returns true and fills the action, or false and fills the error with the reason. For
/// an empty line or a comment it returns false with an empty error.
bool parseDeviceLine(std::string_view line, Action& action, std::string& error);
/// The same for a line of the host, as in "select 1 4".
bool parseHostLine(std::string_view line, Action& action, std::string& error);

/// Returns the line of a device without time and player that parseDeviceLine() would read so; not for an absence.
std::string deviceLine(const Action& action);

} // namespace session

#endif
