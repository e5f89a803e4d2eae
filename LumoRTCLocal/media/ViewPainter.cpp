#include "LumoRTCLocal/media/ViewPainter.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"

namespace lumo {
namespace {

constexpr std::uint8_t kOpaqueBlack[4] = {0, 0, 0, 255};

/// Which part of the upright picture goes to which part of the view.
struct Placement {
  PixelRect source;
  PixelRect target;
};

Placement place(std::int32_t width, std::int32_t height, std::int64_t fillMode, const Bitmap& view) {
  const PixelRect wholePicture{0, 0, width, height};
  const PixelRect wholeView{0, 0, view.width, view.height};
  switch (fillMode) {
    case LMRTCVideoFillModeStretch:
      return {wholePicture, wholeView};
    case LMRTCVideoFillModeAspectFill:
      return {aspectFit(view.width, view.height, width, height), wholeView};
    default:
      return {wholePicture, aspectFit(width, height, view.width, view.height)};
  }
}

void fillBlack(Bitmap& target) {
  for (std::size_t i = 0; i < target.bgra.size(); i += 4)
    std::copy_n(kOpaqueBlack, 4, target.bgra.data() + i);
}

/// The rectangle of the picture before its rotation. A centred rectangle only swaps its sides.
PixelRect beforeRotation(const PixelRect& rect, std::int32_t rotation) {
  return swapsSides(rotation) ? PixelRect{rect.y, rect.x, rect.height, rect.width} : rect;
}

/// The part `source` of the picture, upright, mirrored if wanted, in the given size. Scales first, so that
/// the other steps touch no more pixels than are shown.
std::shared_ptr<const LumoRTCI420Buffer> prepare(const I420View& source, std::int32_t rotation, bool mirror,
                                                 std::int32_t width, std::int32_t height) {
  thread_local FramePool pool;
  if (swapsSides(rotation)) std::swap(width, height);
  auto picture = rotated(scaled(source, width, height, pool), rotation, pool);
  return mirror ? mirrored(*picture, pool) : picture;
}

}  // namespace

void paint(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::int64_t fillMode, bool mirror,
           Bitmap& target) {
  if (target.width < 1 || target.height < 1) return;
  target.bgra.resize(static_cast<std::size_t>(target.width) * static_cast<std::size_t>(target.height) * 4);
  const bool isTurned = swapsSides(rotation);
  const auto [source, area] = place(isTurned ? picture.height() : picture.width(),
                                    isTurned ? picture.width() : picture.height(), fillMode, target);
  if (area.width < target.width || area.height < target.height) fillBlack(target);
  const std::int32_t stride = target.width * 4;
  std::uint8_t* const pixels = target.bgra.data() + static_cast<std::ptrdiff_t>(area.y) * stride + area.x * 4;
  const I420View part = cropped(viewOf(picture), beforeRotation(source, rotation));
  const bool isAsShown = !mirror && rotation == 0 && part.width == area.width && part.height == area.height;
  if (isAsShown) return toBgra(part, pixels, stride);
  toBgra(viewOf(*prepare(part, rotation, mirror, area.width, area.height)), pixels, stride);
}

}  // namespace lumo
