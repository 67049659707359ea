#ifndef TRACE_TYPES_H
#define TRACE_TYPES_H

#include "call_log.h"
#include "dbents.h"

/// Appends values of the host's own types to the trace of calls.
inline void append(std::vector<double>& numbers, std::wstring&, const AcGePoint3d& p) {
  numbers.insert(numbers.end(), {p.x, p.y, p.z});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGeVector3d& v) {
  numbers.insert(numbers.end(), {v.x, v.y, v.z});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGePoint2d& p) {
  numbers.insert(numbers.end(), {p.x, p.y});
}
inline void append(std::vector<double>& numbers, std::wstring&, const AcGeMatrix3d& m) {
  numbers.insert(numbers.end(), &m.entry[0][0], &m.entry[0][0] + 16);
}
inline void append(std::vector<double>& numbers, std::wstring&, AcDbObjectId id) {
  numbers.push_back(static_cast<double>(id.asOldId()));
}

#endif
