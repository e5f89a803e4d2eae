#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// A publication, and whether it was switched on when the event happened.
struct PublicationState {
  std::shared_ptr<Publication> publication;
  bool enabled = true;
};

/// A member, as one who has just come finds it.
struct MemberSnapshot {
  std::string userId;
  std::vector<PublicationState> publications;  ///< in the order of publication
};

/// What a member hears of its room: one call per event, on the server's event runner, in the order in which
/// the events happened. A member does not hear of what it does itself, except of what becomes of the live
/// mix.
class RoomObserver {
 public:
  virtual ~RoomObserver() = default;

  virtual void memberJoined(const std::string& /*userId*/) {}
  /// Offline: the connection was lost.
  virtual void memberLeft(const std::string& /*userId*/, bool /*offline*/) {}
  virtual void streamsPublished(const std::vector<PublicationState>& /*streams*/) {}
  virtual void streamsUnpublished(const Publications& /*streams*/) {}
  virtual void streamEnabled(const std::shared_ptr<Publication>& /*stream*/, bool /*enabled*/) {}
  /// The mixed streams of a live room have come, or gone.
  virtual void liveStreamsPublished(const Publications& /*streams*/) {}
  virtual void liveStreamsUnpublished(const Publications& /*streams*/) {}
  virtual void cdnStreamPublished(const std::shared_ptr<Publication>& /*stream*/) {}
  virtual void cdnStreamUnpublished(const std::shared_ptr<Publication>& /*stream*/) {}
  virtual void roleSwitched(const std::string& /*userId*/, std::int64_t /*role*/) {}
  /// The member was removed from the room.
  virtual void kicked(std::int64_t /*reason*/) {}
};

}  // namespace lumo
