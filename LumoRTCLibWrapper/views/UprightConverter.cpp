#include "LumoRTCLibWrapper/views/UprightConverter.h"

#include <algorithm>
#include <cstddef>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"

namespace lumo {
namespace {

// The size of a tile of the turned picture: even, so that tiles begin on whole chroma rows and columns. Where
// sides swap, a tile is narrow enough for the rows that it comes from to stay within reach of the processor.
constexpr std::int32_t kTurnedRows = 64;
constexpr std::int32_t kTurnedColumns = 512;
constexpr std::int32_t kUpsideDownRows = 128;

/// A stretch of rows or columns. Chroma has its own beginning: in a picture of odd size its last row or
/// column serves a single one of luma.
struct Span {
  std::int32_t first = 0;
  std::int32_t firstChroma = 0;
  std::int32_t count = 0;
};

Span forwards(std::int32_t first, std::int32_t count) { return {first, first / 2, count}; }

/// The same stretch of `size` rows or columns, counted from their end.
Span backwards(std::int32_t first, std::int32_t count, std::int32_t size) {
  return {size - first - count, (size + 1) / 2 - (first + count + 1) / 2, count};
}

/// What becomes the tile at `row` and `column` of the turned picture.
struct Source {
  Span rows;
  Span columns;
};

Source sourceOf(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::int32_t row, std::int32_t rows,
                std::int32_t column, std::int32_t columns) {
  switch (rotation) {
    case 90:
      return {backwards(column, columns, picture.height()), forwards(row, rows)};
    case 270:
      return {forwards(column, columns), backwards(row, rows, picture.width())};
    default:
      return {backwards(row, rows, picture.height()), backwards(column, columns, picture.width())};
  }
}

void turn(const LumoRTCI420Buffer& picture, const Source& source, std::int32_t rotation,
          LumoRTCI420Buffer& tile) {
  const auto place = [](const std::uint8_t* plane, std::int32_t stride, std::int32_t row,
                        std::int32_t column) {
    return plane + static_cast<std::ptrdiff_t>(row) * stride + column;
  };
  const auto& [rows, columns] = source;
  LumoRTCI420Rotate(place(picture.dataY(), picture.strideY(), rows.first, columns.first), picture.strideY(),
                    place(picture.dataU(), picture.strideU(), rows.firstChroma, columns.firstChroma),
                    picture.strideU(),
                    place(picture.dataV(), picture.strideV(), rows.firstChroma, columns.firstChroma),
                    picture.strideV(), tile.mutableDataY(), tile.strideY(), tile.mutableDataU(),
                    tile.strideU(), tile.mutableDataV(), tile.strideV(), columns.count, rows.count, rotation);
}

}  // namespace

std::shared_ptr<LumoRTCI420Buffer> rotatedCopy(const LumoRTCI420Buffer& picture, std::int32_t rotation) {
  const bool swaps = swapsSides(rotation);
  auto copy = LumoRTCI420Buffer::create(swaps ? picture.height() : picture.width(),
                                        swaps ? picture.width() : picture.height());
  LumoRTCI420Rotate(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(), picture.dataV(),
                    picture.strideV(), copy->mutableDataY(), copy->strideY(), copy->mutableDataU(),
                    copy->strideU(), copy->mutableDataV(), copy->strideV(), picture.width(), picture.height(),
                    rotation);
  return copy;
}

void UprightConverter::convert(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::uint8_t* bgra,
                               std::int32_t bgraStride) {
  if (!swapsSides(rotation) && rotation != 180) {
    LumoRTCI420ToARGB(picture.dataY(), picture.strideY(), picture.dataU(), picture.strideU(), picture.dataV(),
                      picture.strideV(), bgra, bgraStride, picture.width(), picture.height());
    return;
  }
  const bool swaps = swapsSides(rotation);
  const std::int32_t width = swaps ? picture.height() : picture.width();
  const std::int32_t height = swaps ? picture.width() : picture.height();
  const std::int32_t tileWidth = swaps ? std::min(width, kTurnedColumns) : width;
  const std::int32_t tileHeight = std::min(height, swaps ? kTurnedRows : kUpsideDownRows);
  LumoRTCI420Buffer& tile = tileOf(tileWidth, tileHeight);
  for (std::int32_t row = 0; row < height; row += tileHeight) {
    const std::int32_t rows = std::min(tileHeight, height - row);
    for (std::int32_t column = 0; column < width; column += tileWidth) {
      const std::int32_t columns = std::min(tileWidth, width - column);
      turn(picture, sourceOf(picture, rotation, row, rows, column, columns), rotation, tile);
      LumoRTCI420ToARGB(tile.dataY(), tile.strideY(), tile.dataU(), tile.strideU(), tile.dataV(),
                        tile.strideV(), bgra + static_cast<std::ptrdiff_t>(row) * bgraStride + column * 4,
                        bgraStride, columns, rows);
    }
  }
}

LumoRTCI420Buffer& UprightConverter::tileOf(std::int32_t width, std::int32_t height) {
  if (!tile_ || tile_->width() != width || tile_->height() != height)
    tile_ = LumoRTCI420Buffer::create(width, height);
  return *tile_;
}

}  // namespace lumo
