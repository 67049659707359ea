#include "drawing_data.h"

#include "host.h"

#include <algorithm>
#include <functional>

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

/// Decides which segments stay, of all of them in order.
class Thinning {
public:
  /// Keeps all.
  Thinning() = default;
  Thinning(std::vector<double> lengths, std::size_t budget) {
    if (lengths.size() <= budget)
      return;
    const std::size_t longest = budget / 2;
    const auto last = lengths.begin() + static_cast<std::ptrdiff_t>(longest);
    std::nth_element(lengths.begin(), last, lengths.end(), std::greater<>());
    mLimit = *last;
    mStep = (lengths.size() - longest - 1) / (budget - longest) + 1;
  }

  bool keeps(double length) {
    const bool isKept = length > mLimit || mOthers++ % mStep == 0;
    mKept += isKept ? 1 : 0;
    return isKept;
  }
  std::size_t kept() const { return mKept; }

private:
  /// Longer ones stay, and each mStep-th of the others.
  double mLimit = -1;
  std::size_t mStep = 1;
  std::size_t mOthers = 0;
  std::size_t mKept = 0;
};

/// Adds a line without the segments that don't stay, in pieces where some are missing.
void addKept(const AcDbStroke& line, Thinning& thinning, json& lines) {
  json piece = json::array();
  const auto addPoint = [&piece](const AcGePoint3d& p) { piece.insert(piece.end(), {p.x, p.y, p.z}); };
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (thinning.keeps((line[i] - line[i - 1]).length())) {
      if (piece.empty())
        addPoint(line[i - 1]);
      addPoint(line[i]);
    } else if (!piece.empty()) {
      lines.push_back(std::move(piece));
      piece = json::array();
    }
  }
  if (!piece.empty())
    lines.push_back(std::move(piece));
}

/// Adds an object with those of its segments that stay, if any.
void addObject(const DrawnObject& object, Thinning& thinning, json& objects) {
  json lines = json::array();
  for (const AcDbStroke& line : object.mLines)
    addKept(line, thinning, lines);
  if (lines.empty())
    return;
  json entry = {{"id", object.mNumber}, {"kind", object.mKind}, {"lines", std::move(lines)}};
  if (object.mSeconds > 0)
    entry["t"] = object.mSeconds;
  objects.push_back(std::move(entry));
}

} // namespace

void DrawingData::takeNew(double seconds) {
  mName = host::documentName();
  for (int number = static_cast<int>(mObjects.size()) + 1; number <= host::entityCount(); ++number) {
    DrawnObject object{number, kindOf(*host::entity(number)), seconds, {}};
    for (AcDbStroke& line : host::strokes(number)) {
      line.erase(std::remove_if(line.begin(), line.end(), std::not_fn(host::isFinite)), line.end());
      if (line.size() == 1)
        line.push_back(AcGePoint3d(line.front())); // a point is drawn as a line without length
      if (!line.empty())
        object.mLines.push_back(std::move(line));
    }
    mObjects.push_back(std::move(object));
  }
}

json DrawingData::toJson(std::size_t budget) const {
  std::vector<double> lengths;
  AcDbExtents box;
  for (const DrawnObject& object : mObjects) {
    for (const AcDbStroke& line : object.mLines) {
      for (std::size_t i = 0; i < line.size(); ++i) {
        box.addPoint(line[i]);
        if (i > 0)
          lengths.push_back((line[i] - line[i - 1]).length());
      }
    }
  }
  if (box.isEmpty())
    box.addPoint(AcGePoint3d::kOrigin);
  const std::size_t segments = lengths.size();
  Thinning thinning(std::move(lengths), budget);
  json objects = json::array();
  for (const DrawnObject& object : mObjects)
    addObject(object, thinning, objects);
  return {{"name", mName},
          {"entities", mObjects.size()},
          {"segments", segments},
          {"shownSegments", thinning.kept()},
          {"min", xyz(box.minPoint())},
          {"max", xyz(box.maxPoint())},
          {"objects", std::move(objects)}};
}

json DrawingData::objectsFrom(std::size_t first) const {
  Thinning all;
  json objects = json::array();
  for (std::size_t i = first; i < mObjects.size(); ++i)
    addObject(mObjects[i], all, objects);
  return objects;
}

} // namespace program
