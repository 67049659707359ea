#include "live_messages.h"

#include "cnfg.h"
#include "report_page.h"

namespace program {

using nlohmann::json;

std::string FrameMessage::text() const {
  json frame = *mFrameP;
  json& before = frame["movedBefore"] = json::array();
  for (const FrameP& leftOutP : mLeftOut) {
    for (const json& group : leftOutP->at("moved"))
      before.push_back(group);
  }
  return jsonText({{"frame", std::move(frame)}});
}

web::MessageP FrameMessage::joinedTo(const web::Message& message) const {
  const auto* const earlierP = dynamic_cast<const FrameMessage*>(&message);
  if (!earlierP)
    return nullptr;
  std::vector<FrameP> leftOut = earlierP->mLeftOut;
  const json& earlier = *earlierP->mFrameP;
  if (earlier.at("n") != mFrameP->at("n") &&
      !earlier.at("moved").empty()) // the same frame may come again with more
    leftOut.push_back(earlierP->mFrameP);
  return std::make_shared<FrameMessage>(mFrameP, std::move(leftOut));
}

std::vector<std::string> keyNames(const std::string& menuFile) {
  std::vector<std::string> names;
  Cnfg file;
  if (file.open(menuFile) != Cnfg::kOk)
    return names;
  std::string name, value;
  file.selectSection("MenuBar");
  while (file.readNextParameter(name, value, true) == Cnfg::kOk) {
    const std::size_t brace = value.find('}');
    if (brace != std::string::npos && brace + 1 < value.size())
      names.push_back(name);
  }
  return names;
}

} // namespace program
