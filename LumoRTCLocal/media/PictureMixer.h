#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/YuvColor.h"

namespace lumo {

/// One picture of a mix.
struct MixTile {
  const LumoRTCI420Buffer* picture = nullptr;  ///< null leaves the place as it is
  std::int32_t rotation = 0;  ///< degrees clockwise that turn the picture upright: 0, 90, 180 or 270
  /// In pixels of the mix; what stands out is cut off. Rounded down to even pixels; empty shows nothing.
  PixelRect place;
};

/// The mixed picture as a whole.
struct MixCanvas {
  std::int32_t width = 0;   ///< pixels, at least 2
  std::int32_t height = 0;  ///< pixels, at least 2
  YuvColor background;
  bool showWhole = false;  ///< false: a picture fills its place, cut on both sides; true: it fits in whole
};

/// Composes pictures into one, later tiles over earlier ones. Memory is used again, so that a steady flow of
/// pictures allocates nothing. One thread at a time.
class PictureMixer {
 public:
  std::shared_ptr<const LumoRTCI420Buffer> mix(std::span<const MixTile> tiles, const MixCanvas& canvas);

 private:
  void draw(const MixTile& tile, bool showWhole, LumoRTCI420Buffer& target);

  FramePool pool_;
  FramePool turned_;
};

}  // namespace lumo
