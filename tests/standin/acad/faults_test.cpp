#include <gtest/gtest.h>

#include "acdocman.h"
#include "acedads.h"
#include "acgs.h"
#include "calls.h"
#include "host.h"

// The journal, and the faults that tests order: each operation must report under its own name, and a failed
// one must leave things as they were.

namespace {

class Faults : public testing::Test {
protected:
  Faults() {
    host::reset();
    calls::clear();
    mLine = host::add(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(1, 0, 0)));
    host::selectAll();
  }
  ~Faults() override {
    calls::clear();
    host::reset();
  }

  AcDbObjectId mLine;
};

/// Moves the view and what is selected, as an application would, and looks at each result. Gives back what it
/// holds, whatever fails.
void moveEverything() {
  resbuf value{};
  acedGetVar(L"CVPORT", &value);
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  if (AcGsView* const viewP = acgsObtainAcGsView(2, descriptor)) {
    const AcGePoint3d position = viewP->position();
    const AcGePoint3d target = viewP->target();
    const AcGeVector3d up = viewP->upVector();
    const double width = viewP->fieldWidth();
    const double height = viewP->fieldHeight();
    viewP->setView(position, target, up, width, height,
                   viewP->isPerspective() ? AcGsView::kPerspective : AcGsView::kParallel);
    viewP->zoom(1.25);
    viewP->update();
    if (viewP->isValid())
      acgsSetViewParameters(2, viewP, true, true, false);
  }
  ads_name ss, name;
  Adesk::Int32 length = 0;
  if (acedSSGet(L"I", nullptr, nullptr, nullptr, ss) != RTNORM)
    return;
  acedSSLength(ss, &length);
  AcDbObjectId id;
  if (acedSSName(ss, 0, name) == RTNORM && acdbGetObjectId(id, name) == Acad::eOk) {
    AcDbObjectPointer<AcDbLine> line(id, AcDb::kForWrite);
    AcDbExtents box;
    AcGePoint3d point;
    if (line.object()) {
      line->getStartPoint(point);
      line->getEndPoint(point);
      line->getGeomExtents(box);
      line->transformBy(AcGeMatrix3d::translation({1, 0, 0}));
    }
    acedRedraw(name, 1);
  }
  acedSSFree(ss);
}

TEST_F(Faults, TheJournalShowsEachOperationInOrder) {
  calls::startRecording();
  moveEverything();
  const std::vector<std::string> expected = {"acedGetVar CVPORT",
                                             "acgsObtainAcGsView 2",
                                             "position",
                                             "target",
                                             "upVector",
                                             "fieldWidth",
                                             "fieldHeight",
                                             "isPerspective",
                                             "setView",
                                             "zoom 1.25",
                                             "update",
                                             "isValid",
                                             "acgsSetViewParameters 2 1 1 0",
                                             "acedSSGet I",
                                             "acedSSLength",
                                             "acedSSName 0",
                                             "acdbGetObjectId",
                                             "acdbOpenObject write",
                                             "getStartPoint",
                                             "getEndPoint",
                                             "getGeomExtents",
                                             "transformBy",
                                             "acedRedraw 1",
                                             "close",
                                             "acedSSFree"};
  EXPECT_EQ(calls::stopRecording(), expected);
}

TEST_F(Faults, TheJournalShowsDocumentsAndTexts) {
  calls::startRecording();
  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP->curDocument();
  managerP->lockDocument(documentP, AcAp::kWrite, nullptr, nullptr, true);
  managerP->unlockDocument(documentP);
  managerP->sendStringToExecute(documentP, L"\x1b\x1b", true, false, true);
  managerP->sendStringToExecute(documentP, L"_ZOOM _ALL \n", false, false, true);
  acutPrintf(L"\n=> %d", 5);
  host::setLayout(true);
  {
    AcDbObjectPointer<AcDbViewport> viewport(acedActiveViewportId(), AcDb::kForWrite);
    viewport->setViewCenter({viewport->width(), -0.25});
    viewport->setViewHeight(viewport->viewHeight() / viewport->height() + viewport->viewCenter().y);
    viewport->updateDisplay();
  }
  const std::vector<std::string> recorded = calls::stopRecording();
  const std::vector<std::string> begin = {"acDocManagerPtr",
                                          "curDocument",
                                          "lockDocument 4",
                                          "unlockDocument",
                                          "sendStringToExecute \"\\e\\e\" 1 0 1",
                                          "sendStringToExecute \"_ZOOM _ALL \\n\" 0 0 1",
                                          "acutPrintf \\n=> 5",
                                          "acedActiveViewportId",
                                          "acdbOpenObject write",
                                          "width",
                                          "setViewCenter 300 -0.25"};
  ASSERT_GT(recorded.size(), begin.size());
  EXPECT_EQ(std::vector<std::string>(recorded.begin(),
                                     recorded.begin() + static_cast<std::ptrdiff_t>(begin.size())),
            begin);
  EXPECT_EQ(recorded[recorded.size() - 3], "setViewHeight 0.25");
  EXPECT_EQ(recorded[recorded.size() - 2], "updateDisplay");
}

TEST_F(Faults, WhateverFailsTheRestGoesOnAndEverythingIsGivenBack) {
  calls::startCounting();
  moveEverything();
  const std::int64_t operations = calls::count();
  ASSERT_EQ(operations, 25);
  for (std::int64_t n = 1; n <= operations; ++n) {
    calls::clear();
    calls::failAny(n);
    moveEverything();
    const std::string struck = calls::lastFault();
    ASSERT_FALSE(struck.empty()) << n;
    // What wasn't done stays to be given back; nothing else may.
    EXPECT_EQ(host::held().openForWrite, struck == "close" ? 1 : 0) << struck;
    EXPECT_EQ(host::held().selectionSets, struck == "acedSSFree" ? 1 : 0) << struck;
    calls::clear();
    host::reset();
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(1, 0, 0)));
    host::selectAll();
  }
}

TEST_F(Faults, AThrowLeavesTheObjectPointerClosed) {
  calls::throwAt("transformBy", 1);
  EXPECT_THROW(moveEverything(), calls::InjectedFault);
  EXPECT_EQ(host::held().openForWrite, 0);
  EXPECT_EQ(host::extents().maxPoint().x, 1);
  calls::throwAt("close", 1);
  {
    const AcDbObjectPointer<AcDbLine> pointer(mLine, AcDb::kForRead); // its end must not end the program
  }
  EXPECT_EQ(calls::lastFault(), "close");
  EXPECT_EQ(host::held().openForRead, 1);
}

TEST_F(Faults, AFailedOperationChangesNothing) {
  resbuf value{};
  value.resval.rint = 77;
  calls::failAt("acedGetVar", 2);
  EXPECT_EQ(acedGetVar(L"tilemode", &value), RTNORM);
  EXPECT_EQ(value.resval.rint, 1);
  value.resval.rint = 77;
  EXPECT_EQ(acedGetVar(L"tilemode", &value), RTERROR);
  EXPECT_EQ(value.resval.rint, 77);

  AcApDocManager* const managerP = acDocManagerPtr();
  AcApDocument* const documentP = managerP->curDocument();
  calls::failAt("lockDocument", 1);
  EXPECT_NE(managerP->lockDocument(documentP), Acad::eOk);
  EXPECT_EQ(host::held().locks, 0);
  calls::failAt("sendStringToExecute", 1);
  EXPECT_NE(managerP->sendStringToExecute(documentP, L"X "), Acad::eOk);
  EXPECT_EQ(host::queueLength(), 0);
  calls::failAt("curDocument", 1);
  EXPECT_EQ(managerP->curDocument(), nullptr);
  calls::failAt("acDocManagerPtr", 1);
  EXPECT_EQ(acDocManagerPtr(), nullptr);

  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  calls::failAt("acgsObtainAcGsView", 1);
  EXPECT_EQ(acgsObtainAcGsView(2, descriptor), nullptr);
  AcGsView* const viewP = acgsObtainAcGsView(2, descriptor);
  calls::failAt("setView", 1);
  viewP->setView({9, 9, 9}, {0, 0, 0}, {0, 1, 0}, 1, 1);
  calls::failAt("zoom", 1);
  viewP->zoom(2);
  EXPECT_EQ(host::view().position.z, 100);
  EXPECT_EQ(host::view().fieldWidth, 40);
  calls::failAt("isValid", 1);
  EXPECT_FALSE(viewP->isValid());

  AcDbLine* lineP = nullptr;
  calls::failAt("acdbOpenObject", 1);
  EXPECT_NE(acdbOpenObject(lineP, mLine), Acad::eOk);
  EXPECT_EQ(lineP, nullptr);
  calls::failAt("acutPrintf", 1);
  EXPECT_EQ(acutPrintf(L"x"), RTERROR);
  EXPECT_TRUE(host::printed().empty());
  host::setLayout(true);
  calls::failAt("acedActiveViewportId", 1);
  EXPECT_TRUE(acedActiveViewportId().isNull());
}

} // namespace
