#include "LumoRTCLocal/sdk/CameraPair.h"

#include <utility>

namespace lumo {

CameraPair::CameraPair(std::unique_ptr<VideoSource> front, std::unique_ptr<VideoSource> back)
    : front_(std::move(front)), back_(std::move(back)) {}

void CameraPair::setPosition(std::int64_t position) {
  if (position == LMRTCDeviceCameraFront || position == LMRTCDeviceCameraBack) position_ = position;
}

std::shared_ptr<const LumoRTCI420Buffer> CameraPair::frameAt(Microseconds time, const VideoFormat& format) {
  return (position_ == LMRTCDeviceCameraBack ? back_ : front_)->frameAt(time, format);
}

}  // namespace lumo
