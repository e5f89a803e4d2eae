#pragma once

#include <cstdint>
#include <vector>

/// The system's image: a picture in memory, top row first.
struct UIImage {
  std::int32_t width = 0;          ///< pixels
  std::int32_t height = 0;         ///< pixels
  std::vector<std::uint8_t> bgra;  ///< 4 * width * height bytes: blue, green, red, alpha (not premultiplied)
};
