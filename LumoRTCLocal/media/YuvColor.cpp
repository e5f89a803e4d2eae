#include "LumoRTCLocal/media/YuvColor.h"

#include <cmath>

namespace lumo {

YuvColor yuvOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  const auto byte = [](double value) { return static_cast<std::uint8_t>(std::lround(value)); };
  return {byte(16 + (65.481 * red + 128.553 * green + 24.966 * blue) / 255),
          byte(128 + (-37.797 * red - 74.203 * green + 112.0 * blue) / 255),
          byte(128 + (112.0 * red - 93.786 * green - 18.214 * blue) / 255)};
}

}  // namespace lumo
