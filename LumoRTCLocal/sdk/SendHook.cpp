#include "LumoRTCLocal/sdk/SendHook.h"

#include <chrono>
#include <cstdint>
#include <utility>

#include "LumoRTCLibWrapper/platform/system/CMSampleBuffer.h"
#include "LumoRTCLocal/media/Picture.h"

namespace lumo {
namespace {

/// The planes of a buffer whose addresses are locked.
I420View planesOf(CVPixelBuffer& pixels, std::int32_t width, std::int32_t height) {
  const auto stride = [&pixels](std::size_t plane) {
    return static_cast<std::int32_t>(pixels.bytesPerRow(plane));
  };
  return {pixels.baseAddress(0),
          pixels.baseAddress(1),
          pixels.baseAddress(2),
          stride(0),
          stride(1),
          stride(2),
          width,
          height};
}

/// A copy of the pixels as I420; null when they are not `width` x `height` or of an unknown format.
SendHook::Picture copied(CVPixelBuffer& pixels, std::int32_t width, std::int32_t height, FramePool& pool) {
  if (pixels.width() != static_cast<std::size_t>(width) ||
      pixels.height() != static_cast<std::size_t>(height)) {
    return nullptr;
  }
  SendHook::Picture picture;
  pixels.lockBaseAddress();
  switch (pixels.pixelFormat()) {
    case kCVPixelFormatType_32BGRA:
      picture = fromBgra(pixels.baseAddress(), static_cast<std::int32_t>(pixels.bytesPerRow()), width, height,
                         pool);
      break;
    case kCVPixelFormatType_420YpCbCr8Planar:
      picture = lumo::copied(planesOf(pixels, width, height), pool);
      break;
    default:
      break;
  }
  pixels.unlockBaseAddress();
  return picture;
}

}  // namespace

void SendHook::set(Callback callback) {
  callback_.set(callback ? std::make_shared<const Callback>(std::move(callback)) : nullptr);
}

SendHook::Picture SendHook::process(const Picture& picture, Microseconds time, FramePool& pool) const {
  const auto callback = callback_.get();
  if (!callback) return picture;
  const auto pixels = CVPixelBuffer::wrap(picture);
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  const auto returned =
      (*callback)(makeRecycled<CMSampleBuffer>(recycler_, CMSampleBuffer{pixels, milliseconds}));
  if (!returned || !returned->imageBuffer) return nullptr;
  if (returned->imageBuffer == pixels) return picture;
  return copied(*returned->imageBuffer, picture->width(), picture->height(), pool);
}

}  // namespace lumo
