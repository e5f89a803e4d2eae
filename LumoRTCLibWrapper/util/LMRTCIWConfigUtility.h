#pragma once

#include <cstdint>

/// The fixed tables behind frame-rate values and video size presets. Presets are portrait: the first number
/// is the width, the second the height.
class LMRTCIWConfigUtility {
 public:
  /// Frames per second of a frame-rate value: 0 to 3 give 10, 15, 24, 30; anything else gives 0.
  static std::int64_t getVideoFPS(std::int64_t fps);

  /// The size preset, 0 (144 x 176) to 16 (1080 x 1920), of exactly this width and height in pixels; -1 when
  /// there is none. The order matters: 176 x 144 is no preset.
  static std::int64_t getVideoResolution(std::int64_t width, std::int64_t height);

  /// One number of a preset's pair, in pixels.
  /// @param preset  0 to 16
  /// @param type    0 for the first number (width), 1 for the second (height)
  /// @return 0 when either argument is out of range
  static std::int64_t getVideoSize(std::int64_t preset, std::int64_t type);
};
