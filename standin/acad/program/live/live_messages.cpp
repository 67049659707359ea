#include "live_messages.h"

#include "cnfg.h"
#include "report_page.h"

namespace program {

namespace {

using nlohmann::json;

/// The product of two motions, three rows of four numbers each.
json product(const json& later, const json& earlier) {
  json out = json::array();
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      double sum = column == 3 ? later[row * 4 + 3].get<double>() : 0;
      for (std::size_t i = 0; i < 3; ++i)
        sum += later[row * 4 + i].get<double>() * earlier[i * 4 + column].get<double>();
      out.push_back(sum);
    }
  }
  return out;
}

/// True for groups of the same objects.
bool isSameGroup(json a, json b) {
  a.erase("matrix");
  b.erase("matrix");
  return a == b;
}

} // namespace

std::string JsonMessage::text() const {
  return "{\"" + std::string(mKey) + "\":" + jsonText(mValue) + "}";
}

std::string FrameMessage::text() const {
  return "{\"frame\":" + jsonText(mFrame) + "}";
}

web::MessageP FrameMessage::joinedTo(const web::Message& message) const {
  const auto* const earlierP = dynamic_cast<const FrameMessage*>(&message);
  if (!earlierP)
    return nullptr;
  if (earlierP->mFrame.at("n") == mFrame.at("n")) // the recorder has joined the two already
    return std::make_shared<FrameMessage>(mFrame);
  json frame = mFrame;
  json moved = earlierP->mFrame.at("moved");
  for (const json& group : mFrame.at("moved")) {
    if (!moved.empty() && isSameGroup(moved.back(), group))
      moved.back()["matrix"] = product(group.at("matrix"), moved.back().at("matrix"));
    else
      moved.push_back(group);
  }
  frame["moved"] = std::move(moved);
  return std::make_shared<FrameMessage>(std::move(frame));
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
