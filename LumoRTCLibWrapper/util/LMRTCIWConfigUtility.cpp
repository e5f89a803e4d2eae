#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

constexpr std::array<std::int64_t, 4> kFramesPerSecond = {10, 15, 24, 30};

using Size = std::pair<std::int64_t, std::int64_t>;
constexpr std::array<Size, 17> kSizes = {{{144, 176},
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

}  // namespace

std::int64_t LMRTCIWConfigUtility::getVideoFPS(std::int64_t fps) {
  return fps >= 0 && fps < std::ssize(kFramesPerSecond) ? kFramesPerSecond[static_cast<std::size_t>(fps)] : 0;
}

std::int64_t LMRTCIWConfigUtility::getVideoResolution(std::int64_t width, std::int64_t height) {
  const auto place = std::ranges::find(kSizes, Size(width, height));
  return place == kSizes.end() ? -1 : place - kSizes.begin();
}

std::int64_t LMRTCIWConfigUtility::getVideoSize(std::int64_t preset, std::int64_t type) {
  if (preset < 0 || preset >= std::ssize(kSizes)) return 0;
  const auto& [first, second] = kSizes[static_cast<std::size_t>(preset)];
  return type == 0 ? first : type == 1 ? second : 0;
}
