#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/VideoFormat.h"

namespace lumo {

/// Fits pictures into the asked-for size in their own proportions, between black bars, each one once. One
/// thread at a time.
class PictureFitter {
 public:
  /// @return null for null; the same buffer as before when picture and size are still the same
  std::shared_ptr<const LumoRTCI420Buffer> fit(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                                               const VideoFormat& format) {
    if (!picture) return nullptr;
    const bool isSameSize = fitted_ && fitted_->width() == format.width && fitted_->height() == format.height;
    if (picture != original_ || !isSameSize) {
      fitted_ = letterboxed(picture, format.width, format.height, pool_);
      original_ = picture;
    }
    return fitted_;
  }

 private:
  FramePool pool_;
  std::shared_ptr<const LumoRTCI420Buffer> original_;
  std::shared_ptr<const LumoRTCI420Buffer> fitted_;
};

}  // namespace lumo
