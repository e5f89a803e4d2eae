#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>

/// Owners of FFmpeg's objects. Private to the media layer: not installed.
namespace lumo::ffmpeg {

template <auto kFree>
struct FreeByAddress {
  template <typename T>
  void operator()(T* object) const {
    kFree(&object);
  }
};

struct FreeSwsContext {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

using FormatContext = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using CodecContext = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using BufferPool = std::unique_ptr<AVBufferPool, FreeByAddress<av_buffer_pool_uninit>>;
using Resampler = std::unique_ptr<SwrContext, FreeByAddress<swr_free>>;
using Scaler = std::unique_ptr<SwsContext, FreeSwsContext>;

}  // namespace lumo::ffmpeg
