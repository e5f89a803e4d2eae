#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/VideoSource.h"

namespace lumo {

/// The front and the back camera of a device behind one source; the front one is in use at first. The
/// positions may be read and set on any thread.
class CameraPair : public VideoSource {
 public:
  CameraPair(std::unique_ptr<VideoSource> front, std::unique_ptr<VideoSource> back);

  /// LMRTCDeviceCamera
  std::int64_t position() const { return position_; }
  /// From the next picture on; a number that is neither front nor back changes nothing.
  void setPosition(std::int64_t position);
  void switchPosition() { position_.fetch_xor(LMRTCDeviceCameraFront ^ LMRTCDeviceCameraBack); }

  std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds time, const VideoFormat& format) override;

 private:
  const std::unique_ptr<VideoSource> front_;
  const std::unique_ptr<VideoSource> back_;
  std::atomic<std::int64_t> position_{LMRTCDeviceCameraFront};
};

}  // namespace lumo
