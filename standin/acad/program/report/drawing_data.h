#ifndef DRAWING_DATA_H
#define DRAWING_DATA_H

#include "dbents.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace program {

/// The coordinates of a point or a vector.
template <class Xyz> nlohmann::json xyz(const Xyz& v) {
  return {v.x, v.y, v.z};
}

/// One object of the drawing, as it was when the host opened or drew it.
struct DrawnObject {
  int mNumber = 0;
  /// "face", "mesh", "block", "line" or "curve".
  std::string mKind;
  /// When it came into the drawing, since the session's start; 0 for what was there when that was opened.
  double mSeconds = 0;
  std::vector<AcDbStroke> mLines;
};

/// A drawing as the report shows it: lines through points, in world coordinates.
class DrawingData {
public:
  /// Takes in the objects of the host's current drawing that it hasn't seen yet.
  void takeNew(double seconds);
  /// Returns the picture, thinned out to about that number of segments: half of them are the longest ones, which
  /// give a drawing its shape, the rest an even choice of the others.
  nlohmann::json toJson(std::size_t budget) const;

  /// Returns the objects from an index on, in full, as toJson() has them.
  nlohmann::json objectsFrom(std::size_t first) const;

  const std::vector<DrawnObject>& objects() const { return mObjects; }
  const std::string& name() const { return mName; }

private:
  std::string mName;
  std::vector<DrawnObject> mObjects;
};

} // namespace program

#endif
