#include "LumoRTCLibWrapper/views/UprightConverter.h"

#include <algorithm>
#include <cstddef>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"

namespace lumo {
namespace {

/// Rows of the turned picture in one strip: even, so that strips begin on whole chroma rows.
constexpr std::int32_t kStripRows = 64;

/// The part of a picture that becomes one strip: where its planes begin, and its size.
struct Part {
  const std::uint8_t* y;
  const std::uint8_t* u;
  const std::uint8_t* v;
  std::int32_t width;
  std::int32_t height;
};

Part columns(const LumoRTCI420Buffer& picture, std::int32_t first, std::int32_t firstChroma,
             std::int32_t count) {
  return {picture.dataY() + first, picture.dataU() + firstChroma, picture.dataV() + firstChroma, count,
          picture.height()};
}

Part rows(const LumoRTCI420Buffer& picture, std::int32_t first, std::int32_t firstChroma,
          std::int32_t count) {
  const auto y = static_cast<std::ptrdiff_t>(first) * picture.strideY();
  const auto u = static_cast<std::ptrdiff_t>(firstChroma) * picture.strideU();
  const auto v = static_cast<std::ptrdiff_t>(firstChroma) * picture.strideV();
  return {picture.dataY() + y, picture.dataU() + u, picture.dataV() + v, picture.width(), count};
}

/// What becomes rows `first` to `first + count` of the turned picture. Chroma is counted from its own edge,
/// because in a picture of odd size its last row or column serves a single one of luma.
Part partFor(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::int32_t first,
             std::int32_t count) {
  const std::int32_t chromaEnd = (first + count + 1) / 2;
  switch (rotation) {
    case 90:
      return columns(picture, first, first / 2, count);
    case 270:
      return columns(picture, picture.width() - first - count, picture.chromaWidth() - chromaEnd, count);
    default:
      return rows(picture, picture.height() - first - count, picture.chromaHeight() - chromaEnd, count);
  }
}

}  // namespace

std::shared_ptr<LumoRTCI420Buffer> rotatedCopy(const LumoRTCI420Buffer& picture, std::int32_t rotation) {
  const bool swaps = swapsSides(rotation);
  auto copy = LumoRTCI420Buffer::create(swaps ? picture.height() : picture.width(),
                                        swaps ? picture.width() : picture.height());
  LumoRTCI420Rotate(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(), picture.dataV(),
                    picture.strideV(), copy->mutableDataY(), copy->strideY(), copy->mutableDataU(),
                    copy->strideU(), copy->mutableDataV(), copy->strideV(), picture.width(), picture.height(),
                    rotation);
  return copy;
}

void UprightConverter::convert(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::uint8_t* bgra,
                               std::int32_t bgraStride) {
  if (!swapsSides(rotation) && rotation != 180) {
    LumoRTCI420ToARGB(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(), picture.dataV(),
                      picture.strideV(), bgra, bgraStride, picture.width(), picture.height());
    return;
  }
  const std::int32_t width = swapsSides(rotation) ? picture.height() : picture.width();
  const std::int32_t height = swapsSides(rotation) ? picture.width() : picture.height();
  LumoRTCI420Buffer& strip = stripOf(width);
  for (std::int32_t row = 0; row < height; row += kStripRows) {
    const std::int32_t count = std::min(kStripRows, height - row);
    const Part part = partFor(picture, rotation, row, count);
    LumoRTCI420Rotate(part.y, picture.strideY(), part.u, picture.strideU(), part.v, picture.strideV(),
                      strip.mutableDataY(), strip.strideY(), strip.mutableDataU(), strip.strideU(),
                      strip.mutableDataV(), strip.strideV(), part.width, part.height, rotation);
    LumoRTCI420ToARGB(strip.dataY(), strip.strideY(), strip.dataU(), strip.strideU(), strip.dataV(),
                      strip.strideV(), bgra + static_cast<std::ptrdiff_t>(row) * bgraStride, bgraStride,
                      width, count);
  }
}

LumoRTCI420Buffer& UprightConverter::stripOf(std::int32_t width) {
  if (!strip_ || strip_->width() != width) strip_ = LumoRTCI420Buffer::create(width, kStripRows);
  return *strip_;
}

}  // namespace lumo
