#include "acdocman.h"
#include "acedads.h"
#include "acgs.h"
#include "host_test.h"

// Faults that tests order: a failed operation must leave things as they were. That each operation reports
// under its own name, the transcripts of the engine show.

namespace {

class Faults : public HostTest {
protected:
  const AcDbObjectId mLine = addLine({0, 0, 0}, {1, 0, 0});
};

TEST_F(Faults, AThrowLeavesTheObjectPointerClosed) {
  call_log::throwAt("transformBy", 1);
  {
    AcDbObjectPointer<AcDbLine> pointer(mLine, AcDb::kForWrite);
    EXPECT_EQ(pointer.open(mLine, AcDb::kForWrite), Acad::eOk) << "gives back the first opening";
    EXPECT_THROW(pointer->transformBy(AcGeMatrix3d::translation({1, 0, 0})), call_log::InjectedFault);
  }
  EXPECT_EQ(host::held().openForWrite, 0);
  EXPECT_EQ(host::extents().maxPoint().x, 1);
  call_log::throwAt("close", 1);
  {
    const AcDbObjectPointer<AcDbLine> pointer(mLine, AcDb::kForRead); // its end must not end the program
  }
  EXPECT_EQ(call_log::lastFault(), "close");
  EXPECT_EQ(host::held().openForRead, 1);
}

TEST_F(Faults, AFailedOperationChangesNothing) {
  for (const char* const operation : {"lockDocument", "sendStringToExecute", "setView", "zoom", "acutPrintf"})
    call_log::failAt(operation, 1);
  call_log::failAt("acedGetVar", 2);
  resbuf value{};
  EXPECT_EQ(acedGetVar(L"tilemode", &value), RTNORM);
  value.resval.rint = 77;
  EXPECT_EQ(acedGetVar(L"tilemode", &value), RTERROR);
  EXPECT_EQ(value.resval.rint, 77);

  AcApDocument* const documentP = acDocManagerPtr()->curDocument();
  EXPECT_NE(acDocManagerPtr()->lockDocument(documentP), Acad::eOk);
  EXPECT_EQ(host::held().locks, 0);
  EXPECT_NE(acDocManagerPtr()->sendStringToExecute(documentP, L"X "), Acad::eOk);
  EXPECT_EQ(host::queueLength(), 0);

  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  AcGsView* const viewP = acgsObtainAcGsView(2, descriptor);
  viewP->setView({9, 9, 9}, {0, 0, 0}, {0, 1, 0}, 1, 1);
  viewP->zoom(2);
  EXPECT_EQ(host::view().position.z, 100);
  EXPECT_EQ(host::view().fieldWidth, 40);
  EXPECT_EQ(acutPrintf(L"x"), RTERROR);
  EXPECT_TRUE(host::printed().empty());
}

} // namespace
