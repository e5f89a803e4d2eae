#include "LumoRTCLocal/media/TestPicture.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <charconv>
#include <cstddef>
#include <cstring>

namespace lumo {
namespace {

constexpr std::array<YuvColor, 12> kBackgrounds = {{
    {82, 90, 240},    // red
    {145, 54, 34},    // green
    {41, 240, 110},   // blue
    {169, 16, 165},   // orange-yellow
    {107, 202, 222},  // magenta
    {170, 166, 16},   // cyan
    {126, 128, 128},  // grey
    {124, 60, 188},   // orange
    {67, 170, 150},   // violet
    {62, 100, 110},   // dark green
    {110, 150, 90},   // steel blue
    {172, 120, 158},  // rose
}};
constexpr YuvColor kWhite{235, 128, 128};
constexpr YuvColor kBlack{16, 128, 128};

constexpr std::int32_t kGrid = 20;
constexpr std::int32_t kCodeLeft = 1;
constexpr std::int32_t kCodeTop = 14;
constexpr std::int32_t kCodeRows = 5;
constexpr std::int32_t kBitsPerRow = 16;
constexpr std::int32_t kCodeRight = kCodeLeft + kBitsPerRow + 1;
constexpr std::size_t kCodeBits = std::size_t{kCodeRows} * kBitsPerRow;
constexpr std::uint8_t kThreshold = 126;

using Code = std::bitset<kCodeBits>;

/// CRC-16 with the polynomial 0x1021.
std::uint16_t checksum(const TestPictureReading& reading) {
  const std::uint64_t data = std::uint64_t{reading.sourceNumber} << 32 | reading.frameNumber;
  std::uint32_t crc = 0xFFFF;
  for (int shift = 63; shift >= 0; --shift) {
    const bool isSet = ((data >> shift) ^ (crc >> 15)) & 1;
    crc = ((crc << 1) ^ (isSet ? 0x1021U : 0U)) & 0xFFFF;
  }
  return static_cast<std::uint16_t>(crc);
}

/// Bit 0 is the upper left cell of the code.
Code encode(const TestPictureReading& reading) {
  Code code;
  for (std::size_t bit = 0; bit < 32; ++bit) {
    code[bit] = reading.sourceNumber >> (31 - bit) & 1;
    code[32 + bit] = reading.frameNumber >> (31 - bit) & 1;
  }
  for (std::size_t bit = 0; bit < 16; ++bit) code[64 + bit] = checksum(reading) >> (15 - bit) & 1;
  return code;
}

std::optional<TestPictureReading> decode(const Code& code) {
  TestPictureReading reading;
  for (std::size_t bit = 0; bit < 32; ++bit) {
    reading.sourceNumber = reading.sourceNumber << 1 | static_cast<std::uint32_t>(code[bit]);
    reading.frameNumber = reading.frameNumber << 1 | static_cast<std::uint32_t>(code[32 + bit]);
  }
  if (encode(reading) != code) return std::nullopt;
  return reading;
}

/// The first pixel of a cell of the grid that divides `size` pixels into `cells`.
std::int32_t edge(std::int32_t cell, std::int32_t size, std::int32_t cells = kGrid) {
  return static_cast<std::int32_t>(std::int64_t{cell} * size / cells);
}

void fillPlane(std::uint8_t* plane, std::int32_t stride, std::int32_t left, std::int32_t top,
               std::int32_t right, std::int32_t bottom, std::uint8_t value) {
  if (left >= right) return;
  for (std::int32_t y = top; y < bottom; ++y) {
    std::memset(plane + y * stride + left, value, static_cast<std::size_t>(right - left));
  }
}

/// Draws in units of a grid that divides the picture's width and height alike.
class Canvas {
 public:
  Canvas(LumoRTCI420Buffer& picture, std::int32_t cells) : picture_(picture), cells_(cells) {}

  void fill(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height,
            const YuvColor& color) {
    const std::int32_t x0 = edge(left, picture_.width(), cells_);
    const std::int32_t x1 = edge(left + width, picture_.width(), cells_);
    const std::int32_t y0 = edge(top, picture_.height(), cells_);
    const std::int32_t y1 = edge(top + height, picture_.height(), cells_);
    fillPlane(picture_.mutableDataY(), picture_.strideY(), x0, y0, x1, y1, color.y);
    fillPlane(picture_.mutableDataU(), picture_.strideU(), x0 / 2, y0 / 2, (x1 + 1) / 2, (y1 + 1) / 2,
              color.u);
    fillPlane(picture_.mutableDataV(), picture_.strideV(), x0 / 2, y0 / 2, (x1 + 1) / 2, (y1 + 1) / 2,
              color.v);
  }

 private:
  LumoRTCI420Buffer& picture_;
  const std::int32_t cells_;
};

/// The ten digits in 3 x 5 dots, row by row, the most significant bit first.
constexpr std::array<std::uint16_t, 10> kDigits = {
    0b111'101'101'101'111, 0b010'110'010'010'111, 0b111'001'111'100'111, 0b111'001'111'001'111,
    0b101'101'111'001'001, 0b111'100'111'001'111, 0b111'100'111'101'111, 0b111'001'001'010'010,
    0b111'101'111'101'111, 0b111'101'111'001'111};

void drawNumber(Canvas canvas, std::int32_t left, std::int32_t top, std::uint32_t number,
                const YuvColor& ink) {
  std::array<char, 10> text;
  const char* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  for (const char* digit = text.data(); digit != end; ++digit, left += 4) {
    const std::uint32_t dots = kDigits[static_cast<std::size_t>(*digit - '0')];
    for (std::int32_t dot = 0; dot < 15; ++dot) {
      if (dots >> (14 - dot) & 1) canvas.fill(left + dot % 3, top + dot / 3, 1, 1, ink);
    }
  }
}

void drawCodeRow(LumoRTCI420Buffer& picture, const Code& code, std::int32_t row) {
  const std::int32_t top = edge(kCodeTop + row, picture.height());
  const std::int32_t bottom = edge(kCodeTop + row + 1, picture.height());
  if (top == bottom) return;
  std::uint8_t* const first = picture.mutableDataY() + top * picture.strideY();
  for (std::int32_t column = kCodeLeft; column <= kCodeRight; ++column) {
    const std::int32_t bit = column - kCodeLeft - 1;
    const bool isWhite = column == kCodeLeft ||
                         (column < kCodeRight && code[static_cast<std::size_t>(row * kBitsPerRow + bit)]);
    const std::int32_t left = edge(column, picture.width());
    std::memset(first + left, isWhite ? kWhite.y : kBlack.y,
                static_cast<std::size_t>(edge(column + 1, picture.width()) - left));
  }
  const std::int32_t left = edge(kCodeLeft, picture.width());
  const auto length = static_cast<std::size_t>(edge(kCodeRight + 1, picture.width()) - left);
  for (std::int32_t y = top + 1; y < bottom; ++y) {
    std::memcpy(picture.mutableDataY() + y * picture.strideY() + left, first + left, length);
  }
}

void drawCode(LumoRTCI420Buffer& picture, const TestPictureReading& reading) {
  Canvas(picture, kGrid).fill(kCodeLeft, kCodeTop, kBitsPerRow + 2, kCodeRows, kBlack);
  const Code code = encode(reading);
  for (std::int32_t row = 0; row < kCodeRows; ++row) drawCodeRow(picture, code, row);
}

/// Whether the middle of a cell is white: the mean of its inner half, which scaling has blurred least.
bool isWhiteCell(const LumoRTCI420Buffer& picture, std::int32_t column, std::int32_t row) {
  const std::int32_t left = edge(column * 4 + 1, picture.width(), kGrid * 4);
  const std::int32_t right = std::max(edge(column * 4 + 3, picture.width(), kGrid * 4), left + 1);
  const std::int32_t top = edge(row * 4 + 1, picture.height(), kGrid * 4);
  const std::int32_t bottom = std::max(edge(row * 4 + 3, picture.height(), kGrid * 4), top + 1);
  std::int64_t sum = 0;
  for (std::int32_t y = top; y < bottom; ++y) {
    const std::uint8_t* const line = picture.dataY() + y * picture.strideY();
    for (std::int32_t x = left; x < right; ++x) sum += line[x];
  }
  return sum > std::int64_t{kThreshold} * (right - left) * (bottom - top);
}

/// Numbers round to the nearest frame: capture times fall a little before or after the frame's own.
std::uint32_t frameNumberAt(Microseconds time, std::int32_t framesPerSecond) {
  constexpr std::int64_t kSecond = 1'000'000;
  return static_cast<std::uint32_t>(
      (std::max<std::int64_t>(time.count(), 0) * framesPerSecond + kSecond / 2) / kSecond);
}

}  // namespace

YuvColor testPictureColor(std::uint32_t sourceNumber) {
  return kBackgrounds[sourceNumber % kBackgrounds.size()];
}

TestPictureSource::TestPictureSource(std::uint32_t sourceNumber) : sourceNumber_(sourceNumber) {}

std::shared_ptr<const LumoRTCI420Buffer> TestPictureSource::frameAt(Microseconds time,
                                                                    const VideoFormat& format) {
  const std::uint32_t frameNumber = frameNumberAt(time, format.framesPerSecond);
  auto picture = pool_.take(format.width, format.height);
  const YuvColor background = testPictureColor(sourceNumber_);
  const YuvColor& ink = background.y > kThreshold ? kBlack : kWhite;
  Canvas(*picture, 1).fill(0, 0, 1, 1, background);
  drawNumber(Canvas(*picture, kGrid), 2, 2, sourceNumber_ % 10'000, ink);
  drawNumber(Canvas(*picture, kGrid * 2), 4, 17, frameNumber % 100'000'000, ink);
  const auto block = static_cast<std::int32_t>(frameNumber % 69);
  Canvas(*picture, kGrid * 4).fill(4 + block, 46, 4, 6, ink);
  drawCode(*picture, {sourceNumber_, frameNumber});
  return picture;
}

std::optional<TestPictureReading> readTestPicture(const LumoRTCI420Buffer& picture) {
  Code code;
  for (std::int32_t row = 0; row < kCodeRows; ++row) {
    const std::int32_t gridRow = kCodeTop + row;
    if (!isWhiteCell(picture, kCodeLeft, gridRow) || isWhiteCell(picture, kCodeRight, gridRow))
      return std::nullopt;
    for (std::int32_t bit = 0; bit < kBitsPerRow; ++bit) {
      code[static_cast<std::size_t>(row * kBitsPerRow + bit)] =
          isWhiteCell(picture, kCodeLeft + 1 + bit, gridRow);
    }
  }
  return decode(code);
}

}  // namespace lumo
