#pragma once

#include <cstdint>
#include <string>

/// Hears of the events of the SDK engine, on the SDK's thread.
class LMRTCEngineEventDelegate {
 public:
  virtual ~LMRTCEngineEventDelegate() = default;

  /// The server has removed the local user from a room.
  /// @param reason  the server's number for why
  virtual void didKicked(const std::string& roomId, std::int64_t reason) = 0;

  /// A user of another room invites the local user to link the two rooms.
  virtual void didRequestJoinOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                                       const std::string& extra) = 0;
  /// The invitation was taken back.
  virtual void didCancelRequestOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                                         const std::string& extra) = 0;
  /// An invitation was answered; every member of both rooms hears of it.
  virtual void didResponseJoinOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                                        const std::string& inviteeRoomId, const std::string& inviteeUserId,
                                        bool agree, const std::string& extra) = 0;
  /// A user has ended the link with a room.
  virtual void didFinishOtherRoom(const std::string& roomId, const std::string& userId) = 0;
};
