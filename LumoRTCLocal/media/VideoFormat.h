#pragma once

#include <cstdint>

namespace lumo {

/// What a video source is asked for.
struct VideoFormat {
  static constexpr std::int32_t kGreatestSide = 16384;
  static constexpr std::int32_t kMostFramesPerSecond = 240;

  std::int32_t width = 480;           ///< pixels, 1 to kGreatestSide; even or odd
  std::int32_t height = 640;          ///< the same
  std::int32_t framesPerSecond = 15;  ///< 1 to kMostFramesPerSecond

  /// Whether all of it is in range: a format that a host gives has to be asked.
  bool isValid() const {
    return width >= 1 && width <= kGreatestSide && height >= 1 && height <= kGreatestSide &&
           framesPerSecond >= 1 && framesPerSecond <= kMostFramesPerSecond;
  }

  bool operator==(const VideoFormat&) const = default;
};

}  // namespace lumo
