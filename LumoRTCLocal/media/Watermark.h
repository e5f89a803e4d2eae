#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"

namespace lumo {

/// An image that is drawn over captured pictures. It stands upright, and at the same place, in the picture as
/// its viewers see it, however that is turned or mirrored on its way to them. The image is fitted once for
/// each size and rotation; drawing it again allocates nothing. One thread at a time.
class Watermark {
 public:
  /// The largest width and height of an image, in pixels.
  static constexpr std::int32_t kLargestSide = 16384;

  /// Copies the image.
  /// @param position  x, y: the image's top left corner, each 0 to 1, as fractions of the upright picture's
  ///                  width and height; width: that of the image, above 0 up to 1, as a fraction of the
  ///                  upright picture's width. The image keeps its proportions; what stands out is cut off.
  /// @return null for values out of range, and for an image without pixels, with too many of them, or with
  ///         data of another size
  static std::shared_ptr<Watermark> create(const UIImage& image, const UIRect& position);

  /// @param picture   drawn into in place when nobody else holds it, and copied before otherwise
  /// @param rotation  degrees clockwise that turn the picture upright: 0, 90, 180 or 270
  /// @param mirrored  whether viewers see the upright picture with left and right exchanged
  std::shared_ptr<const LumoRTCI420Buffer> draw(std::shared_ptr<const LumoRTCI420Buffer> picture,
                                                std::int32_t rotation, bool mirrored, FramePool& pool);

 private:
  /// 32-bit pixels: blue, green, red, alpha; premultiplied, rows without padding.
  struct Pixels {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> bgra;
  };
  /// The image as it is laid over pictures of one size and rotation.
  struct Overlay {
    std::int32_t pictureWidth = 0;
    std::int32_t pictureHeight = 0;
    std::int32_t rotation = 0;
    PixelRect place;  ///< in the captured picture, even; empty shows nothing
    std::shared_ptr<LumoRTCI420Buffer> colors;
    std::vector<std::uint8_t> alpha;        ///< for the Y plane, rows without padding
    std::vector<std::uint8_t> chromaAlpha;  ///< for U and V
  };

  Watermark(const UIImage& image, const UIRect& position);
  void fit(Overlay& overlay, bool mirrored) const;
  PixelRect uprightPlace(std::int32_t width, std::int32_t height, PixelRect& imagePart) const;
  static Pixels scaled(const Pixels& image, const PixelRect& part, std::int32_t width, std::int32_t height);
  static Pixels turned(const Pixels& image, std::int32_t degrees);
  static void split(Pixels image, Overlay& overlay);

  const UIRect position_;
  Pixels image_;
  std::array<Overlay, 2> overlays_;  ///< for viewers who see the picture as it is, and mirrored
};

}  // namespace lumo
