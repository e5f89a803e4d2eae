#pragma once

#include <cstdint>

/// How one video stream is captured and encoded.
class LMRTCVideoStreamConfig {
 public:
  /// Least encoder bit rate, kilobits per second; 0 leaves it to the SDK.
  void setMinBitrate(std::uint64_t bitrate) { minBitrate_ = bitrate; }
  std::uint64_t minBitrate() const { return minBitrate_; }

  /// Greatest encoder bit rate, kilobits per second; 0 leaves it to the SDK.
  void setMaxBitrate(std::uint64_t bitrate) { maxBitrate_ = bitrate; }
  std::uint64_t maxBitrate() const { return maxBitrate_; }

  /// Frame-rate value: 0 to 3 for 10, 15, 24 and 30 frames per second; -1 leaves it to the SDK.
  void setVideoFps(std::int64_t fps) { videoFps_ = fps; }
  std::int64_t videoFps() const { return videoFps_; }

  /// Size preset, 0 (144 x 176) to 16 (1080 x 1920); -1 leaves it to the SDK.
  void setVideoSizePreset(std::int64_t preset) { videoSizePreset_ = preset; }
  std::int64_t videoSizePreset() const { return videoSizePreset_; }

 private:
  std::uint64_t minBitrate_ = 0;
  std::uint64_t maxBitrate_ = 0;
  std::int64_t videoFps_ = -1;
  std::int64_t videoSizePreset_ = -1;
};
