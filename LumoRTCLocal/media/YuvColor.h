#pragma once

#include <cstdint>

namespace lumo {

/// A colour of an I420 picture (BT.601, limited range). The default is black.
struct YuvColor {
  std::uint8_t y = 16;
  std::uint8_t u = 128;
  std::uint8_t v = 128;

  bool operator==(const YuvColor&) const = default;
};

/// The colour of red, green and blue components, 0 to 255 each; 255 each is white.
YuvColor yuvOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

}  // namespace lumo
