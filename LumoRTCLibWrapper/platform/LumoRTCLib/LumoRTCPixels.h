#pragma once

#include <cstdint>

// The SDK's pixel routines. Pictures are I420 as LumoRTCI420Buffer describes it; strides are bytes from row
// to row. Any thread.

/// Copies a picture, turned clockwise.
/// @param width,height  pixels of the source; for 90 and 270 degrees the destination is `height` wide and
/// `width` high
/// @param rotation      90, 180 or 270 degrees; any other number copies upright
void LumoRTCI420Rotate(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                       std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                       std::uint8_t* dstY, std::int32_t dstStrideY, std::uint8_t* dstU,
                       std::int32_t dstStrideU, std::uint8_t* dstV, std::int32_t dstStrideV,
                       std::int32_t width, std::int32_t height, std::int32_t rotation);

/// Converts a picture to 32-bit pixels whose bytes in memory are blue, green, red, alpha (255): BT.601
/// limited range to full-range RGB. A pixel comes from its own Y, U and V samples alone, so that a picture
/// can be converted piece by piece.
void LumoRTCI420ToARGB(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                       std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                       std::uint8_t* dst, std::int32_t dstStride, std::int32_t width, std::int32_t height);

namespace lumo {

/// Whether a picture turned by that many degrees exchanges width and height.
constexpr bool swapsSides(std::int32_t rotation) { return rotation == 90 || rotation == 270; }

}  // namespace lumo
