#ifndef ENTITIES_H
#define ENTITIES_H

#include <memory>
#include <vector>

#include "dbents.h"
#include "records.h"

namespace dxf {

/// Makes the host's entity from a record. Returns null if the record describes no shape. Throws BadFile for
/// an invalid number.
typedef std::unique_ptr<AcDbEntity> (*Maker)(const Record&);

/// Returns the maker for a kind of entity, null if there is none.
Maker makerOf(std::string_view kind);

/// Returns points along a rational B-spline, ends included; none if the knots don't fit.
std::vector<AcGePoint3d> splinePoints(int degree, const std::vector<double>& knots,
                                      const std::vector<AcGePoint3d>& controls,
                                      const std::vector<double>& weights);

} // namespace dxf

#endif
