#include "LumoRTCLocal/media/PictureMixer.h"

#include <libyuv/planar_functions.h>

#include <algorithm>

namespace lumo {
namespace {

bool isEmpty(const PixelRect& rect) { return rect.width < 2 || rect.height < 2; }

PixelRect evenRect(const PixelRect& rect) {
  return {even(rect.x), even(rect.y), even(rect.width), even(rect.height)};
}

/// The part of `picture`, as large as possible and in its middle, that has the proportions of `place`.
PixelRect middlePart(const I420View& picture, const PixelRect& place) {
  return aspectFit(place.width, place.height, picture.width, picture.height);
}

/// One axis of a tile: from the `place` on the canvas to what is visible of it, and the part of the `source`
/// that belongs there.
struct Span {
  std::int32_t start = 0;
  std::int32_t length = 0;
};

void cut(Span& source, Span& place, std::int32_t limit) {
  const std::int32_t begin = std::clamp(place.start, 0, limit);
  const std::int32_t end = std::clamp(place.start + place.length, 0, limit);
  const auto toSource = [&](std::int32_t distance) {
    return static_cast<std::int32_t>(std::int64_t{source.length} * distance / place.length);
  };
  const std::int32_t from = even(toSource(begin - place.start));
  const std::int32_t to = toSource(end - place.start);
  source = {source.start + from, std::max(1, to - from)};
  place = {begin, even(end - begin)};
}

/// Draws `part` of `picture` over `place`, as far as that lies on the target.
void drawPart(const I420View& picture, const PixelRect& part, const PixelRect& place,
              LumoRTCI420Buffer& target) {
  Span sourceX{part.x, part.width};
  Span sourceY{part.y, part.height};
  Span placeX{place.x, place.width};
  Span placeY{place.y, place.height};
  cut(sourceX, placeX, target.width());
  cut(sourceY, placeY, target.height());
  const PixelRect visible{placeX.start, placeY.start, placeX.length, placeY.length};
  if (isEmpty(visible)) return;
  drawScaled(cropped(picture, {sourceX.start, sourceY.start, sourceX.length, sourceY.length}), target,
             visible);
}

}  // namespace

std::shared_ptr<const LumoRTCI420Buffer> PictureMixer::mix(std::span<const MixTile> tiles,
                                                           const MixCanvas& canvas) {
  auto result = pool_.take(canvas.width, canvas.height);
  libyuv::I420Rect(result->mutableDataY(), result->strideY(), result->mutableDataU(), result->strideU(),
                   result->mutableDataV(), result->strideV(), 0, 0, canvas.width, canvas.height,
                   canvas.background.y, canvas.background.u, canvas.background.v);
  for (const MixTile& tile : tiles) draw(tile, canvas.showWhole, *result);
  return result;
}

void PictureMixer::draw(const MixTile& tile, bool showWhole, LumoRTCI420Buffer& target) {
  const PixelRect place = evenRect(tile.place);
  if (!tile.picture || isEmpty(place)) return;
  const std::shared_ptr<const void> nobody;  // the caller owns the picture
  const std::shared_ptr<const LumoRTCI420Buffer> lent(nobody, tile.picture);
  const auto upright = rotated(lent, tile.rotation, turned_);
  const I420View picture = viewOf(*upright);
  if (!showWhole) return drawPart(picture, middlePart(picture, place), place, target);
  PixelRect inner = evenRect(aspectFit(picture.width, picture.height, place.width, place.height));
  inner.x += place.x;
  inner.y += place.y;
  drawPart(picture, {0, 0, picture.width, picture.height}, inner, target);
}

}  // namespace lumo
