#pragma once

#include <cstdint>
#include <optional>

/// How a room is joined. A field that was never set is left to the SDK's default.
class LMRTCRoomConfig {
 public:
  /// LMRTCLiveType; the SDK's default is LMRTCLiveTypeAudioVideo.
  void setLiveType(std::int64_t type) { liveType_ = type; }
  std::optional<std::int64_t> liveType() const { return liveType_; }

  /// LMRTCRoomType; the SDK's default is LMRTCRoomTypeNormal.
  void setRoomType(std::int64_t type) { roomType_ = type; }
  std::optional<std::int64_t> roomType() const { return roomType_; }

  /// LMRTCRoleType; read in live rooms only, where the default is LMRTCRoleTypeBroadcaster.
  void setRoleType(std::int64_t type) { roleType_ = type; }
  std::optional<std::int64_t> roleType() const { return roleType_; }

  /// LMRTCJoinRoomType; the SDK's default is LMRTCJoinRoomTypeDefault.
  void setJoinRoomType(std::int64_t type) { joinRoomType_ = type; }
  std::optional<std::int64_t> joinRoomType() const { return joinRoomType_; }

 private:
  std::optional<std::int64_t> liveType_;
  std::optional<std::int64_t> roomType_;
  std::optional<std::int64_t> roleType_;
  std::optional<std::int64_t> joinRoomType_;
};
