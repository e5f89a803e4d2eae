#include "LumoRTCLocal/media/Watermark.h"

#include <libyuv/convert_from_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate_argb.h>
#include <libyuv/scale_argb.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"

namespace lumo {
namespace {

constexpr std::int32_t kPixelBytes = 4;

std::size_t byteCount(std::int32_t width, std::int32_t height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * kPixelBytes;
}

bool isImage(const UIImage& image) {
  const auto isSide = [](std::int32_t side) { return side >= 1 && side <= Watermark::kLargestSide; };
  return isSide(image.width) && isSide(image.height) &&
         image.bgra.size() == byteCount(image.width, image.height);
}

bool isPosition(const UIRect& position) {
  const auto isFraction = [](double value) { return value >= 0 && value <= 1; };  // not a number: neither
  return isFraction(position.x) && isFraction(position.y) && isFraction(position.width) && position.width > 0;
}

std::int32_t evenBelow(double value) { return static_cast<std::int32_t>(std::floor(value / 2)) * 2; }

/// A side as it is drawn: what is inside of a side that ends at `limit`.
std::int32_t evenInside(std::int64_t length, std::int32_t limit) {
  return static_cast<std::int32_t>(std::min<std::int64_t>(length, limit)) & ~1;
}

std::int64_t evenLength(double value) { return std::max<std::int64_t>(std::llround(value / 2) * 2, 2); }

/// How much of an image's side is inside.
std::int32_t visiblePart(std::int32_t side, std::int32_t inside, std::int64_t length) {
  const double part = static_cast<double>(side) * inside / static_cast<double>(length);
  return std::clamp(static_cast<std::int32_t>(std::lround(part)), 1, side);
}

/// Where a rectangle of the upright picture is in the captured one.
/// @param width,height  of the captured picture
PixelRect captured(const PixelRect& upright, std::int32_t width, std::int32_t height, std::int32_t rotation) {
  const auto& [x, y, w, h] = upright;
  switch (rotation) {
    case 90:
      return {y, even(height - x - w), h, w};
    case 180:
      return {even(width - x - w), even(height - y - h), w, h};
    case 270:
      return {even(width - y - h), x, h, w};
    default:
      return upright;
  }
}

void blend(const std::uint8_t* over, std::int32_t overStride, const std::vector<std::uint8_t>& alpha,
           std::uint8_t* plane, std::int32_t stride, std::int32_t width, std::int32_t height) {
  libyuv::BlendPlane(over, overStride, plane, stride, alpha.data(), width, plane, stride, width, height);
}

/// The picture itself when nobody else can see it change, a copy otherwise.
std::shared_ptr<LumoRTCI420Buffer> writable(std::shared_ptr<const LumoRTCI420Buffer> picture,
                                            FramePool& pool) {
  if (picture.use_count() != 1) picture = copied(viewOf(*picture), pool);
  return std::const_pointer_cast<LumoRTCI420Buffer>(std::move(picture));
}

}  // namespace

std::shared_ptr<Watermark> Watermark::create(const UIImage& image, const UIRect& position) {
  if (!isImage(image) || !isPosition(position)) return nullptr;
  return std::shared_ptr<Watermark>(new Watermark(image, position));
}

Watermark::Watermark(const UIImage& image, const UIRect& position)
    : position_(position), image_{image.width, image.height, image.bgra} {
  const std::int32_t stride = image.width * kPixelBytes;
  libyuv::ARGBAttenuate(image.bgra.data(), stride, image_.bgra.data(), stride, image.width, image.height);
}

std::shared_ptr<const LumoRTCI420Buffer> Watermark::draw(std::shared_ptr<const LumoRTCI420Buffer> picture,
                                                         std::int32_t rotation, bool mirrored,
                                                         FramePool& pool) {
  Overlay& overlay = overlays_[mirrored ? 1 : 0];
  if (picture->width() != overlay.pictureWidth || picture->height() != overlay.pictureHeight ||
      rotation != overlay.rotation) {
    overlay.pictureWidth = picture->width();
    overlay.pictureHeight = picture->height();
    overlay.rotation = rotation;
    fit(overlay, mirrored);
  }
  const PixelRect& place = overlay.place;
  if (place.width == 0 || place.height == 0) return picture;
  const auto drawn = writable(std::move(picture), pool);
  const LumoRTCI420Buffer& colors = *overlay.colors;
  blend(colors.dataY(), colors.strideY(), overlay.alpha,
        drawn->mutableDataY() + place.y * drawn->strideY() + place.x, drawn->strideY(), place.width,
        place.height);
  const std::int32_t chroma = place.y / 2 * drawn->strideU() + place.x / 2;
  blend(colors.dataU(), colors.strideU(), overlay.chromaAlpha, drawn->mutableDataU() + chroma,
        drawn->strideU(), place.width / 2, place.height / 2);
  blend(colors.dataV(), colors.strideV(), overlay.chromaAlpha, drawn->mutableDataV() + chroma,
        drawn->strideV(), place.width / 2, place.height / 2);
  return drawn;
}

void Watermark::fit(Overlay& overlay, bool mirrored) const {
  const bool isTurned = swapsSides(overlay.rotation);
  const std::int32_t width = isTurned ? overlay.pictureHeight : overlay.pictureWidth;
  const std::int32_t height = isTurned ? overlay.pictureWidth : overlay.pictureHeight;
  PixelRect part;
  PixelRect place = uprightPlace(width, height, part);
  overlay.place = {};
  if (place.width == 0 || place.height == 0) return;
  Pixels image = scaled(image_, part, place.width, place.height);
  if (mirrored) {
    place.x = (width - place.x - place.width) & ~1;
    Pixels other = image;
    const std::int32_t stride = image.width * kPixelBytes;
    libyuv::ARGBMirror(other.bgra.data(), stride, image.bgra.data(), stride, image.width, image.height);
  }
  overlay.place = captured(place, overlay.pictureWidth, overlay.pictureHeight, overlay.rotation);
  split(turned(image, (360 - overlay.rotation) % 360), overlay);
}

/// The visible part of the image's place in an upright picture.
/// @param imagePart  gets what of the image is visible
PixelRect Watermark::uprightPlace(std::int32_t width, std::int32_t height, PixelRect& imagePart) const {
  const double fullWidth = position_.width * width;
  const std::int64_t placeWidth = evenLength(fullWidth);
  const std::int64_t placeHeight = evenLength(fullWidth * image_.height / image_.width);
  const std::int32_t x = evenBelow(position_.x * width);
  const std::int32_t y = evenBelow(position_.y * height);
  const PixelRect place{x, y, evenInside(placeWidth, width - x), evenInside(placeHeight, height - y)};
  imagePart = {0, 0, visiblePart(image_.width, place.width, placeWidth),
               visiblePart(image_.height, place.height, placeHeight)};
  return place;
}

/// The part of the image, which begins at its first pixel, at another size. Shrinking goes by halves first:
/// a single step would skip pixels.
Watermark::Pixels Watermark::scaled(const Pixels& image, const PixelRect& part, std::int32_t width,
                                    std::int32_t height) {
  const bool isLastStep = part.width < 2 * width || part.height < 2 * height;
  Pixels result;
  result.width = isLastStep ? width : part.width / 2;
  result.height = isLastStep ? height : part.height / 2;
  result.bgra.resize(byteCount(result.width, result.height));
  libyuv::ARGBScale(image.bgra.data(), image.width * kPixelBytes, part.width, part.height, result.bgra.data(),
                    result.width * kPixelBytes, result.width, result.height, libyuv::kFilterBox);
  if (isLastStep) return result;
  return scaled(result, {0, 0, result.width, result.height}, width, height);
}

Watermark::Pixels Watermark::turned(const Pixels& image, std::int32_t degrees) {
  Pixels result = image;
  if (degrees % 180 != 0) std::swap(result.width, result.height);
  libyuv::ARGBRotate(image.bgra.data(), image.width * kPixelBytes, result.bgra.data(),
                     result.width * kPixelBytes, image.width, image.height,
                     static_cast<libyuv::RotationMode>(degrees));
  return result;
}

/// Turns pixels with even sides into the overlay's colours and alpha. The colour of a group of four is the
/// mean of what can be seen of them, so that transparent pixels lend it none of theirs.
void Watermark::split(Pixels image, Overlay& overlay) {
  const std::int32_t stride = image.width * kPixelBytes;
  const std::int32_t halfWidth = image.width / 2;
  const std::int32_t halfHeight = image.height / 2;
  Pixels half = scaled(image, {0, 0, image.width, image.height}, halfWidth, halfHeight);
  const std::int32_t halfStride = halfWidth * kPixelBytes;
  libyuv::ARGBUnattenuate(image.bgra.data(), stride, image.bgra.data(), stride, image.width, image.height);
  libyuv::ARGBUnattenuate(half.bgra.data(), halfStride, half.bgra.data(), halfStride, halfWidth, halfHeight);

  overlay.colors = LumoRTCI420Buffer::create(image.width, image.height);
  overlay.alpha.resize(image.bgra.size() / kPixelBytes);
  overlay.chromaAlpha.resize(half.bgra.size() / kPixelBytes);
  LumoRTCI420Buffer& colors = *overlay.colors;
  // The half-sized luma is not used: it is written over by that of the full size.
  libyuv::ARGBToI444(half.bgra.data(), halfStride, colors.mutableDataY(), halfWidth, colors.mutableDataU(),
                     colors.strideU(), colors.mutableDataV(), colors.strideV(), halfWidth, halfHeight);
  libyuv::ARGBToI400(image.bgra.data(), stride, colors.mutableDataY(), colors.strideY(), image.width,
                     image.height);
  libyuv::ARGBExtractAlpha(image.bgra.data(), stride, overlay.alpha.data(), image.width, image.width,
                           image.height);
  libyuv::ARGBExtractAlpha(half.bgra.data(), halfStride, overlay.chromaAlpha.data(), halfWidth, halfWidth,
                           halfHeight);
}

}  // namespace lumo
