#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/VideoSource.h"
#include "LumoRTCLocal/media/YuvColor.h"

namespace lumo {

/// The background of the test picture of one source. Numbers that differ modulo 12 differ in colour.
YuvColor testPictureColor(std::uint32_t sourceNumber);

/// Draws a picture that says who sent it and which frame it is: the background has the source's colour, large
/// digits show the source number and small ones below the frame number, a block moves a little to the
/// right with each frame, and a bar code at the bottom carries both numbers. The outermost twentieth of the
/// picture on each side shows the background only.
///
/// The bar code lies on a grid of 20 x 20 cells over the picture, in the columns 1 to 18 and the rows 14
/// to 18. Its first column is white and its last black, which tells a mirrored picture; between them stand,
/// most significant bit first, 32 bits of source number, 32 bits of frame number and 16 bits of checksum, a
/// white cell for each 1.
class TestPictureSource : public VideoSource {
 public:
  explicit TestPictureSource(std::uint32_t sourceNumber);

  /// Frame number n is the one nearest to n / framesPerSecond seconds. Always gives a picture, which is
  /// readable from about 40 x 40 pixels upwards.
  std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds time, const VideoFormat& format) override;

 private:
  const std::uint32_t sourceNumber_;
  FramePool pool_;
};

struct TestPictureReading {
  std::uint32_t sourceNumber = 0;
  std::uint32_t frameNumber = 0;

  bool operator==(const TestPictureReading&) const = default;
};

/// Reads the bar code of a test picture, whole but in any size and proportion.
/// @return nothing when the picture is none, or is mirrored, turned or too small
std::optional<TestPictureReading> readTestPicture(const LumoRTCI420Buffer& picture);

}  // namespace lumo
