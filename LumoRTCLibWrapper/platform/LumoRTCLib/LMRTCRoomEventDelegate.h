#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class LMRTCCDNInputStream;
class LMRTCInputStream;
class LMRTCRemoteUser;

/// Hears of the events of the main room, on the SDK's thread, in the order in which they happen.
class LMRTCRoomEventDelegate {
 public:
  using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;

  virtual ~LMRTCRoomEventDelegate() = default;

  virtual void didJoinUser(const std::shared_ptr<LMRTCRemoteUser>& user) = 0;
  virtual void didLeaveUser(const std::shared_ptr<LMRTCRemoteUser>& user) = 0;
  /// The user's connection was lost.
  virtual void didOfflineUser(const std::shared_ptr<LMRTCRemoteUser>& user) = 0;

  /// The first packet of media of a subscribed stream has been decoded.
  /// @param mediaType  LMRTCMediaType
  virtual void didReportFirstFrame(const std::shared_ptr<LMRTCInputStream>& stream,
                                   std::int64_t mediaType) = 0;

  virtual void didPublishStreams(const Streams& streams) = 0;
  virtual void didUnpublishStreams(const Streams& streams) = 0;
  virtual void didPublishLiveStreams(const Streams& streams) = 0;
  virtual void didUnpublishLiveStreams(const Streams& streams) = 0;
  virtual void didPublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>& stream) = 0;
  virtual void didUnpublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>& stream) = 0;

  /// The stream was muted or unmuted at its source.
  virtual void didAudioMute(const std::shared_ptr<LMRTCInputStream>& stream, bool muted) = 0;
  /// The stream was enabled or disabled at its source.
  virtual void didVideoEnable(const std::shared_ptr<LMRTCInputStream>& stream, bool enabled) = 0;

  virtual void didReceiveMessage(const std::string& message) = 0;
  /// @param roleType  LMRTCRoleType
  virtual void didSwitchRoleWithUser(const std::shared_ptr<LMRTCRemoteUser>& user, std::int64_t roleType) = 0;
  /// A text that travelled with the video of `userId` (H.264 supplemental enhancement information).
  virtual void didReceiveSEI(const std::string& sei, const std::string& userId) = 0;
  virtual void didReceiveLiveStreamSEI(const std::string& sei) = 0;
};
