#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/VideoFormat.h"
#include "LumoRTCLocal/media/YuvColor.h"

namespace lumo {

/// A stream as a mix configuration names it: it may be published anew meanwhile.
struct MixStream {
  std::string userId;
  std::string tag;

  bool operator==(const MixStream&) const = default;
};

/// Where custom layouts put a stream, in pixels of the normal mix.
struct MixPlacement {
  MixStream stream;
  PixelRect place;
};

/// How the live mix of a room looks and sounds.
struct MixSettings {
  static constexpr std::int32_t kLeastSide = 16;
  static constexpr std::int32_t kGreatestSide = 4096;
  static constexpr std::int32_t kMostFramesPerSecond = 60;
  static constexpr std::int32_t kGreatestVideoBitrate = 50000;  ///< kilobits per second
  static constexpr std::int32_t kGreatestAudioBitrate = 512;    ///< kilobits per second
  static constexpr std::int64_t kFarthestPlace = 16384;         ///< pixels, in either direction

  std::int64_t layoutMode = LMRTCMixLayoutModeSuspension;
  bool showWhole = false;
  YuvColor background;
  bool customMode = false;  ///< whether the lists count
  std::vector<MixPlacement> placements;
  std::optional<std::vector<MixStream>> audios;  ///< absent: everybody's
  VideoFormat picture{360, 640, 15};
  VideoFormat tinyPicture{180, 320, 10};
  VideoFormat cdnPicture{360, 640, 15};
  std::int32_t videoBitrate = 800;  ///< kilobits per second, as the others
  std::int32_t audioBitrate = 64;

  /// Whether the sound of `stream` is part of the mix.
  bool hears(const MixStream& stream) const;

  /// Takes over everything that `config` sets, or nothing.
  /// @return 0, or the LocalCode of the first value that is refused
  std::int64_t apply(const LMRTCMixConfig& config);

  /// Sets size and frame rate of the inner CDN stream.
  /// @param preset    0 to 16; -1 leaves the size as it is
  /// @param fpsValue  0 to 3; -1 leaves the frame rate as it is
  /// @return 0 or LocalCodeCdnFormat
  std::int64_t applyCdn(std::int64_t preset, std::int64_t fpsValue);
};

}  // namespace lumo
