#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

#include <array>
#include <cstddef>

namespace {

constexpr std::int64_t inRangeOr(std::int64_t value, std::int64_t first, std::int64_t last,
                                 std::int64_t fallback) {
  return value >= first && value <= last ? value : fallback;
}

}  // namespace

std::int64_t LMRTCIWConverter::toLMRTCJoinRoomType(std::int64_t type) { return inRangeOr(type, 1, 1, 0); }

std::int64_t LMRTCIWConverter::toLMRTCIWNetworkQualityLevel(std::int64_t level) {
  return inRangeOr(level, 1, 5, 0);
}

std::int64_t LMRTCIWConverter::toStreamType(std::int64_t type) {
  constexpr std::array<std::int64_t, 5> kTypes = {0, 2, 1, 4, 3};
  return type >= 0 && type < std::ssize(kTypes) ? kTypes[static_cast<std::size_t>(type)] : -1;
}

std::int64_t LMRTCIWConverter::toLMRTCIWStreamType(std::int64_t type) { return toStreamType(type); }

std::int64_t LMRTCIWConverter::toLMRTCIWVideoFps(std::int64_t fps) { return inRangeOr(fps, 0, 3, 1); }

std::int64_t LMRTCIWConverter::toLMRTCVideoFPS(std::int64_t fps) { return inRangeOr(fps, 0, 3, -1); }

std::int64_t LMRTCIWConverter::toLMRTCVideoSizePreset(std::int64_t preset) {
  return inRangeOr(preset, 0, 16, -1);
}

std::int64_t LMRTCIWConverter::toLMRTCMixLayoutMode(std::int64_t mode) { return inRangeOr(mode, 1, 3, 2); }

std::int64_t LMRTCIWConverter::toLMRTCVideoRenderMode(std::int64_t mode) { return inRangeOr(mode, 2, 2, 1); }

std::int64_t LMRTCIWConverter::toLMRTCMixerMode(std::int64_t mode) { return inRangeOr(mode, 0, 2, 1); }

std::int64_t LMRTCIWConverter::toLMRTCDeviceCamera(std::int64_t camera) {
  return camera == 0 ? 2 : inRangeOr(camera, 1, 1, 0);
}

std::int64_t LMRTCIWConverter::toLMRTCAudioQuality(std::int64_t quality) {
  return inRangeOr(quality, 0, 2, 0);
}

std::int64_t LMRTCIWConverter::toLMRTCAudioScenario(std::int64_t scenario) {
  return inRangeOr(scenario, 0, 2, 0);
}

std::int64_t LMRTCIWConverter::toLMRTCAudioCodecType(std::int64_t codec) {
  return inRangeOr(codec, 0, 0, 111);
}
