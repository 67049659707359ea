// Steps of the view, and whole passes.

#include "bench.h"

#include <cmath>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include "bare_pass.h"
#include "host.h"
#include "logging.h"
#include "surroundings.h"

namespace bench {

namespace {

constexpr double kAngle = 0.0123; // radians
constexpr double kStep = 0.0075;  // units of the view's size
constexpr char kLogFile[] = "Orvaner/autocad_addin_log.txt";

AcGsView* hostView() {
  AcGsKernelDescriptor descriptor;
  descriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  return acgsObtainAcGsView(host::variable("cvport"), descriptor);
}

/// Forth and back in turns, so that the view stays where numbers are of the usual size. No compiler knows the
/// value: it would work out sine and cosine beforehand where it sees the whole of the work.
double turned(double value, int i) {
  benchmark::DoNotOptimize(value);
  return i % 2 == 0 ? value : -value;
}

void rotateOurs(int count) {
  AutoCadProxy& proxy = engine();
  AcGsView* const viewP = hostView();
  const AcGePoint3d centre(1, 2, 3);
  AcGeVector3d axis = AcGeVector3d(0.3, -0.4, 0.8).normalize();
  for (int i = 0; i < count; ++i)
    proxy.rotate(viewP, turned(kAngle, i), 0, centre, axis, kObjScreen, false, false);
}

glm::dvec3 glmOf(const AcGePoint3d& p) {
  return {p.x, p.y, p.z};
}

glm::dvec3 glmOf(const AcGeVector3d& v) {
  return {v.x, v.y, v.z};
}

AcGePoint3d pointOf(const glm::dvec3& v) {
  return {v.x, v.y, v.z};
}

void rotateGlm(int count) {
  AcGsView* const viewP = hostView();
  const glm::dvec3 centre(1, 2, 3);
  const glm::dvec3 axis = glm::normalize(glm::dvec3(0.3, -0.4, 0.8));
  for (int i = 0; i < count; ++i) {
    const glm::dmat3 turn(glm::rotate(glm::dmat4(1), turned(kAngle, i), axis));
    const glm::dvec3 position = centre + turn * (glmOf(viewP->position()) - centre);
    const glm::dvec3 target = centre + turn * (glmOf(viewP->target()) - centre);
    const glm::dvec3 up = turn * glmOf(viewP->upVector());
    const double height = viewP->fieldHeight();
    viewP->setView(pointOf(position), pointOf(target), {up.x, up.y, up.z}, viewP->fieldWidth(), height,
                   AcGsView::kParallel);
  }
}

void moveOurs(int count) {
  AutoCadProxy& proxy = engine();
  AcGsView* const viewP = hostView();
  const AcGeVector3d axis = AcGeVector3d(0.3, -0.4, 0.8).normalize();
  for (int i = 0; i < count; ++i)
    proxy.move3D(viewP, turned(kStep, i), axis, false, false);
}

void moveGlm(int count) {
  AcGsView* const viewP = hostView();
  const glm::dvec3 axis = glm::normalize(glm::dvec3(0.3, -0.4, 0.8));
  for (int i = 0; i < count; ++i) {
    const AcGePoint3d position = viewP->position();
    const AcGePoint3d target = viewP->target();
    const double width = viewP->fieldWidth();
    const double height = viewP->fieldHeight();
    const glm::dvec3 shift = turned(kStep, i) * std::sqrt(height * width) * axis;
    viewP->setView(pointOf(glmOf(position) + shift), pointOf(glmOf(target) + shift), viewP->upVector(), width,
                   height, AcGsView::kParallel);
  }
}

void turnSample(int i) {
  const int sign = i % 2 == 0 ? 1 : -1;
  setSample(30 * sign, -20 * sign, 10 * sign, 40 * sign, -50 * sign, 60 * sign);
}

void passOurs(int count) {
  for (int i = 0; i < count; ++i) {
    turnSample(i);
    engine().handleDeviceCap();
  }
}

void passBare(int count) {
  for (int i = 0; i < count; ++i) {
    turnSample(i);
    barePass(plugin(), nullptr);
  }
}

int gFile = -1;
std::string gLines[3]; // the records of a pass

void openBare() {
  passOurs(1);
  const std::string text = home().read(kLogFile);
  std::size_t start = text.size();
  for (int i = 2; i >= 0; --i) {
    const std::size_t end = start;
    start = text.rfind('\n', end - 2) + 1;
    gLines[i] = text.substr(start, end - start);
  }
  gFile = open(home().native(kLogFile).c_str(), O_WRONLY | O_APPEND);
}

void passBareWritten(int count) {
  for (int i = 0; i < count; ++i) {
    turnSample(i);
    barePass(plugin(), [](int step, double) {
      benchmark::DoNotOptimize(write(gFile, gLines[step].data(), gLines[step].size()));
    });
  }
}

/// The cap moves, so that no pass is a deflection's first.
void startMoving() {
  host::reset();
  showHost();
  passOurs(1);
}

void stopMoving() {
  setSample(0, 0, 0, 0, 0, 0);
  engine().handleDeviceCap();
}

} // namespace

void addMotionRows() {
  Row row;
  row.goal = 1.1;
  row.batch = 500;
  row.start = [] {
    setQuietLog();
    host::reset();
  };
  row.prepare = resetView;
  row.reference = "glm in doubles, the same reads, one write";
  row.what = "one rotate";
  row.ours = rotateOurs;
  row.theirs = rotateGlm;
  add(row);
  row.what = "one move3D";
  row.ours = moveOurs;
  row.theirs = moveGlm;
  add(row);

  row.goal = 1.3;
  row.batch = 200;
  row.what = "a 3D pass, six axes, log filtered";
  row.reference = "the bare host calls and arithmetic";
  row.start = [] {
    setQuietLog();
    startMoving();
  };
  row.stop = stopMoving;
  row.ours = passOurs;
  row.theirs = passBare;
  add(row);

  row.what = "a 3D pass, six axes, default log";
  row.reference = "the bare pass and a write(2) for each record";
  row.start = [] {
    setDefaultLog();
    startMoving();
    openBare();
  };
  row.stop = [] {
    stopMoving();
    close(gFile);
  };
  row.theirs = passBareWritten;
  add(row);
}

} // namespace bench
