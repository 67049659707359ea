#include "drawing_data.h"

#include "host.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace program {

namespace {

using nlohmann::json;

std::string kindOf(const AcDbEntity& entity) {
  if (entity.isKindOf(AcDbFace::desc()))
    return "face";
  if (entity.isKindOf(AcDbPolyFaceMesh::desc()))
    return "mesh";
  if (entity.isKindOf(AcDbBlockReference::desc()))
    return "block";
  return entity.isKindOf(AcDbLine::desc()) ? "line" : "curve";
}

bool isFinite(const AcGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

double distance(const std::array<double, 3>& a, const std::array<double, 3>& b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// A line without the segments that don't stay; falls into pieces where some are missing.
void addKept(const Line& line, std::vector<bool>::const_iterator keep, json& lines) {
  json piece = json::array();
  const auto addPoint = [&piece](const std::array<double, 3>& p) {
    for (const double c : p)
      piece.push_back(c);
  };
  for (std::size_t i = 0; i + 1 < line.size(); ++i) {
    if (keep[static_cast<std::ptrdiff_t>(i)]) {
      if (piece.empty())
        addPoint(line[i]);
      addPoint(line[i + 1]);
    } else if (!piece.empty()) {
      lines.push_back(std::move(piece));
      piece = json::array();
    }
  }
  if (!piece.empty())
    lines.push_back(std::move(piece));
}

/// An object with those of its segments that stay, if any; the iterator moves past them all.
void addObject(const DrawnObject& object, std::vector<bool>::const_iterator& keep, json& objects) {
  json lines = json::array();
  for (const Line& line : object.mLines) {
    addKept(line, keep, lines);
    keep += static_cast<std::ptrdiff_t>(line.size()) - 1;
  }
  if (lines.empty())
    return;
  json entry = {{"id", object.mNumber}, {"kind", object.mKind}, {"lines", std::move(lines)}};
  if (object.mSeconds > 0)
    entry["t"] = object.mSeconds;
  objects.push_back(std::move(entry));
}

} // namespace

std::vector<bool> segmentsToKeep(const std::vector<double>& lengths, std::size_t budget) {
  std::vector<bool> keep(lengths.size(), lengths.size() <= budget);
  if (lengths.size() <= budget)
    return keep;
  std::vector<std::size_t> order(lengths.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::size_t longest = budget / 2;
  std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(longest), order.end(),
                   [&lengths](std::size_t a, std::size_t b) { return lengths[a] > lengths[b]; });
  for (std::size_t i = 0; i < longest; ++i)
    keep[order[i]] = true;
  std::sort(order.begin() + static_cast<std::ptrdiff_t>(longest), order.end());
  const std::size_t others = order.size() - longest;
  const std::size_t wanted = budget - longest;
  for (std::size_t i = 0; i < wanted; ++i)
    keep[order[longest + i * others / wanted]] = true;
  return keep;
}

void DrawingData::takeNew(double seconds) {
  const int count = host::entityCount();
  for (int number = static_cast<int>(mObjects.size()) + 1; number <= count; ++number) {
    const AcDbEntity* const entityP = host::entity(number);
    if (!entityP)
      break;
    DrawnObject object;
    object.mNumber = number;
    object.mKind = kindOf(*entityP);
    object.mSeconds = seconds;
    for (const AcDbStroke& stroke : host::strokes(*entityP)) {
      Line line;
      for (const AcGePoint3d& p : stroke) {
        if (isFinite(p))
          line.push_back({p.x, p.y, p.z});
      }
      if (line.size() == 1)
        line.push_back(line.front()); // a point is drawn as a line without length
      if (!line.empty())
        object.mLines.push_back(std::move(line));
    }
    mObjects.push_back(std::move(object));
  }
}

std::size_t DrawingData::segmentCount() const {
  std::size_t count = 0;
  for (const DrawnObject& object : mObjects) {
    for (const Line& line : object.mLines)
      count += line.size() - 1;
  }
  return count;
}

json DrawingData::toJson(const std::string& name, std::size_t budget) const {
  std::vector<double> lengths;
  lengths.reserve(segmentCount());
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::array<double, 3> low{kInfinity, kInfinity, kInfinity};
  std::array<double, 3> high{-kInfinity, -kInfinity, -kInfinity};
  for (const DrawnObject& object : mObjects) {
    for (const Line& line : object.mLines) {
      for (std::size_t i = 0; i < line.size(); ++i) {
        if (i > 0)
          lengths.push_back(distance(line[i - 1], line[i]));
        for (std::size_t axis = 0; axis < 3; ++axis) {
          low[axis] = std::min(low[axis], line[i][axis]);
          high[axis] = std::max(high[axis], line[i][axis]);
        }
      }
    }
  }
  const std::vector<bool> keep = segmentsToKeep(lengths, budget);

  json objects = json::array();
  auto at = keep.begin();
  for (const DrawnObject& object : mObjects)
    addObject(object, at, objects);
  if (lengths.empty())
    low = high = {0, 0, 0};
  return {{"name", name},
          {"entities", mObjects.size()},
          {"segments", lengths.size()},
          {"shownSegments", std::count(keep.begin(), keep.end(), true)},
          {"min", low},
          {"max", high},
          {"objects", std::move(objects)}};
}

json DrawingData::objectsFrom(std::size_t first) const {
  const std::vector<bool> keep(segmentCount(), true);
  json objects = json::array();
  auto at = keep.begin();
  for (std::size_t i = first; i < mObjects.size(); ++i)
    addObject(mObjects[i], at, objects);
  return objects;
}

} // namespace program
