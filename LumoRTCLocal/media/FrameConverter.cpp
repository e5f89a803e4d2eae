#include "LumoRTCLocal/media/FrameConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <array>
#include <cmath>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Picture.h"

namespace lumo::ffmpeg {
namespace {

constexpr int kAlignment = 64;  // what the vector code of the scaler likes
constexpr std::int32_t kLargestSide = 16384;

/// Files that do not say which matrix they use follow the custom: BT.709 for high definition.
int colorMatrix(const AVFrame& frame) {
  if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB) return frame.colorspace;
  return frame.height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

bool isBt601(int matrix) { return matrix == AVCOL_SPC_SMPTE170M || matrix == AVCOL_SPC_BT470BG; }

bool isFullRange(const AVFrame& frame) {
  return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P ||
         frame.format == AV_PIX_FMT_YUVJ422P || frame.format == AV_PIX_FMT_YUVJ444P;
}

/// The scaler decides by the formats alone whether there is anything to convert.
AVPixelFormat formatWithRange(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  return format == AV_PIX_FMT_YUV420P && isFullRange(frame) ? AV_PIX_FMT_YUVJ420P : format;
}

bool isReady(const AVFrame& frame) {
  return frame.format == AV_PIX_FMT_YUV420P && !isFullRange(frame) && isBt601(colorMatrix(frame)) &&
         frame.linesize[0] > 0 && frame.linesize[1] > 0 && frame.linesize[2] > 0;
}

/// A buffer over the frame's own planes.
std::shared_ptr<const LumoRTCI420Buffer> lend(const AVFrame& frame) {
  const std::shared_ptr<AVFrame> owner(av_frame_clone(&frame), FreeByAddress<av_frame_free>());
  if (!owner) return nullptr;
  return LumoRTCI420Buffer::wrap(owner->width, owner->height, owner->data[0], owner->linesize[0],
                                 owner->data[1], owner->linesize[1], owner->data[2], owner->linesize[2],
                                 owner);
}

/// The width that shows the picture in its right proportions with square pixels.
std::int32_t displayWidth(const AVFrame& frame) {
  const AVRational aspect = frame.sample_aspect_ratio;
  if (aspect.num <= 0 || aspect.den <= 0) return frame.width;
  const double width = std::round(frame.width * av_q2d(aspect));
  return static_cast<std::int32_t>(std::clamp(width, 1.0, double{kLargestSide}));
}

}  // namespace

std::shared_ptr<const LumoRTCI420Buffer> PictureConverter::convert(const AVFrame& frame) {
  if (frame.width < 1 || frame.height < 1 || frame.width > kLargestSide || frame.height > kLargestSide) {
    return nullptr;
  }
  const auto picture = isReady(frame) ? lend(frame) : toI420(frame);
  if (!picture) return nullptr;
  return rotated(scaled(picture, displayWidth(frame), frame.height, pool_), rotation_, pool_);
}

bool PictureConverter::prepare(const AVFrame& frame) {
  const Source source{frame.width, frame.height, frame.format, colorMatrix(frame), isFullRange(frame)};
  if (source == source_) return scaler_ != nullptr;
  source_ = source;
  scaler_.reset(sws_getContext(source.width, source.height, formatWithRange(frame), source.width,
                               source.height, AV_PIX_FMT_YUV420P, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr,
                               nullptr, nullptr));
  if (!scaler_) return false;
  constexpr int kUnchanged = 1 << 16;  // contrast and saturation are fixed-point numbers
  sws_setColorspaceDetails(scaler_.get(), sws_getCoefficients(source.matrix), source.isFullRange ? 1 : 0,
                           sws_getCoefficients(SWS_CS_ITU601), 0, 0, kUnchanged, kUnchanged);
  return true;
}

std::shared_ptr<const LumoRTCI420Buffer> PictureConverter::toI420(const AVFrame& frame) {
  if (!prepare(frame)) return nullptr;
  auto picture = takeAligned(frame.width, frame.height);
  if (!picture) return nullptr;
  std::uint8_t* const planes[] = {picture->mutableDataY(), picture->mutableDataU(), picture->mutableDataV(),
                                  nullptr};
  const int strides[] = {picture->strideY(), picture->strideU(), picture->strideV(), 0};
  const int rows = sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, planes, strides);
  return rows == frame.height ? picture : nullptr;
}

std::shared_ptr<LumoRTCI420Buffer> PictureConverter::takeAligned(std::int32_t width, std::int32_t height) {
  if (!aligned_ || width != alignedWidth_ || height != alignedHeight_) {
    const int size = av_image_get_buffer_size(AV_PIX_FMT_YUV420P, width, height, kAlignment);
    aligned_.reset(av_buffer_pool_init(static_cast<std::size_t>(size) + kAlignment, nullptr));
    alignedWidth_ = width;
    alignedHeight_ = height;
  }
  const std::shared_ptr<AVBufferRef> memory(av_buffer_pool_get(aligned_.get()),
                                            FreeByAddress<av_buffer_unref>());
  if (!memory) return nullptr;
  std::array<std::uint8_t*, 4> planes{};
  std::array<int, 4> strides{};
  av_image_fill_arrays(planes.data(), strides.data(), memory->data, AV_PIX_FMT_YUV420P, width, height,
                       kAlignment);
  return LumoRTCI420Buffer::wrap(width, height, planes[0], strides[0], planes[1], strides[1], planes[2],
                                 strides[2], memory);
}

bool SoundConverter::convert(const AVFrame* frame, std::vector<std::int16_t>& samples) {
  if (frame ? !prepare(*frame) : !resampler_) return !frame;
  const int capacity = swr_get_out_samples(resampler_.get(), frame ? frame->nb_samples : 0);
  if (capacity < 0) return false;
  const std::size_t before = samples.size();
  samples.resize(before + static_cast<std::size_t>(capacity) * AudioBlock::kChannels);
  auto* output = reinterpret_cast<std::uint8_t*>(samples.data() + before);
  const int count = swr_convert(resampler_.get(), &output, capacity,
                                frame ? const_cast<const std::uint8_t**>(frame->extended_data) : nullptr,
                                frame ? frame->nb_samples : 0);
  samples.resize(before + static_cast<std::size_t>(std::max(count, 0)) * AudioBlock::kChannels);
  return count >= 0;
}

std::int64_t SoundConverter::delay() const {
  return resampler_ ? swr_get_delay(resampler_.get(), AudioBlock::kSampleRate) : 0;
}

bool SoundConverter::prepare(const AVFrame& frame) {
  AVChannelLayout layout = frame.ch_layout;
  if (layout.order != AV_CHANNEL_ORDER_NATIVE)
    av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
  if (resampler_ && frame.sample_rate == sampleRate_ && frame.format == format_ &&
      av_channel_layout_compare(&layout, &layout_) == 0) {
    return true;
  }
  AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
  SwrContext* resampler = nullptr;
  swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_S16, AudioBlock::kSampleRate, &layout,
                      static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  resampler_.reset(resampler);
  constexpr double kBothSides[] = {1, 1};  // a single channel keeps its level
  if (resampler_ && layout.nb_channels == 1) swr_set_matrix(resampler_.get(), kBothSides, 1);
  if (!resampler_ || swr_init(resampler_.get()) < 0) {
    resampler_.reset();
    return false;
  }
  layout_ = layout;
  sampleRate_ = frame.sample_rate;
  format_ = frame.format;
  return true;
}

}  // namespace lumo::ffmpeg
