#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/FramePool.h"

/// What is done to whole pictures. Sizes run from 1 x 1, odd ones included, and rows may be padded; results
/// have tight rows. Functions that take a shared pointer return the very same buffer where there is nothing
/// to do.
namespace lumo {

/// The planes of a picture, or of a rectangle of one, that somebody else keeps alive.
struct I420View {
  const std::uint8_t* y = nullptr;
  const std::uint8_t* u = nullptr;
  const std::uint8_t* v = nullptr;
  std::int32_t strideY = 0;  ///< bytes
  std::int32_t strideU = 0;  ///< bytes
  std::int32_t strideV = 0;  ///< bytes
  std::int32_t width = 0;    ///< pixels
  std::int32_t height = 0;   ///< pixels
};

/// A rectangle in pixels, origin at the top left.
struct PixelRect {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;

  bool operator==(const PixelRect&) const = default;
};

/// The even number at or below `value`, where the chroma planes have a sample of their own.
constexpr std::int32_t even(std::int32_t value) { return value & ~1; }

I420View viewOf(const LumoRTCI420Buffer& picture);

/// The part of `picture` inside `rect`, without a copy. The chroma planes have half the resolution, so
/// `rect.x` and `rect.y` must be even.
I420View cropped(const I420View& picture, const PixelRect& rect);

/// The largest centred rectangle of the proportions `width` : `height` inside `outerWidth` x `outerHeight`,
/// its position rounded down to even pixels, its sides at least 1.
PixelRect aspectFit(std::int32_t width, std::int32_t height, std::int32_t outerWidth,
                    std::int32_t outerHeight);

/// Draws `from` at another size into the part of `to` inside `rect`, whose x and y must be even.
void drawScaled(const I420View& from, LumoRTCI420Buffer& to, const PixelRect& rect);

/// The picture at another size; shrinking averages the pixels that fall together, growing interpolates.
std::shared_ptr<const LumoRTCI420Buffer> scaled(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                std::int32_t width, std::int32_t height, FramePool& pool);
std::shared_ptr<const LumoRTCI420Buffer> scaled(const I420View& picture, std::int32_t width,
                                                std::int32_t height, FramePool& pool);

/// The picture as large as it fits into `width` x `height` in its own proportions, centred between black
/// bars.
std::shared_ptr<const LumoRTCI420Buffer> letterboxed(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                     std::int32_t width, std::int32_t height,
                                                     FramePool& pool);

/// The picture with left and right exchanged.
std::shared_ptr<const LumoRTCI420Buffer> mirrored(const LumoRTCI420Buffer& picture, FramePool& pool);

/// The picture with top and bottom exchanged.
std::shared_ptr<const LumoRTCI420Buffer> flipped(const LumoRTCI420Buffer& picture, FramePool& pool);

/// The picture turned clockwise.
/// @param degrees  90, 180 or 270; everything else leaves the picture as it is
std::shared_ptr<const LumoRTCI420Buffer> rotated(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                 std::int32_t degrees, FramePool& pool);

/// The picture in memory of its own.
std::shared_ptr<const LumoRTCI420Buffer> copied(const I420View& picture, FramePool& pool);

/// The picture of 32-bit pixels: blue, green, red, and a byte that is ignored.
/// @param bgra    the first row
/// @param stride  bytes from one row to the next, at least `width * 4`
std::shared_ptr<const LumoRTCI420Buffer> fromBgra(const std::uint8_t* bgra, std::int32_t stride,
                                                  std::int32_t width, std::int32_t height, FramePool& pool);

/// Converts to 32-bit pixels: blue, green, red, and 255.
/// @param bgra    where the first row goes; room for `picture.height` rows
/// @param stride  bytes from one row to the next, at least `picture.width * 4`
void toBgra(const I420View& picture, std::uint8_t* bgra, std::int32_t stride);

}  // namespace lumo
