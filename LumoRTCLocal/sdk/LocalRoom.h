#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalOtherRooms.h"
#include "LumoRTCLocal/sdk/LocalUser.h"
#include "LumoRTCLocal/sdk/RoomMirror.h"
#include "LumoRTCLocal/server/MediaServer.h"
#include "LumoRTCLocal/server/RoomObserver.h"

namespace lumo {

/// The joined main room: a mirror of the server's room, brought up to date on the SDK's thread just before
/// the delegate hears of a change.
class LocalRoom : public LMRTCRoom, public RoomObserver, public std::enable_shared_from_this<LocalRoom> {
 public:
  /// Hears, on the SDK's thread, that the server has removed the local user.
  /// @param reason  absent: the host has heard of it already
  using Kicked =
      std::function<void(const std::shared_ptr<LocalRoom>& room, std::optional<std::int64_t> reason)>;

  /// @param otherRooms  joined with this one and left with it
  LocalRoom(std::shared_ptr<const LocalContext> context, std::string roomId,
            std::shared_ptr<LocalOtherRooms> otherRooms, Kicked onKicked);

  /// Takes over what the server said at the join. SDK thread, once, before the room is shown to anybody.
  void enter(const MediaServer::JoinResult& joined, const LocalUser::Outputs& defaults);
  /// Leaves the room on the server and ends its media; the delegate hears nothing more. Any thread, more than
  /// once.
  void close();

  bool isOpen() const { return open_; }
  /// What the local user publishes at present, and what they have subscribed to, in the other rooms too. SDK
  /// thread.
  Publications sent() const;
  std::vector<std::shared_ptr<RemoteStream>> received() const;
  /// The sound of those who are in the live mix; nothing in a normal room.
  std::optional<Publications> liveVoices() const { return context_->server->liveVoices(member_); }

  LocalOtherRooms& otherRooms() const { return *otherRooms_; }

  void setDelegate(std::weak_ptr<LMRTCRoomEventDelegate> delegate) override;
  const std::string& roomId() const override { return roomId_; }
  std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const override { return mirror_->users(); }
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId) const override {
    return mirror_->findUser(userId);
  }
  std::string sessionId() const override { return sessionId_; }
  std::shared_ptr<LMRTCLocalUser> localUser() const override { return localUser_.get(); }
  std::vector<std::string> otherRoomIdArray() const override;
  std::vector<std::shared_ptr<LMRTCInputStream>> getLiveStreams() const override {
    return liveStreams_.get();
  }
  std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const override { return cdnStream_.get(); }
  /// Until the room is left. The mix of what is received goes on, silent.
  void muteAllRemoteAudio(bool mute) override;
  /// Until the room is left.
  void setReceivedAudioBufferCallback(LMRTCAudioDataCallback callback) override;

 private:
  using Delegate = LMRTCRoomEventDelegate;

  void memberJoined(const std::string& userId) override;
  void memberLeft(const std::string& userId, bool offline) override;
  void streamsPublished(const std::vector<PublicationState>& streams) override;
  void streamsUnpublished(const Publications& streams) override;
  void streamEnabled(const std::shared_ptr<Publication>& stream, bool enabled) override;
  void liveStreamsPublished(const Publications& streams) override;
  void liveStreamsUnpublished(const Publications& streams) override;
  void cdnStreamPublished(const std::shared_ptr<Publication>& stream) override;
  void cdnStreamUnpublished(const std::shared_ptr<Publication>& stream) override;
  void roleSwitched(const std::string& userId, std::int64_t role) override;
  void seiReceived(const std::string& sei, const std::string& userId);
  void kicked(std::int64_t reason) override;
  void reportFirstFrame(const std::shared_ptr<LMRTCInputStream>& stream, std::int64_t mediaType);

  std::shared_ptr<LMRTCRoomEventDelegate> delegate() const;

  const std::shared_ptr<const LocalContext> context_;
  const std::string roomId_;
  const std::shared_ptr<LocalOtherRooms> otherRooms_;
  const Kicked onKicked_;
  const std::shared_ptr<RoomMirror> mirror_;
  std::string sessionId_;         ///< set by `enter`
  MediaServer::Member member_;    ///< set by `enter`
  std::atomic<bool> open_{true};  ///< events of a room that is closed are dropped
  WeakCell<LMRTCRoomEventDelegate> delegate_;
  Cell<std::shared_ptr<LocalUser>> localUser_;
  Cell<RoomMirror::Streams> liveStreams_;
  Cell<std::shared_ptr<LMRTCCDNInputStream>> cdnStream_;
};

}  // namespace lumo
