#pragma once

#include <cstdint>

namespace lumo {

/// What a video source is asked for.
struct VideoFormat {
  std::int32_t width = 480;           ///< pixels, at least 1
  std::int32_t height = 640;          ///< pixels, at least 1
  std::int32_t framesPerSecond = 15;  ///< at least 1

  bool operator==(const VideoFormat&) const = default;
};

}  // namespace lumo
