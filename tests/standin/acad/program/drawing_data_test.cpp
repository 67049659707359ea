#include "drawing_data.h"

#include "host.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

TEST(DrawingDataTest, ObjectsStandWhereTheyCame) {
  host::reset();
  const auto first = host::add(std::make_unique<AcDbLine>(AcGePoint3d(1, 2, 3), AcGePoint3d(4, 6, 3)));
  program::DrawingData drawing;
  drawing.takeNew(0);
  AcDbObjectPointer<AcDbEntity>(first, AcDb::kForWrite)->transformBy(AcGeMatrix3d::translation({100, 0, 0}));
  host::add(std::make_unique<AcDbPoint>(AcGePoint3d(0, 0, 9)));
  drawing.takeNew(2.5);
  const nlohmann::json data = drawing.toJson("d.dxf", 1000);
  ASSERT_EQ(data["objects"].size(), 2u);
  EXPECT_EQ(data["objects"][0]["lines"], nlohmann::json::parse("[[1.0,2.0,3.0,4.0,6.0,3.0]]"));
  EXPECT_EQ(data["objects"][1]["t"], 2.5);
  EXPECT_EQ(data["max"], nlohmann::json::parse("[4.0,6.0,9.0]"));
}

} // namespace
