#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"

namespace lumo {

/// A new picture: `picture` turned clockwise by 90, 180 or 270 degrees; any other number copies it.
std::shared_ptr<LumoRTCI420Buffer> rotatedCopy(const LumoRTCI420Buffer& picture, std::int32_t rotation);

/// Turns pictures upright and converts them to BGRA in one go. The turned picture exists one tile at a time,
/// so that it is converted while it is still in the cache; the tile's memory is kept from picture to picture.
/// An unturned picture is converted where it lies. One thread at a time.
class UprightConverter {
 public:
  /// Writes the turned picture's height rows of 4 * width bytes each.
  /// @param rotation   degrees clockwise: 90, 180 or 270; any other number means none
  /// @param bgra       first byte of the destination
  /// @param bgraStride bytes from row to row, at least 4 * the turned width
  void convert(const LumoRTCI420Buffer& picture, std::int32_t rotation, std::uint8_t* bgra,
               std::int32_t bgraStride);

 private:
  LumoRTCI420Buffer& tileOf(std::int32_t width, std::int32_t height);

  std::shared_ptr<LumoRTCI420Buffer> tile_;
};

}  // namespace lumo
