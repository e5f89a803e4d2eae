#include "LumoRTCLocal/media/VideoPresets.h"

#include <algorithm>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"

namespace lumo {
namespace {

constexpr std::int32_t kTinyShortSide = 180;
constexpr std::int32_t kTinyFrameRate = 10;

}  // namespace

std::optional<VideoFormat> presetFormat(std::int64_t preset, const VideoFormat& base) {
  const auto width = static_cast<std::int32_t>(LMRTCIWConfigUtility::getVideoSize(preset, 0));
  const auto height = static_cast<std::int32_t>(LMRTCIWConfigUtility::getVideoSize(preset, 1));
  if (width == 0) return std::nullopt;
  return VideoFormat{width, height, base.framesPerSecond};
}

std::optional<std::int32_t> presetFrameRate(std::int64_t value) {
  const auto framesPerSecond = static_cast<std::int32_t>(LMRTCIWConfigUtility::getVideoFPS(value));
  if (framesPerSecond == 0) return std::nullopt;
  return framesPerSecond;
}

VideoFormat configuredFormat(const VideoFormat& present, const LMRTCVideoStreamConfig& config) {
  VideoFormat format = presetFormat(config.videoSizePreset(), present).value_or(present);
  format.framesPerSecond = presetFrameRate(config.videoFps()).value_or(present.framesPerSecond);
  return format;
}

VideoFormat defaultTinyFormat(const VideoFormat& normal) {
  const std::int32_t shortSide = std::min(normal.width, normal.height);
  const std::int32_t target = std::min(shortSide, kTinyShortSide);
  const auto shrink = [&](std::int32_t side) {
    return static_cast<std::int32_t>(std::int64_t{side} * target / shortSide);
  };
  return {shrink(normal.width), shrink(normal.height), std::min(normal.framesPerSecond, kTinyFrameRate)};
}

}  // namespace lumo
