#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// The times of pictures that follow one another evenly. Picture n stands n / rate after the start, rounded
/// up to whole microseconds.
class FrameGrid {
 public:
  explicit FrameGrid(Microseconds start = Microseconds(0)) : start_(start) {}

  /// Which picture is the last one at or before `time`, counted from the start.
  /// @param framesPerSecond  at least 1
  static std::int64_t pictureAt(Microseconds time, std::int32_t framesPerSecond) {
    return time.count() * framesPerSecond / kSecond;
  }

  /// The time of the first picture.
  Microseconds start() const { return start_; }

  /// The time of the picture after the last one, or, for whoever is slow, of the one that is due at `now`.
  Microseconds next(Microseconds now, std::int32_t framesPerSecond) {
    picture_ = std::max(picture_ + 1, pictureAt(now - start_, framesPerSecond));
    return start_ + Microseconds((picture_ * kSecond + framesPerSecond - 1) / framesPerSecond);
  }

 private:
  static constexpr std::int64_t kSecond = Microseconds(std::chrono::seconds(1)).count();

  Microseconds start_;
  std::int64_t picture_ = 0;
};

}  // namespace lumo
