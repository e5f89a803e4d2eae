#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/RoomMirror.h"
#include "LumoRTCLocal/server/RoomObserver.h"

namespace lumo {

/// A room that the local user has joined beside the main one, as a mirror of the server's room. The local
/// user watches it as a guest: its members do not see them.
class LocalOtherRoom : public LMRTCOtherRoom,
                       public RoomObserver,
                       public std::enable_shared_from_this<LocalOtherRoom> {
 public:
  LocalOtherRoom(std::shared_ptr<const LocalContext> context, std::string roomId);

  /// Takes over what the server said at the join. SDK thread, once, before the room is shown to anybody.
  void enter(const std::vector<MemberSnapshot>& present);
  /// Ends the mirror: the room looks empty and the delegate hears nothing more. Any thread, more than once.
  void close();

  const RoomMirror& mirror() const { return *mirror_; }

  void setDelegate(std::weak_ptr<LMRTCOtherRoomEventDelegate> delegate) override;
  const std::string& roomId() const override { return roomId_; }
  std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const override;
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId) const override;

 private:
  void memberJoined(const std::string& userId) override;
  void memberLeft(const std::string& userId, bool offline) override;
  void streamsPublished(const std::vector<PublicationState>& streams) override;
  void streamsUnpublished(const Publications& streams) override;
  void streamEnabled(const std::shared_ptr<Publication>& stream, bool enabled) override;
  void seiReceived(const std::string& sei, const std::string& userId);
  void reportFirstFrame(const std::shared_ptr<LMRTCInputStream>& stream, std::int64_t mediaType);

  std::shared_ptr<LMRTCOtherRoomEventDelegate> delegate() const { return delegate_.get(); }

  const std::string roomId_;
  const std::shared_ptr<RoomMirror> mirror_;
  std::atomic<bool> open_{true};  ///< events of a room that is closed are dropped
  WeakCell<LMRTCOtherRoomEventDelegate> delegate_;
};

}  // namespace lumo
