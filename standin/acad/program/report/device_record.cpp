#include "device_record.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace program {

namespace {

bool readLine(const std::string& line, DeviceEvent& event) {
  std::istringstream words(line);
  std::string kind;
  if (!(words >> event.mUnixSeconds >> kind) || !std::isfinite(event.mUnixSeconds))
    return false;
  std::string rest;
  std::getline(words >> std::ws, rest);
  if (!rest.empty() && rest.back() == '\r')
    rest.pop_back();
  std::istringstream values(rest);
  if (kind == "motion") {
    event.mKind = DeviceEvent::Kind::motion;
    for (int& value : event.mSample) {
      if (!(values >> value))
        return false;
    }
  } else if (kind == "event") {
    event.mKind = DeviceEvent::Kind::event;
    // Codes are in decimal or, after 0x, in hexadecimal.
    if (!(values >> std::setbase(0) >> event.mCode))
      return false;
  } else {
    event.mText = rest;
  }
  return kind == "motion" || kind == "event" || kind == "mode";
}

} // namespace

std::vector<DeviceEvent> readDeviceRecord(const std::string& path) {
  std::vector<DeviceEvent> events;
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    DeviceEvent event;
    if (readLine(line, event))
      events.push_back(event);
  }
  std::stable_sort(events.begin(), events.end(), [](const DeviceEvent& a, const DeviceEvent& b) {
    return a.mUnixSeconds < b.mUnixSeconds;
  });
  return events;
}

std::ptrdiff_t countOf(const std::vector<DeviceEvent>& events, DeviceEvent::Kind kind) {
  return std::count_if(events.begin(), events.end(),
                       [kind](const DeviceEvent& event) { return event.mKind == kind; });
}

} // namespace program
