#ifndef ADESK_H
#define ADESK_H

#include <cstdint>

/// Base types of the host's SDK.

/// A character of the host: all text that crosses the boundary is wide.
typedef wchar_t ACHAR;

namespace Adesk {
typedef std::int16_t Int16;
typedef std::int32_t Int32;
typedef std::int64_t Int64;
typedef std::uint32_t UInt32;
} // namespace Adesk

/// Names an entity or a selection set for the aced... functions.
typedef Adesk::Int64 ads_name[2];
typedef double ads_real;
typedef double ads_point[3];

/// Results of the aced... functions.
constexpr int RTNORM = 5100;
constexpr int RTERROR = -5001;

/// What `restype` says about `resval`.
constexpr short RTNONE = 5000;
constexpr short RTREAL = 5001;
constexpr short RTSHORT = 5003;
constexpr short RTSTR = 5005;

union ads_u_val {
  double rreal;
  double rpoint[3];
  short rint;
  ACHAR* rstring;
  Adesk::Int64 rlname[2];
  Adesk::Int32 rlong;
};

/// A value of the host with its type, or a list of such values.
struct resbuf {
  resbuf* rbnext;
  short restype;
  ads_u_val resval;
};

#endif
