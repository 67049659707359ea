// The counts that tests of the plug-in rely on, and the limits of what the command line works out.

#include <algorithm>
#include <cmath>

#include "acdocman.h"
#include "acedads.h"
#include "acgs.h"
#include "host_test.h"

namespace {

TEST_F(HostTest, CountsOpenObjects) {
  const AcDbObjectId line = addLine({0, 0, 0}, {1, 0, 0});
  AcDbEntity *first = nullptr, *second = nullptr, *writer = nullptr;
  ASSERT_EQ(acdbOpenObject(first, line), Acad::eOk);
  ASSERT_EQ(acdbOpenObject(second, line, AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(writer, line, AcDb::kForWrite), Acad::eWasOpenForRead);
  EXPECT_EQ(first->transformBy(AcGeMatrix3d::translation({1, 0, 0})), Acad::eNotOpenForWrite);
  EXPECT_EQ(host::held().openForRead, 2);
  first->close();
  second->close();
  ASSERT_EQ(acdbOpenObject(writer, line, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(host::held().openForWrite, 1);
  EXPECT_EQ(acdbOpenObject(first, line), Acad::eWasOpenForWrite);
  EXPECT_EQ(writer->close(), Acad::eOk);
  EXPECT_EQ(writer->close(), Acad::eNotOpen);
  EXPECT_EQ(host::held().openForRead + host::held().openForWrite, 0);
}

TEST_F(HostTest, CountsSelectionSets) {
  const AcDbObjectId line = addLine({0, 0, 0}, {1, 0, 0});
  ads_name first, second, entity;
  const auto get = [](ads_name ss) { return acedSSGet(L"I", nullptr, nullptr, nullptr, ss); };
  EXPECT_EQ(get(first), RTERROR); // nothing is selected
  host::selectNumbers({1, 99});
  ASSERT_EQ(get(first), RTNORM);
  host::selectNumbers({}); // the set stays what it was
  ASSERT_EQ(acedSSName(first, 0, entity), RTNORM);
  EXPECT_EQ(AcDbObjectId(entity[0]), line);
  EXPECT_EQ(acedSSFree(first), RTNORM);
  EXPECT_EQ(acedSSFree(first), RTERROR) << "freed twice";
  host::selectNumbers({1});
  ASSERT_EQ(get(second), RTNORM);
  EXPECT_EQ(host::held().selectionSets, 1);
}

TEST_F(HostTest, CountsNaN) {
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  AcGsView* const viewP = acgsObtainAcGsView(host::variable("cvport"), descriptor);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, 1}, 8, 4);
  EXPECT_EQ(host::nonFiniteCalls(), 0);
  viewP->setView({1, 2, 3}, {4, 5, 6}, {0, 0, std::nan("")}, 8, 4);
  viewP->zoom(0);
  addPoint(0, 0, 0);
  AcDbObjectPointer<AcDbEntity>(host::entity(1)->objectId(), AcDb::kForWrite)
      ->transformBy(AcGeMatrix3d::translation({std::nan(""), 0, 0}));
  host::setLayout(true);
  AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
  EXPECT_EQ(viewport->setViewHeight(std::nan("")), Acad::eInvalidInput);
  EXPECT_EQ(viewport->setViewCenter({0, std::nan("")}), Acad::eInvalidInput);
  EXPECT_EQ(host::nonFiniteCalls(), 5);
}

// A key's line and circle, on a survey's coordinates and on a part of a millimetre.
TEST_F(HostTest, MenuDrawsInsideDrawing) {
  for (const double size : {1e-3, 300.0}) {
    host::reset();
    const AcGePoint3d corner(size * 15000, size * 2000, size * 3);
    addLine(corner, corner + AcGeVector3d(size, size / 2, 0));
    const AcDbExtents before = host::extents();
    const std::string menu = host::menuText();
    std::string macro = menu.substr(menu.find("_LINE;"));
    macro.erase(macro.find('|'));
    std::replace(macro.begin(), macro.end(), ';', '\n');
    host::type(std::wstring(macro.begin(), macro.end()));
    host::runQueue();
    ASSERT_EQ(host::entityCount(), 2) << macro;
    AcDbExtents drawn;
    host::entity(2)->subAddExtents({}, drawn);
    EXPECT_NEAR((drawn.maxPoint() - drawn.minPoint()).length(), size, size * 0.02);
    EXPECT_NEAR((drawn.minPoint() - before.minPoint()).length(), size / 4, size * 0.02);
  }
}

TEST_F(HostTest, UndoReturnsWhatMoved) {
  const AcDbObjectId id = addLine({1, 0, 0}, {2, 3, 4});
  AcApDocManager* const managerP = acDocManagerPtr();
  managerP->lockDocument(managerP->curDocument());
  for (const AcGeMatrix3d& step :
       {AcGeMatrix3d::translation({5, 6, 7}), AcGeMatrix3d::rotation(1, {1, 2, 3}, {4, 5, 6})})
    AcDbObjectPointer<AcDbEntity>(id, AcDb::kForWrite)->transformBy(step);
  managerP->unlockDocument(managerP->curDocument());
  host::type(L"_U\n");
  host::runQueue();
  expectBox(host::extents(), {1, 0, 0}, {2, 3, 4});
}

TEST_F(HostTest, ShowsViewsKeptAndPrevious) {
  host::type(L"_-VIEW\n_TOP\n_-VIEW\n_S\nmine\n_-VIEW\n_SWISO\n_-VIEW\n_R\nMINE\n");
  host::runQueue();
  EXPECT_EQ(host::view().up.y, 1);
  host::type(L"_ZOOM\n_P\n");
  host::runQueue();
  EXPECT_NEAR(host::view().up.z, 2 / std::sqrt(6.0), 1e-12);
}

TEST_F(HostTest, RefusesBadMenuExpressions) {
  const auto answerTo = [](const std::wstring& expression) {
    const std::size_t before = host::printed().size();
    host::type(L"(command (menucmd \"" + expression + L"\"))\n");
    host::runQueue();
    return host::printed().substr(before);
  };
  EXPECT_EQ(answerTo(L"M=$(if,$(=,$(getvar,CVPORT),2),a,b)"), L"Unknown command \"a\".\n");
  std::wstring deep = L"M=";
  for (int i = 0; i < 1000; ++i)
    deep += L"$(if,1,";
  for (const std::wstring& bad : {std::wstring(L"M=$("), std::wstring(L"M=$(if,1"), deep})
    EXPECT_EQ(answerTo(bad).find(L"; error: bad expression"), 0u);
}

} // namespace
