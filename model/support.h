#ifndef MODEL_SUPPORT_H
#define MODEL_SUPPORT_H

#include "geometry.h"
#include "replay.h"

#include <locale>
#include <optional>
#include <sstream>

namespace model {

constexpr double RTNORM = 5100; // the host's status for success

/// Join the parts, with numbers as a fresh stream of the "C" locale writes them.
template <typename... Parts> std::string text(const Parts&... parts) {
  std::ostringstream os;
  os.imbue(std::locale::classic());
  (os << ... << parts);
  return os.str();
}

/// Give one number of a call's result.
inline double out(const Call& call, std::size_t index) {
  if (index >= call.out.size()) {
    throw Contradiction(text(call.name, ": result ", index, " isn't recorded"));
  }
  return call.out[index];
}

/// Give three numbers of a call's result.
inline Vec3 outPoint(const Call& call, std::size_t index) {
  return {out(call, index), out(call, index + 1), out(call, index + 2)};
}

/// Make a call and give the first number of its result.
inline double ask(Replay& replay, const char* name, const std::vector<Arg>& in = {}) {
  return out(replay.call(name, in), 0);
}

/// Make a call that delivers a point or a vector.
inline Vec3 askPoint(Replay& replay, const char* name, double object) {
  return outPoint(replay.call(name, {object}), 0);
}

/// The document manager and the current document, 0 for null.
struct Documents {
  double manager = 0;
  double current = 0;
};

inline Documents currentDocument(Replay& replay) {
  const double manager = ask(replay, "acDocManagerPtr");
  return {manager, manager == 0 ? 0 : ask(replay, "curDocument")};
}

/// What an operation still has to give back to the host.
struct Held {
  std::optional<double> set;
  std::optional<double> object;
};

/// Close the held object. It stays held if the host throws.
inline void closeObject(Replay& replay, Held& held) {
  replay.call("close", {held.object.value()});
  held.object.reset();
}

/// Free the held selection set, if there is one. It stays held if the host throws.
inline void freeSet(Replay& replay, Held& held) {
  if (held.set) {
    replay.call("acedSSFree", {*held.set});
    held.set.reset();
  }
}

/// Give back everything that is still held after an exception, also what threw at that, and let no further
/// exception out.
inline void giveBack(Replay& replay, Held& held) {
  try {
    if (held.object) {
      closeObject(replay, held);
    }
  } catch (const HostException&) {
  }
  try {
    freeSet(replay, held);
  } catch (const HostException&) {
  }
}

} // namespace model

#endif
