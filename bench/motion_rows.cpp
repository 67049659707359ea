// Passes over a motion sample: their time, and their instructions, which repeat exactly on one machine.

#include "bench.h"

#include <cstdio>
#include <stdexcept>

#include "bare_pass.h"
#include "host.h"
#include "surroundings.h"

namespace bench {

void passOurs(int count) {
  for (int i = 0; i < count; ++i) {
    turnSample(i);
    engine().handleDeviceCap();
  }
}

void passBare(int count) {
  for (int i = 0; i < count; ++i) {
    turnSample(i);
    barePass(plugin());
  }
}

void startPasses() {
  host::reset();
  showHost();
  passOurs(1); // no pass is a deflection's first
}

void endPasses() {
  setSample(0, 0, 0, 0, 0, 0);
  engine().handleDeviceCap();
}

namespace {

constexpr char kBare[] = "the bare host calls and arithmetic";

/// Runs the counting program under callgrind. Returns the instructions of one pass.
double instructionsOf(const std::string& side) {
  const std::string command = "\"" OV_VALGRIND "\" --tool=callgrind --collect-atstart=no "
                              "--callgrind-out-file=/dev/null \"" OV_INSTRUCTIONS "\" " +
                              side + " 2>&1";
  double instructions = 0;
  std::FILE* const pipeP = popen(command.c_str(), "r");
  for (char line[256]; pipeP && std::fgets(line, sizeof line, pipeP);)
    (void)!std::sscanf(line, "==%*d== Collected : %lf", &instructions);
  if (!pipeP || pclose(pipeP) != 0 || instructions == 0)
    throw std::runtime_error("counting failed: " + command);
  return instructions / kCountedPasses;
}

} // namespace

void addMotionRows() {
  Row row;
  row.what = "a 3D pass, six axes, log filtered";
  row.reference = kBare;
  row.batch = 200;
  row.prepare = resetView;
  row.start = [] {
    setQuietLog();
    startPasses();
  };
  row.stop = endPasses;
  row.ours = passOurs;
  row.theirs = passBare;
  add(row);

  const std::string what = row.what + ", instructions";
  add(what, [what] {
    const double ours = instructionsOf("ours"), bare = instructionsOf("bare");
    return Result{what, kBare, "", ours, bare, ours / bare, 0, false};
  });
}

} // namespace bench
