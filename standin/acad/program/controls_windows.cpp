// The host's windows on a real desktop. The host runs without any there, so the pointer finds nothing to scroll.
#include "controls.h"

namespace program {

namespace {

class NoControls : public Controls {
public:
  const std::vector<ControlInfo>& infos() const override { return mInfos; }
  std::vector<ScrollState> states() const override { return {}; }
  void point(session::Pointer) override {}

private:
  const std::vector<ControlInfo> mInfos{};
};

} // namespace

std::unique_ptr<Controls> makeControls() {
  return std::make_unique<NoControls>();
}

} // namespace program
