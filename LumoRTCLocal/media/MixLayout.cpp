#include "LumoRTCLocal/media/MixLayout.h"

#include <algorithm>

namespace lumo {
namespace {

constexpr std::int32_t kSmallPart = 4;    // of width and height
constexpr std::int32_t kMarginPart = 48;  // of the width
constexpr std::int32_t kSmallColumns = 4;

/// Where the part `index` of `count` begins.
std::int32_t edge(std::int32_t length, std::int32_t index, std::int32_t count) {
  return even(static_cast<std::int32_t>(std::int64_t{length} * index / count));
}

}  // namespace

void placeInGrid(std::size_t count, std::int32_t width, std::int32_t height, std::vector<PixelRect>& places) {
  places.clear();
  const auto pictures = static_cast<std::int32_t>(count);
  std::int32_t columns = 1;
  std::int32_t rows = 1;
  while (columns * rows < pictures) {
    const bool addsColumn = width >= height ? columns <= rows : columns < rows;
    ++(addsColumn ? columns : rows);
  }
  const std::int32_t tileWidth = edge(width, 1, columns);
  for (std::int32_t i = 0; i < pictures; ++i) {
    const std::int32_t row = i / columns;
    const std::int32_t inRow = std::min(columns, pictures - row * columns);
    const std::int32_t top = edge(height, row, rows);
    const std::int32_t indent = inRow < columns ? even((width - inRow * tileWidth) / 2) : 0;
    const std::int32_t left =
        inRow < columns ? indent + i % columns * tileWidth : edge(width, i % columns, columns);
    const std::int32_t right = inRow < columns ? left + tileWidth : edge(width, i % columns + 1, columns);
    places.push_back({left, top, right - left, edge(height, row + 1, rows) - top});
  }
}

void placeSuspended(std::size_t count, std::int32_t width, std::int32_t height,
                    std::vector<PixelRect>& places) {
  places.clear();
  const std::int32_t margin = even(width / kMarginPart);
  const std::int32_t tileWidth = std::max(even((width - (kSmallColumns + 1) * margin) / kSmallPart), 0);
  const std::int32_t tileHeight = std::max(even((height - (kSmallPart + 1) * margin) / kSmallPart), 0);
  const auto pictures = static_cast<std::int32_t>(count);
  for (std::int32_t i = 0; i < pictures; ++i) {
    const std::int32_t row = (i - 1) % kSmallPart;
    const std::int32_t column = (i - 1) / kSmallPart;
    if (i == 0) {
      places.push_back({0, 0, width, height});
    } else if (column >= kSmallColumns - 1) {
      places.push_back({});
    } else {
      places.push_back({even(width - (column + 1) * (tileWidth + margin)),
                        even(height - (row + 1) * (tileHeight + margin)), tileWidth, tileHeight});
    }
  }
}

}  // namespace lumo
