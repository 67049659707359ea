// The search for the window under the pointer.

#include "bench.h"

#include <benchmark/benchmark.h>

#include "bare_pass.h"
#include "desktop.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr POINT kPointer = {500, 500};

void showSiblings(int count) {
  desktop::reset();
  desktop::Window window;
  window.className = L"Frame";
  window.rect = desktop::rectangle(0, 0, 1000, 1000);
  const HWND frame = desktop::addWindow(window);
  window.parent = frame;
  window.className = L"Button";
  for (int i = 0; i < count; ++i) {
    // Every tenth lies under the pointer, each of these as large as the first.
    window.rect =
        i % 10 == 0 ? desktop::rectangle(400, 400, 200, 200) : desktop::rectangle(i % 300, 0, 50, 50);
    desktop::addWindow(window);
  }
}

void walkOurs(int count) {
  for (int i = 0; i < count; ++i)
    benchmark::DoNotOptimize(engine().windowUnderPoint(kPointer));
}

/// The list's windows one after the other, with what has to be asked of each.
void walkBare(int count) {
  for (int i = 0; i < count; ++i)
    benchmark::DoNotOptimize(bareWindowUnderPoint(kPointer));
}

} // namespace

void addWindowRows() {
  for (const int siblings : {10, 100, 1000, 10000}) {
    Row row;
    row.what = "window under the pointer, each of " + std::to_string(siblings) + " siblings";
    row.reference = "a bare walk of the list";
    row.goal = 1.2;
    row.batch = std::max(1, 10000 / siblings);
    row.pairs = 101;
    row.share = siblings;
    row.start = [siblings] { showSiblings(siblings); };
    row.stop = showHost;
    row.ours = walkOurs;
    row.theirs = walkBare;
    add(row);
  }
}

} // namespace bench
