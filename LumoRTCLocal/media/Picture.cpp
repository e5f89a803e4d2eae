#include "LumoRTCLocal/media/Picture.h"

#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>
#include <libyuv/scale.h>

#include <algorithm>
#include <cmath>

namespace lumo {
namespace {

constexpr std::uint8_t kBlackY = 16;
constexpr std::uint8_t kNeutralChroma = 128;
constexpr std::int32_t kMostShrinking = 16;  // of each side, in one go

std::int32_t scaledSide(std::int32_t side, double factor, std::int32_t limit) {
  return std::clamp(static_cast<std::int32_t>(std::lround(side * factor)), 1, limit);
}

/// Copies `from` over `to`; a height below 0 means from the bottom row up.
void copyInto(const I420View& from, std::int32_t height, LumoRTCI420Buffer& to) {
  libyuv::I420Copy(from.y, from.strideY, from.u, from.strideU, from.v, from.strideV, to.mutableDataY(),
                   to.strideY(), to.mutableDataU(), to.strideU(), to.mutableDataV(), to.strideV(), from.width,
                   height);
}

void fillBlack(LumoRTCI420Buffer& picture, const PixelRect& rect) {
  if (rect.width < 1 || rect.height < 1) return;
  const std::int32_t left = even(rect.x);
  const std::int32_t top = even(rect.y);
  libyuv::I420Rect(picture.mutableDataY(), picture.strideY(), picture.mutableDataU(), picture.strideU(),
                   picture.mutableDataV(), picture.strideV(), left, top, rect.x + rect.width - left,
                   rect.y + rect.height - top, kBlackY, kNeutralChroma, kNeutralChroma);
}

/// Blackens what lies around `inner`, and up to a pixel of it: `inner` is drawn afterwards.
void fillBars(LumoRTCI420Buffer& picture, const PixelRect& inner) {
  const std::int32_t right = inner.x + inner.width;
  const std::int32_t bottom = inner.y + inner.height;
  fillBlack(picture, {0, 0, picture.width(), inner.y});
  fillBlack(picture, {0, inner.y, inner.x, inner.height});
  fillBlack(picture, {right, inner.y, picture.width() - right, inner.height});
  fillBlack(picture, {0, bottom, picture.width(), picture.height() - bottom});
}

}  // namespace

I420View viewOf(const LumoRTCI420Buffer& picture) {
  return {picture.dataY(),   picture.dataU(),   picture.dataV(), picture.strideY(),
          picture.strideU(), picture.strideV(), picture.width(), picture.height()};
}

I420View cropped(const I420View& picture, const PixelRect& rect) {
  I420View part = picture;
  part.y += rect.y * picture.strideY + rect.x;
  part.u += rect.y / 2 * picture.strideU + rect.x / 2;
  part.v += rect.y / 2 * picture.strideV + rect.x / 2;
  part.width = rect.width;
  part.height = rect.height;
  return part;
}

PixelRect aspectFit(std::int32_t width, std::int32_t height, std::int32_t outerWidth,
                    std::int32_t outerHeight) {
  const double factor =
      std::min(static_cast<double>(outerWidth) / width, static_cast<double>(outerHeight) / height);
  const std::int32_t fitWidth = scaledSide(width, factor, outerWidth);
  const std::int32_t fitHeight = scaledSide(height, factor, outerHeight);
  return {even((outerWidth - fitWidth) / 2), even((outerHeight - fitHeight) / 2), fitWidth, fitHeight};
}

void drawScaled(const I420View& from, LumoRTCI420Buffer& to, const PixelRect& rect) {
  // The averages of libyuv get darker with the number of pixels that fall together, and black beyond 65536.
  const std::int64_t pixels = std::int64_t{from.width} * from.height;
  if (pixels > std::int64_t{rect.width} * rect.height * kMostShrinking * kMostShrinking) {
    thread_local FramePool pool;
    const auto between = scaled(from, std::min(from.width, rect.width * kMostShrinking),
                                std::min(from.height, rect.height * kMostShrinking), pool);
    return drawScaled(viewOf(*between), to, rect);
  }
  libyuv::I420Scale(from.y, from.strideY, from.u, from.strideU, from.v, from.strideV, from.width, from.height,
                    to.mutableDataY() + rect.y * to.strideY() + rect.x, to.strideY(),
                    to.mutableDataU() + rect.y / 2 * to.strideU() + rect.x / 2, to.strideU(),
                    to.mutableDataV() + rect.y / 2 * to.strideV() + rect.x / 2, to.strideV(), rect.width,
                    rect.height, libyuv::kFilterBox);
}

std::shared_ptr<const LumoRTCI420Buffer> scaled(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                std::int32_t width, std::int32_t height, FramePool& pool) {
  if (picture->width() == width && picture->height() == height) return picture;
  return scaled(viewOf(*picture), width, height, pool);
}

std::shared_ptr<const LumoRTCI420Buffer> scaled(const I420View& picture, std::int32_t width,
                                                std::int32_t height, FramePool& pool) {
  auto result = pool.take(width, height);
  drawScaled(picture, *result, {0, 0, width, height});
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> letterboxed(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                     std::int32_t width, std::int32_t height,
                                                     FramePool& pool) {
  if (picture->width() == width && picture->height() == height) return picture;
  const PixelRect inner = aspectFit(picture->width(), picture->height(), width, height);
  auto result = pool.take(width, height);
  fillBars(*result, inner);
  drawScaled(viewOf(*picture), *result, inner);
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> mirrored(const LumoRTCI420Buffer& picture, FramePool& pool) {
  auto result = pool.take(picture.width(), picture.height());
  libyuv::I420Mirror(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(), picture.dataV(),
                     picture.strideV(), result->mutableDataY(), result->strideY(), result->mutableDataU(),
                     result->strideU(), result->mutableDataV(), result->strideV(), picture.width(),
                     picture.height());
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> flipped(const LumoRTCI420Buffer& picture, FramePool& pool) {
  auto result = pool.take(picture.width(), picture.height());
  copyInto(viewOf(picture), -picture.height(), *result);
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> rotated(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                                 std::int32_t degrees, FramePool& pool) {
  if (degrees != 90 && degrees != 180 && degrees != 270) return picture;
  const bool isTurned = degrees != 180;
  auto result = isTurned ? pool.take(picture->height(), picture->width())
                         : pool.take(picture->width(), picture->height());
  libyuv::I420Rotate(picture->dataY(), picture->strideY(), picture->dataU(), picture->strideU(),
                     picture->dataV(), picture->strideV(), result->mutableDataY(), result->strideY(),
                     result->mutableDataU(), result->strideU(), result->mutableDataV(), result->strideV(),
                     picture->width(), picture->height(), static_cast<libyuv::RotationMode>(degrees));
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> copied(const I420View& picture, FramePool& pool) {
  auto result = pool.take(picture.width, picture.height);
  copyInto(picture, picture.height, *result);
  return result;
}

std::shared_ptr<const LumoRTCI420Buffer> fromBgra(const std::uint8_t* bgra, std::int32_t stride,
                                                  std::int32_t width, std::int32_t height, FramePool& pool) {
  auto result = pool.take(width, height);
  libyuv::ARGBToI420(bgra, stride, result->mutableDataY(), result->strideY(), result->mutableDataU(),
                     result->strideU(), result->mutableDataV(), result->strideV(), width, height);
  return result;
}

void toBgra(const I420View& picture, std::uint8_t* bgra, std::int32_t stride) {
  // libyuv names the bytes of a pixel from the most significant down: in memory, its ARGB is blue, green,
  // red, alpha.
  libyuv::I420ToARGB(picture.y, picture.strideY, picture.u, picture.strideU, picture.v, picture.strideV, bgra,
                     stride, picture.width, picture.height);
}

}  // namespace lumo
