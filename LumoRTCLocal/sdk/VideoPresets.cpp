#include "LumoRTCLocal/sdk/VideoPresets.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace lumo {
namespace {

struct Size {
  std::int32_t width;
  std::int32_t height;
};

constexpr std::array<Size, 17> kSizes{{{144, 176},
                                       {180, 180},
                                       {144, 256},
                                       {180, 240},
                                       {180, 320},
                                       {240, 240},
                                       {240, 320},
                                       {360, 360},
                                       {360, 480},
                                       {360, 640},
                                       {480, 480},
                                       {480, 640},
                                       {480, 720},
                                       {480, 848},
                                       {720, 960},
                                       {720, 1280},
                                       {1080, 1920}}};
constexpr std::array<std::int32_t, 4> kFrameRates{10, 15, 24, 30};
constexpr std::int32_t kTinyShortSide = 180;
constexpr std::int32_t kTinyFrameRate = 10;

}  // namespace

std::optional<VideoFormat> presetFormat(std::int64_t preset, const VideoFormat& base) {
  if (preset < 0 || preset >= std::int64_t{kSizes.size()}) return std::nullopt;
  const Size size = kSizes[static_cast<std::size_t>(preset)];
  return VideoFormat{size.width, size.height, base.framesPerSecond};
}

std::optional<std::int32_t> presetFrameRate(std::int64_t value) {
  if (value < 0 || value >= std::int64_t{kFrameRates.size()}) return std::nullopt;
  return kFrameRates[static_cast<std::size_t>(value)];
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
