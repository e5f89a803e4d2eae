#pragma once

#include <cstdint>
#include <string>

/// How a video stream is captured and encoded.
struct LMRTCIWVideoConfig {
  std::uint64_t minBitrate = 0;  ///< least encoder bit rate, kilobits per second; 0 leaves it to the SDK
  std::uint64_t maxBitrate = 0;  ///< greatest encoder bit rate, kilobits per second; 0 leaves it to the SDK
  std::int64_t fps = 1;          ///< LMRTCIWVideoFps; any other number leaves the frame rate to the SDK
  std::int64_t resolution = 11;  ///< size preset, 0 (144 x 176) to 16 (1080 x 1920); else left to the SDK
  bool mirror = false;           ///< whether the sent picture is mirrored; normal stream only

  /// JSON text with "minBitrate", "maxBitrate", "fps" and "resolution"; `mirror` is left out.
  std::string description() const;
};
