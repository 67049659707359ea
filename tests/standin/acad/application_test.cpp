#include <gtest/gtest.h>

#include "arxHeaders.h"
#include "calls.h"
#include "host.h"

namespace {

int gLent = 0;

int lentFunction() {
  ++gLent;
  return RTNORM;
}

class App : public AcRxArxApp {
public:
  AcRx::AppRetCode On_kEndMsg(void*) override { return AcRx::kRetError; }
  void RegisterServerComponents() override {}

protected:
  HINSTANCE moduleInstance() const override { return nullptr; }
  FunctionTable functionTable() const override {
    static const AcRxFunctionEntry kEntries[] = {{L"lent", lentFunction}, {L"other", lentFunction}};
    return {kEntries, 2};
  }
};

class Application : public testing::Test {
protected:
  Application() {
    host::reset();
    calls::clear();
    gLent = 0;
  }
  ~Application() override {
    calls::clear();
    host::reset();
  }
};

TEST_F(Application, LendsItsFunctionsWhileADrawingIsLoaded) {
  App app;
  EXPECT_EQ(acrxDispatch(app, 6, nullptr), AcRx::kRetError); // its own answer to the end
  for (const int code : {-1, 0, 7, 14, 15, 16, 1000})
    EXPECT_EQ(acrxDispatch(app, code, nullptr), AcRx::kRetOK);
  calls::failAt("at", 1);
  EXPECT_EQ(acrxDispatch(app, AcRx::kInitAppMsg, &app), AcRx::kRetOK); // no linker, no call
  host::type(L"(lent)\n");
  host::runQueue();
  EXPECT_EQ(gLent, 0);
  acrxDispatch(app, AcRx::kLoadDwgMsg, nullptr);
  host::type(L"(LENT)\n");
  host::runQueue();
  EXPECT_EQ(gLent, 1);
  EXPECT_EQ(acrxDispatch(app, AcRx::kInvkSubrMsg, nullptr), AcRx::kRetError); // nothing is called now
  acrxDispatch(app, AcRx::kUnloadDwgMsg, nullptr);
  host::type(L"(lent)\n");
  host::runQueue();
  EXPECT_EQ(gLent, 1);
}

class Reactor : public AcApDocManagerReactor {
public:
  void documentToBeDestroyed(AcApDocument* document) override {
    mDestroyed.push_back(document);
    mEntities = host::entityCount(); // the document is still there
    if (mRemovesP)
      acDocManagerPtr()->removeReactor(mRemovesP);
  }
  std::vector<AcApDocument*> mDestroyed;
  int mEntities = -1;
  Reactor* mRemovesP = nullptr;
};

TEST_F(Application, ReactorsHearOfADocumentsEnd) {
  Reactor stays, goes, removed;
  for (Reactor* const reactorP : {&goes, &stays, &removed})
    acDocManagerPtr()->addReactor(reactorP);
  goes.mRemovesP = &goes;
  stays.mRemovesP = &removed; // before its turn
  host::add(std::make_unique<AcDbPoint>(AcGePoint3d()));
  AcApDocument* const documentP = acDocManagerPtr()->curDocument();
  host::closeDocument();
  EXPECT_EQ(stays.mDestroyed, std::vector<AcApDocument*>{documentP});
  EXPECT_EQ(stays.mEntities, 1);
  EXPECT_EQ(host::entityCount(), 0);
  host::closeDocument();
  EXPECT_EQ(stays.mDestroyed.size(), 2u);
  EXPECT_EQ(goes.mDestroyed.size(), 1u);
  EXPECT_TRUE(removed.mDestroyed.empty());
  acDocManagerPtr()->removeReactor(&stays);
}

} // namespace
