// What a page may send and what it is sent: lines of device and host, requests, and text that becomes JSON. A device's
// line that is taken is the same line when it is written and read again. Any text makes a message of valid JSON.
//
// Input: what is tested; the line or the text.

#include "access.h"
#include "input.h"
#include "report_page.h"
#include "require.h"
#include "session.h"

#include <nlohmann/json.hpp>

using fuzz::require;

namespace {

void fuzzDevice(const std::string& line) {
  session::Action action, again;
  std::string reason;
  if (!session::parseDeviceLine(line, action, reason))
    return;
  require(session::parseDeviceLine(session::deviceLine(action), again, reason), "its own line");
  require(again.mAxes == action.mAxes && again.mEventCode == action.mEventCode &&
              again.mRotationCode == action.mRotationCode && again.mIsOn == action.mIsOn,
          "the same line again");
}

void fuzzHost(const std::string& line) {
  session::Action action;
  std::string reason;
  if (session::parseHostLine(line, action, reason))
    require(action.mWho == session::Who::host, "a line of the host");
}

void fuzzMessage(const std::string& text) {
  require(nlohmann::json::accept(program::jsonText({{"t", 1}, {"text", text}})), "good JSON");
}

void fuzzRequest(const std::string& text) {
  const std::string host = text.substr(0, text.find('\n'));
  const std::string target = text.substr(host.size());
  if (web::refusal({target, host, {}}, "secret").empty())
    require(target.find("token=secret") != std::string::npos &&
                (host.find("127.0.0.1") == 0 || host.find("localhost") == 0),
            "nobody without token, or from elsewhere");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  void (*const targets[])(const std::string&) = {fuzzDevice, fuzzHost, fuzzMessage, fuzzRequest};
  fuzz::Input input(data, size);
  const std::size_t target = input.byte() % 4;
  targets[target](input.rest());
  return 0;
}
