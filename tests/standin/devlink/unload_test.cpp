// The client library as programs load it, and what is left when they have unloaded it: nothing.

#include "fixture.h"

#include <dlfcn.h>
#include <malloc.h>

#include <fstream>

namespace {

std::string libraryPath() {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "libov_devlink_64.so").string();
}

/// The library, loaded; unloads it at the end.
class Library {
public:
  Library() : mHandle(dlopen(libraryPath().c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!mHandle)
      throw std::runtime_error(dlerror());
    load(mConnect, "ovConnect");
    load(mDisconnect, "ovDisconnect");
    load(mFetchEvent, "ovFetchEvent");
  }
  ~Library() { dlclose(mHandle); }

  int fetch() {
    short axis = 0;
    int code = -1, unused = 0;
    const int result =
        mFetchEvent(0, &axis, &axis, &axis, &axis, &axis, &axis, &unused, &unused, &code, &unused, &unused);
    return result == 0 ? code : -2;
  }

  void* mHandle;
  int (*mConnect)(int, const char*) = nullptr;
  int (*mDisconnect)() = nullptr;
  int (*mFetchEvent)(int, short*, short*, short*, short*, short*, short*, int*, int*, int*, int*,
                     int*) = nullptr;

private:
  template <class Function> void load(Function& function, const char* name) {
    function = reinterpret_cast<Function>(dlsym(mHandle, name));
    if (!function)
      throw std::runtime_error(name);
  }
};

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                       std::filesystem::directory_iterator());
}

bool isMapped() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find("ov_devlink_64") != std::string::npos)
      return true;
  return false;
}

class UnloadTest : public testing::Test {
protected:
  /// A visit to the daemon, and the library unloaded after it.
  void visit(bool isDisconnected) {
    Library library;
    ASSERT_EQ(library.mConnect(0, "acad"), 0);
    mDaemon.play("key 0");
    ASSERT_EQ(library.fetch(), 0x20020);
    if (isDisconnected) {
      ASSERT_EQ(library.mDisconnect(), 0);
    }
  }

  RunningDaemon mDaemon;
};

TEST_F(UnloadTest, leavesNoThreadNoDescriptorAndNoMemory) {
  for (int i = 0; i < 20; ++i)
    visit(i % 2 == 0);
  EXPECT_TRUE(mDaemon.mSaid.waitFor("client gone", 20));
  mDaemon.mSaid.clear();
  mDaemon.mRecorded.clear();
  const auto threads = threadCount(), descriptors = openDescriptors();
  const auto memory = mallinfo2().uordblks;
  for (int i = 0; i < 500; ++i) {
    visit(i % 2 == 0);
    ASSERT_FALSE(HasFatalFailure());
  }
  EXPECT_FALSE(isMapped()) << "something keeps the library loaded";
  EXPECT_EQ(threadCount(), threads);
  EXPECT_TRUE(mDaemon.mSaid.waitFor("client gone", 500)); // the daemon's own end closes a little later
  mDaemon.mSaid.clear();
  mDaemon.mRecorded.clear();
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LT(mallinfo2().uordblks, memory + 500 * 64);
}

TEST_F(UnloadTest, aProcessMayEndWhileAThreadFetches) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  // A search for leaks in a process whose threads are still at work finds only its own trouble.
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  const auto endWithThreadInside = [] {
    auto* library = new Library;
    if (library->mConnect(0, "acad") != 0)
      std::_Exit(1);
    for (int i = 0; i < 2; ++i)
      std::thread([library] {
        for (;;)
          library->fetch();
      }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::exit(0);
  };
  for (int i = 0; i < 5; ++i)
    EXPECT_EXIT(endWithThreadInside(), testing::ExitedWithCode(0), "");
}

} // namespace
