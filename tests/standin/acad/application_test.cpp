#include "arxHeaders.h"
#include "host_test.h"

namespace {

int gLent = 0;

int lentFunction() {
  ++gLent;
  return RTNORM;
}

class App : public AcRxArxApp {
public:
  void RegisterServerComponents() override {}

protected:
  FunctionTable functionTable() const override {
    static const AcRxFunctionEntry kEntries[] = {{L"lent", lentFunction}, {L"other", lentFunction}};
    return {kEntries, 2};
  }
};

class Application : public HostTest {};

TEST_F(Application, LendsItsFunctionsWhileADrawingIsLoaded) {
  App app;
  const auto callsOf = [](const wchar_t* text) {
    gLent = 0;
    host::type(text);
    host::runQueue();
    return gLent;
  };
  call_log::failAt("at", 1);
  EXPECT_EQ(app.On_kInitAppMsg(&app), AcRx::kRetOK); // no linker, no call
  EXPECT_EQ(callsOf(L"(lent)\n"), 0);
  app.On_kLoadDwgMsg(nullptr);
  EXPECT_EQ(callsOf(L"(LENT)\n"), 1);
  EXPECT_EQ(app.On_kInvkSubrMsg(nullptr), AcRx::kRetError); // nothing is called now
  app.On_kUnloadDwgMsg(nullptr);
  EXPECT_EQ(callsOf(L"(lent)\n"), 0);
}

class Reactor : public AcApDocManagerReactor {
public:
  void documentToBeDestroyed(AcApDocument*) override {
    mEntities.push_back(host::entityCount());
    if (mRemovesP)
      acDocManagerPtr()->removeReactor(mRemovesP);
  }
  std::vector<int> mEntities; // of each document that went
  Reactor* mRemovesP = nullptr;
};

TEST_F(Application, ReactorsHearOfADocumentsEndWhileItIsThere) {
  Reactor stays, goes, removed;
  for (Reactor* const reactorP : {&goes, &stays, &removed})
    acDocManagerPtr()->addReactor(reactorP);
  goes.mRemovesP = &goes;
  stays.mRemovesP = &removed; // before its turn
  addPoint(0, 0, 0);
  host::closeDocument();
  host::closeDocument();
  EXPECT_EQ(stays.mEntities, (std::vector<int>{1, 0}));
  EXPECT_EQ(goes.mEntities.size(), 1u);
  EXPECT_TRUE(removed.mEntities.empty());
  acDocManagerPtr()->removeReactor(&stays);
}

} // namespace
