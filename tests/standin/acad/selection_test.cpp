#include "acedads.h"
#include "host_test.h"

namespace {

class Selection : public HostTest {
protected:
  Selection() {
    for (int i = 0; i < 5; ++i)
      addPoint(i, 0, 0);
  }

  static int get(ads_name ss, const ACHAR* mode = L"I") {
    return acedSSGet(mode, nullptr, nullptr, nullptr, ss);
  }
  static Adesk::Int32 length(const ads_name ss) {
    Adesk::Int32 result = -1;
    return acedSSLength(ss, &result) == RTNORM ? result : -1;
  }
};

TEST_F(Selection, DeliversWhatIsSelectedNow) {
  ads_name ss = {0, 0};
  EXPECT_EQ(get(ss), RTERROR); // nothing
  host::selectNumbers({4, 2, 99, 0});
  EXPECT_EQ(get(ss, L"X"), RTERROR);
  ASSERT_EQ(get(ss), RTNORM);
  host::selectNumbers({1}); // the set stays what it was
  EXPECT_EQ(length(ss), 2);
  ads_name name = {11, 12};
  for (const Adesk::Int32 place : {2, -1})
    EXPECT_EQ(acedSSName(ss, place, name), RTERROR);
  EXPECT_EQ(name[0], 11);
  AcDbObjectId id;
  ASSERT_EQ(acedSSName(ss, 1, name), RTNORM);
  EXPECT_EQ(acdbGetObjectId(id, name), Acad::eOk);
  EXPECT_EQ(id, host::entityId(2));
  // Names of sets and of entities are not mixed up.
  EXPECT_EQ(acdbGetObjectId(id, ss), Acad::eUnknownObjectId);
  EXPECT_EQ(id, host::entityId(2));
  EXPECT_EQ(length(name), -1);
  EXPECT_EQ(acedRedraw(ss, 1), RTERROR);
  EXPECT_EQ(acedRedraw(name, 1), RTNORM);
}

TEST_F(Selection, AFreedSetIsGoneAlsoWhenItsPlaceIsTakenAgain) {
  host::selectAll();
  ads_name first, second;
  ASSERT_EQ(get(first), RTNORM);
  EXPECT_EQ(acedSSFree(first), RTNORM);
  EXPECT_EQ(acedSSFree(first), RTERROR);
  ASSERT_EQ(get(second), RTNORM);
  EXPECT_EQ(length(first), -1);
  EXPECT_EQ(acedSSFree(first), RTERROR);
  EXPECT_EQ(length(second), 5);
  // The host runs out of sets for those who never free.
  ads_name more;
  for (int i = 1; i < 128; ++i)
    ASSERT_EQ(get(more), RTNORM);
  EXPECT_EQ(get(more), RTERROR);
  EXPECT_EQ(acedSSFree(second), RTNORM);
  EXPECT_EQ(get(more), RTNORM);
  EXPECT_EQ(host::held().selectionSets, 128);
}

} // namespace
