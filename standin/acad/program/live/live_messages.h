#ifndef LIVE_MESSAGES_H
#define LIVE_MESSAGES_H

#include "server.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// What the host's door sends.
namespace program {

/// A frame. One that hasn't gone out when the next one comes is left out; what it moved isn't.
class FrameMessage : public web::Message {
public:
  using FrameP = std::shared_ptr<const nlohmann::json>;
  /// frame    as session.json has it, with its number as "n"
  /// leftOut  frames before it; what they moved goes out as "movedBefore"
  explicit FrameMessage(FrameP frame, std::vector<FrameP> leftOut = {})
      : mFrameP(std::move(frame)), mLeftOut(std::move(leftOut)) {}
  std::string text() const override;
  web::MessageP joinedTo(const web::Message& earlier) const override;

private:
  const FrameP mFrameP;
  const std::vector<FrameP> mLeftOut;
};

/// Returns the names of the device's keys in order: the items of a menu file that type something.
std::vector<std::string> keyNames(const std::string& menuFile);

} // namespace program

#endif
