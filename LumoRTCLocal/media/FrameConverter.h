#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/FfmpegHandles.h"
#include "LumoRTCLocal/media/FramePool.h"

/// From decoded frames to what the rest of the media layer works with. Private to the media layer: not
/// installed.
namespace lumo::ffmpeg {

/// Turns decoded pictures into I420 of BT.601 and limited range, upright and with square pixels. A picture
/// that is that already is lent, not copied.
class PictureConverter {
 public:
  /// @param degrees  clockwise, to turn the pictures upright: 0, 90, 180 or 270
  void setRotation(std::int32_t degrees) { rotation_ = degrees; }

  /// @return null when the frame is of a kind that cannot be converted
  std::shared_ptr<const LumoRTCI420Buffer> convert(const AVFrame& frame);

 private:
  /// What pictures are converted from.
  struct Source {
    int width = 0;
    int height = 0;
    int format = -1;
    int matrix = 0;
    bool isFullRange = false;
    bool operator==(const Source&) const = default;
  };

  bool prepare(const AVFrame& frame);
  std::shared_ptr<const LumoRTCI420Buffer> toI420(const AVFrame& frame);
  std::shared_ptr<LumoRTCI420Buffer> takeAligned(std::int32_t width, std::int32_t height);

  std::int32_t rotation_ = 0;
  Scaler scaler_;  // for `source_`
  Source source_;
  BufferPool aligned_;  // its buffers suit `alignedWidth_` x `alignedHeight_`
  std::int32_t alignedWidth_ = 0;
  std::int32_t alignedHeight_ = 0;
  FramePool pool_;
};

/// Turns decoded sound into 48 kHz stereo.
class SoundConverter {
 public:
  /// Appends the sound of `frame` to `samples`.
  /// @param frame  null gives what is still inside, at the end of the sound
  /// @return false when the frame cannot be converted
  bool convert(const AVFrame* frame, std::vector<std::int16_t>& samples);

  /// How much sound is inside, in samples per channel at 48 kHz.
  std::int64_t delay() const;

  void reset() { resampler_.reset(); }

 private:
  bool prepare(const AVFrame& frame);

  Resampler resampler_;
  AVChannelLayout layout_{};  // of a native order, so that nothing in it is owned
  int sampleRate_ = 0;
  int format_ = AV_SAMPLE_FMT_NONE;
};

}  // namespace lumo::ffmpeg
