#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What LMRTCStreamStatus::mediaType says.
inline constexpr char LumoRTCMediaTypeVideo[] = "video";
inline constexpr char LumoRTCMediaTypeAudio[] = "audio";

/// How one stream did since the last report.
struct LMRTCStreamStatus {
  std::string mediaType;  ///< LumoRTCMediaTypeVideo or LumoRTCMediaTypeAudio
  std::string codecName;  ///< such as "opus" or "H264"
  float bitRate = 0;      ///< kilobits per second
  std::int64_t frameRate = 0;
  std::int64_t frameWidth = 0;       ///< pixels
  std::int64_t frameHeight = 0;      ///< pixels
  float packetLoss = 0;              ///< fraction of the packets that were lost, 0 to 1
  std::int64_t audioLevel = 0;       ///< 0 to 100
  std::int64_t rtt = 0;              ///< round trip, milliseconds
  std::int64_t mediaStreamType = 0;  ///< LMRTCMediaStreamType
  std::string streamId;
  std::string userId;
};

/// How the whole call did since the last report.
struct LMRTCStatusForm {
  std::optional<std::string> networkType;  ///< "wlan", "wwan" or another name
  std::optional<std::string> ipAddress;
  float totalSendBitRate = 0;  ///< kilobits per second
  float totalRecvBitRate = 0;  ///< kilobits per second
  std::int64_t rtt = 0;        ///< round trip, milliseconds
  std::vector<LMRTCStreamStatus> sendStats;
  std::vector<LMRTCStreamStatus> recvStats;
};

/// How loud one member of a live room is.
class LMRTCLiveAudioStatus {
 public:
  void updateUserId(std::string userId, std::string streamId) {
    userId_ = std::move(userId);
    streamId_ = std::move(streamId);
  }
  const std::string& userId() const { return userId_; }
  const std::string& streamId() const { return streamId_; }

  /// 0 to 100
  void setAudioLevel(std::int64_t level) { audioLevel_ = level; }
  std::int64_t audioLevel() const { return audioLevel_; }

 private:
  std::string userId_;
  std::string streamId_;
  std::int64_t audioLevel_ = 0;
};

/// Hears of status reports, on the SDK's thread, at the interval that LMRTCConfig sets.
class LMRTCStatusReportDelegate {
 public:
  virtual ~LMRTCStatusReportDelegate() = default;

  virtual void didReportStatusForm(const LMRTCStatusForm& form) = 0;
  /// Live rooms only. Members that are silent may be left out.
  virtual void didReportLiveAudioStatus(const std::vector<LMRTCLiveAudioStatus>& statuses) = 0;
};
