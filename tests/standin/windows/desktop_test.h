#ifndef DESKTOP_TEST_H
#define DESKTOP_TEST_H

#include "call_log.h"
#include "desktop.h"

#include <gmock/gmock.h>

/// A desktop as new, with no faults ordered, for each test and behind it.
class DesktopTest : public testing::Test {
protected:
  DesktopTest() { clear(); }
  ~DesktopTest() override { clear(); }

private:
  static void clear() {
    call_log::clear();
    desktop::reset();
  }
};

#endif
