#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class LMRTCInputStream;
class LMRTCOtherRoom;
class LMRTCRemoteUser;

/// Hears of the events of joined other rooms, on the SDK's thread; `room` tells which. The events mean what
/// those of LMRTCRoomEventDelegate mean.
class LMRTCOtherRoomEventDelegate {
 public:
  using Room = std::shared_ptr<LMRTCOtherRoom>;
  using Stream = std::shared_ptr<LMRTCInputStream>;
  using Streams = std::vector<Stream>;
  using User = std::shared_ptr<LMRTCRemoteUser>;

  virtual ~LMRTCOtherRoomEventDelegate() = default;

  virtual void didJoinUser(const Room& room, const User& user) = 0;
  virtual void didOfflineUser(const Room& room, const User& user) = 0;
  virtual void didLeaveUser(const Room& room, const User& user) = 0;
  virtual void didPublishStreams(const Room& room, const Streams& streams) = 0;
  virtual void didUnpublishStreams(const Room& room, const Streams& streams) = 0;
  virtual void didReportFirstFrame(const Room& room, const Stream& stream, std::int64_t mediaType) = 0;
  virtual void didAudioMute(const Room& room, const Stream& stream, bool muted) = 0;
  virtual void didVideoEnable(const Room& room, const Stream& stream, bool enabled) = 0;
  virtual void didReceiveMessage(const Room& room, const std::string& message) = 0;
  virtual void didReceiveSEI(const Room& room, const std::string& sei, const std::string& userId) = 0;
};
