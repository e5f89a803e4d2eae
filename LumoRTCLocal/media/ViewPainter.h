#pragma once

#include <cstdint>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

namespace lumo {

/// The pixels of a view, from the top row down.
struct Bitmap {
  std::int32_t width = 0;          ///< pixels
  std::int32_t height = 0;         ///< pixels
  std::vector<std::uint8_t> bgra;  ///< blue, green, red, 255 per pixel; a row is `width * 4` bytes
};

/// Paints one picture over the whole of `target`.
/// @param rotation  degrees clockwise that turn the picture upright: 0, 90, 180 or 270
/// @param fillMode  LMRTCVideoFillMode: 0 stretches, 1 fills the view and cuts what stands out, 2 fits the
///                  picture in between black bars, as does any other number
/// @param mirror    exchanges left and right of the upright picture
/// @param target    its width and height are the view's; the pixels are resized to them. Nothing happens when
///                  one is below 1
void paint(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::int64_t fillMode, bool mirror,
           Bitmap& target);

}  // namespace lumo
