#ifndef LIVE_MESSAGES_H
#define LIVE_MESSAGES_H

#include "server.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// What the host's door sends.
namespace program {

/// Puts data down when it goes out, so that only the server's thread takes the time.
class JsonMessage : public web::Message {
public:
  JsonMessage(const char* key, nlohmann::json value) : mKey(key), mValue(std::move(value)) {}
  std::string text() const override;

private:
  const char* const mKey;
  const nlohmann::json mValue;
};

/// A frame. One that hasn't gone out when the next one comes is left out; what it moved isn't.
class FrameMessage : public web::Message {
public:
  /// frame  as session.json has it, with its number as "n"
  explicit FrameMessage(nlohmann::json frame) : mFrame(std::move(frame)) {}
  std::string text() const override;
  web::MessageP joinedTo(const web::Message& earlier) const override;

private:
  nlohmann::json mFrame;
};

/// Returns the names of the device's keys in order: the items of a menu file that type something.
std::vector<std::string> keyNames(const std::string& menuFile);

} // namespace program

#endif
