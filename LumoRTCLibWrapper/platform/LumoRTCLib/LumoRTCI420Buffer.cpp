#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

#include <utility>

std::shared_ptr<LumoRTCI420Buffer> LumoRTCI420Buffer::create(std::int32_t width, std::int32_t height) {
  const std::int32_t chromaWidth = (width + 1) / 2;
  const std::int32_t chromaHeight = (height + 1) / 2;
  const auto sizeY = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto sizeChroma = static_cast<std::size_t>(chromaWidth) * static_cast<std::size_t>(chromaHeight);
  auto memory = std::make_shared_for_overwrite<std::uint8_t[]>(sizeY + 2 * sizeChroma);
  std::uint8_t* const y = memory.get();
  return wrap(width, height, y, width, y + sizeY, chromaWidth, y + sizeY + sizeChroma, chromaWidth,
              std::move(memory));
}

std::shared_ptr<LumoRTCI420Buffer> LumoRTCI420Buffer::wrap(std::int32_t width, std::int32_t height,
                                                           std::uint8_t* y, std::int32_t strideY,
                                                           std::uint8_t* u, std::int32_t strideU,
                                                           std::uint8_t* v, std::int32_t strideV,
                                                           std::shared_ptr<const void> owner) {
  const std::shared_ptr<LumoRTCI420Buffer> buffer(new LumoRTCI420Buffer());
  buffer->width_ = width;
  buffer->height_ = height;
  buffer->y_ = y;
  buffer->u_ = u;
  buffer->v_ = v;
  buffer->strideY_ = strideY;
  buffer->strideU_ = strideU;
  buffer->strideV_ = strideV;
  buffer->owner_ = std::move(owner);
  return buffer;
}
