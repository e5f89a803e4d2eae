#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/FfmpegHandles.h"
#include "LumoRTCLocal/media/StreamWriter.h"

/// The encoders behind StreamWriter. Private to the media layer: not installed.
namespace lumo::ffmpeg {

/// Takes an encoded packet, in the encoder's time base.
/// @return 0, or FFmpeg's error, which ends the encoding
class PacketSink {
 public:
  virtual ~PacketSink() = default;
  virtual int take(const AVCodecContext& encoder, AVPacket& packet) = 0;
};

/// FFmpeg's description of an error.
std::string errorText(int error);

/// Pictures to H.264, without delay. Operations return 0 or FFmpeg's error.
class PictureEncoder {
 public:
  /// @param globalHeader  whether the container keeps the codec's header
  int open(const StreamFormat& format, bool globalHeader);
  const AVCodecContext* codec() const { return codec_.get(); }

  /// From the next picture on.
  void setBitrate(std::int32_t kilobitsPerSecond) {
    codec_->bit_rate = std::int64_t{kilobitsPerSecond} * 1000;
  }
  /// @param picture  in the size of the format
  /// @param time     since the start of the stream; a time that is not later than the last one is skipped
  int encode(const std::shared_ptr<const LumoRTCI420Buffer>& picture, Microseconds time, PacketSink& sink);
  int flush(PacketSink& sink);

 private:
  CodecContext codec_;
  Frame frame_;
  Packet packet_;
  std::int64_t lastTime_ = -1;  // in the encoder's time base
};

/// Sound to AAC. Operations return 0 or FFmpeg's error.
class SoundEncoder {
 public:
  int open(const StreamFormat& format, bool globalHeader);
  const AVCodecContext* codec() const { return codec_.get(); }

  /// @param start  of the block, since the start of the stream; a gap before it is kept
  int encode(const AudioBlock& block, Microseconds start, PacketSink& sink);
  int flush(PacketSink& sink);

 private:
  int encodeFrame(std::size_t samples, PacketSink& sink);

  CodecContext codec_;
  Frame frame_;
  Packet packet_;
  std::vector<std::int16_t> waiting_;  // interleaved, less than a frame between calls
  std::int64_t position_ = 0;          // of the first waiting sample
};

}  // namespace lumo::ffmpeg
