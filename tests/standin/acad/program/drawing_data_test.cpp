#include "drawing_data.h"

#include "host.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using program::segmentsToKeep;

TEST(SegmentsToKeepTest, FillsTheBudgetWithTheLongestAndSpreadsTheRest) {
  std::vector<double> lengths(1000, 1.0);
  for (const std::size_t i : {3u, 400u, 999u})
    lengths[i] = 50;
  for (const std::size_t budget : {0u, 1u, 7u, 100u, 999u, 1000u, 5000u}) {
    const std::vector<bool> keep = segmentsToKeep(lengths, budget);
    ASSERT_EQ(keep.size(), lengths.size());
    EXPECT_EQ(std::count(keep.begin(), keep.end(), true),
              static_cast<std::ptrdiff_t>(std::min<std::size_t>(budget, lengths.size())));
    if (budget < 100)
      continue;
    EXPECT_TRUE(keep[3] && keep[400] && keep[999]);
    for (std::ptrdiff_t third = 0; third < 3; ++third) {
      const auto from = keep.begin() + third * 333;
      EXPECT_GT(std::count(from, from + 333, true), 10) << "nothing is left of part " << third;
    }
  }
}

class DrawingDataTest : public testing::Test {
protected:
  void SetUp() override { host::reset(); }
  void TearDown() override { host::reset(); }
};

TEST_F(DrawingDataTest, ObjectsStandWhereTheyStoodWhenTheyCame) {
  const AcDbObjectId first =
      host::add(std::make_unique<AcDbLine>(AcGePoint3d(1, 2, 3), AcGePoint3d(4, 6, 3)));
  program::DrawingData drawing;
  drawing.takeNew(0);
  AcDbObjectPointer<AcDbEntity>(first, AcDb::kForWrite)->transformBy(AcGeMatrix3d::translation({100, 0, 0}));
  host::add(std::make_unique<AcDbFace>(AcGePoint3d(0, 0, 0), AcGePoint3d(1, 0, 0), AcGePoint3d(1, 1, 0),
                                       AcGePoint3d(0, 1, 9)));
  drawing.takeNew(2.5);

  const nlohmann::json data = drawing.toJson("d.dxf", 1000);
  EXPECT_EQ(data["name"], "d.dxf");
  EXPECT_EQ(data["entities"], 2);
  ASSERT_EQ(data["objects"].size(), 2u);
  EXPECT_EQ(data["objects"][0]["lines"], nlohmann::json::parse("[[1.0,2.0,3.0,4.0,6.0,3.0]]"));
  EXPECT_FALSE(data["objects"][0].contains("t"));
  EXPECT_EQ(data["objects"][1]["kind"], "face");
  EXPECT_EQ(data["objects"][1]["t"], 2.5);
  EXPECT_EQ(data["min"], nlohmann::json::parse("[0.0,0.0,0.0]"));
  EXPECT_EQ(data["max"], nlohmann::json::parse("[4.0,6.0,9.0]"));
}

// A line that loses a segment in its middle must not be drawn straight across the gap.
TEST_F(DrawingDataTest, ThinningOutLeavesGaps) {
  std::vector<AcGePoint3d> points;
  for (int i = 0; i < 400; ++i)
    points.push_back({static_cast<double>(i), 0, 0});
  host::add(std::make_unique<AcDb3dPolyline>(points, false));
  program::DrawingData drawing;
  drawing.takeNew(0);
  const nlohmann::json data = drawing.toJson("d.dxf", 100);
  EXPECT_EQ(data["segments"], 399);
  EXPECT_EQ(data["shownSegments"], 100);
  std::size_t count = 0;
  for (const auto& line : data["objects"][0]["lines"]) {
    for (std::size_t i = 3; i < line.size(); i += 3) {
      EXPECT_EQ(line[i].get<double>() - line[i - 3].get<double>(), 1);
      ++count;
    }
  }
  EXPECT_EQ(count, 100u);
}

} // namespace
