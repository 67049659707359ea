#ifndef ADESK_H
#define ADESK_H

#include <cstdint>

/// Base types of the host's SDK.

/// A character of the host: all text that crosses the boundary is wide.
typedef wchar_t ACHAR;

namespace Adesk {
typedef std::int32_t Int32;
typedef std::int64_t Int64;
} // namespace Adesk

/// Names an entity or a selection set for the aced... functions.
typedef Adesk::Int64 ads_name[2];

/// Results of the aced... functions.
constexpr int RTNORM = 5100;
constexpr int RTERROR = -5001;

/// Says in `restype` that `resval` is a 16-bit number.
constexpr short RTSHORT = 5003;

union ads_u_val {
  double rreal;
  short rint;
  ACHAR* rstring;
};

/// A value of the host with its type, or a list of such values.
struct resbuf {
  resbuf* rbnext;
  short restype;
  ads_u_val resval;
};

#endif
