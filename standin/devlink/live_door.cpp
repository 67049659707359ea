#include "live_door.h"

#include <nlohmann/json.hpp>

namespace devlink {

namespace {

using nlohmann::json;

web::MessageP message(const char* key, const json& value) {
  // Modes' names may have any code page.
  return web::message([=] {
    return json{{key, value}}.dump(-1, ' ', false, json::error_handler_t::replace);
  });
}

web::ServerOptions withPath(web::ServerOptions options) {
  options.mPath = "/device";
  return options;
}

} // namespace

LiveDoor::LiveDoor(web::ServerOptions options, Daemon& daemon)
    : mDaemon(daemon), mServer(withPath(std::move(options)), *this) {}

void LiveDoor::onOpened(web::ClientId client, bool isDriver) {
  mServer.send(message("driver", isDriver), client);
  const auto [panel, device] = mDaemon.settings();
  mServer.send(message("panel", {{"gain", panel.mGain},
                                 {"deadzone", panel.mDeadZone},
                                 {"axes", panel.mSource},
                                 {"dominant", panel.mIsDominant},
                                 {"rotation", device.mRotationCode},
                                 {"zoomall", device.mZoomsAfterView}}),
               client);
}

std::string LiveDoor::onLine(web::ClientId, bool isDriver, const std::string& line) {
  session::Action action;
  std::string reason;
  const bool isAction = session::parseDeviceLine(line, action, reason);
  if (!isAction || !isDriver)
    return reason;
  if (action.mVerb == session::Verb::motion)
    mIsDeflected = action.mAxes != Axes{};
  mDaemon.play(action);
  return {};
}

void LiveDoor::onSilent() {
  if (!mIsDeflected)
    return;
  mIsDeflected = false;
  session::Action release;
  release.mVerb = session::Verb::motion;
  mDaemon.play(release);
}

void LiveDoor::said(const std::string& text) {
  mServer.send(message("say", text));
}

void LiveDoor::recorded(const std::string& line) {
  const std::string text = line.substr(line.find(' ') + 1); // behind the time
  if (text.compare(0, 5, "away ") == 0 || text == "back")
    mServer.send(message("absence", text));
}

} // namespace devlink
