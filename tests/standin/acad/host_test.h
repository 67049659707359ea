#ifndef HOST_TEST_H
#define HOST_TEST_H

#include <gtest/gtest.h>

#include "call_log.h"
#include "host.h"

/// A freshly reset host without ordered faults, before and after each test.
class HostTest : public testing::Test {
protected:
  HostTest() { clear(); }
  ~HostTest() override { clear(); }

  static AcDbObjectId addLine(const AcGePoint3d& start, const AcGePoint3d& end) {
    return host::add(std::make_unique<AcDbLine>(start, end));
  }
  static AcDbObjectId addPoint(double x, double y, double z) {
    return host::add(std::make_unique<AcDbPoint>(AcGePoint3d(x, y, z)));
  }

private:
  static void clear() {
    call_log::clear();
    host::reset();
  }
};

inline void expectBox(const AcDbExtents& box, const AcGePoint3d& low, const AcGePoint3d& high) {
  for (const auto axis : {&AcGePoint3d::x, &AcGePoint3d::y, &AcGePoint3d::z}) {
    EXPECT_NEAR(box.minPoint().*axis, low.*axis, 1e-9);
    EXPECT_NEAR(box.maxPoint().*axis, high.*axis, 1e-9);
  }
}

#endif
