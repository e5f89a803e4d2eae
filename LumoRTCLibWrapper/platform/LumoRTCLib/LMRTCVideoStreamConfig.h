#pragma once

#include <cstdint>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"

/// How one video stream is captured and encoded.
class LMRTCVideoStreamConfig {
 public:
  /// Least encoder bit rate, kilobits per second; 0 leaves it to the SDK.
  void setMinBitrate(std::uint64_t bitrate) { minBitrate_ = bitrate; }
  std::uint64_t minBitrate() const { return minBitrate_; }

  /// Greatest encoder bit rate, kilobits per second; 0 leaves it to the SDK.
  void setMaxBitrate(std::uint64_t bitrate) { maxBitrate_ = bitrate; }
  std::uint64_t maxBitrate() const { return maxBitrate_; }

  /// LMRTCVideoFPS.
  void setVideoFps(std::int64_t fps) { videoFps_ = fps; }
  std::int64_t videoFps() const { return videoFps_; }

  /// LMRTCVideoSizePreset.
  void setVideoSizePreset(std::int64_t preset) { videoSizePreset_ = preset; }
  std::int64_t videoSizePreset() const { return videoSizePreset_; }

 private:
  std::uint64_t minBitrate_ = 0;
  std::uint64_t maxBitrate_ = 0;
  std::int64_t videoFps_ = LMRTCVideoFPSDefault;
  std::int64_t videoSizePreset_ = LMRTCVideoSizePresetDefault;
};
