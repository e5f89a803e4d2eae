#pragma once

#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioData.h"

class LMRTCCDNInputStream;
class LMRTCInputStream;
class LMRTCLocalUser;
class LMRTCOtherRoomEventDelegate;
class LMRTCRemoteUser;
class LMRTCRoomEventDelegate;

/// What the main room and joined other rooms share. Every operation may be called on any thread.
class LMRTCBaseRoom {
 public:
  virtual ~LMRTCBaseRoom() = default;

  virtual const std::string& roomId() const = 0;
  /// The other members, in the order in which they joined.
  virtual std::vector<std::shared_ptr<LMRTCRemoteUser>> remoteUsers() const = 0;
  /// The other member of that id, or null.
  virtual std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId) const = 0;
};

/// The joined main room. The SDK owns it until the room is left.
class LMRTCRoom : public LMRTCBaseRoom {
 public:
  /// Who hears of the room's events; held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCRoomEventDelegate> delegate) = 0;

  /// The server's name for this stay in the room.
  virtual std::string sessionId() const = 0;
  /// Null once the room has been left.
  virtual std::shared_ptr<LMRTCLocalUser> localUser() const = 0;
  /// The rooms that are linked with this one.
  virtual std::vector<std::string> otherRoomIdArray() const = 0;

  /// Mutes what is received from every user, now and later.
  virtual void muteAllRemoteAudio(bool mute) = 0;

  /// Hands on the mix of everything that is received; empty ends it.
  virtual void setReceivedAudioBufferCallback(LMRTCAudioDataCallback callback) = 0;

  /// The streams of the live mix, as audience members receive them.
  virtual std::vector<std::shared_ptr<LMRTCInputStream>> getLiveStreams() const = 0;
  /// The inner CDN stream; null while the server offers none.
  virtual std::shared_ptr<LMRTCCDNInputStream> getCDNStream() const = 0;
};

/// A further room that the local user has joined beside the main one.
class LMRTCOtherRoom : public LMRTCBaseRoom {
 public:
  /// Who hears of the room's events; held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCOtherRoomEventDelegate> delegate) = 0;
};
