#include "LumoRTCLocal/media/StreamEncoder.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/opt.h>
}

namespace lumo::ffmpeg {
namespace {

constexpr int kPictureTicks = 1000;            // per second
constexpr int kSecondsBetweenKeyPictures = 2;  // a receiver can start at each
constexpr std::int64_t kLongestJitter = 1920;  // samples, 40 ms; more is a gap

constexpr int kQuieter = AV_LOG_INFO - AV_LOG_WARNING;  // encoders tell their settings and statistics

using Holder = std::shared_ptr<const LumoRTCI420Buffer>;

void releasePicture(void* holder, std::uint8_t*) { delete static_cast<Holder*>(holder); }

/// Lends the picture's planes to `frame`.
int lend(const Holder& picture, AVFrame& frame) {
  auto holder = std::make_unique<Holder>(picture);
  auto* const bytes = const_cast<std::uint8_t*>(picture->dataY());
  const auto size =
      static_cast<std::size_t>(picture->strideY()) * static_cast<std::size_t>(picture->height());
  frame.buf[0] = av_buffer_create(bytes, size, releasePicture, holder.get(), AV_BUFFER_FLAG_READONLY);
  if (!frame.buf[0]) return AVERROR(ENOMEM);
  static_cast<void>(holder.release());  // the buffer has it now
  frame.format = AV_PIX_FMT_YUV420P;
  frame.width = picture->width();
  frame.height = picture->height();
  frame.data[0] = bytes;
  frame.data[1] = const_cast<std::uint8_t*>(picture->dataU());
  frame.data[2] = const_cast<std::uint8_t*>(picture->dataV());
  frame.linesize[0] = picture->strideY();
  frame.linesize[1] = picture->strideU();
  frame.linesize[2] = picture->strideV();
  return 0;
}

/// Encodes `frame`, or, when it is null, what is still inside.
int encodeTo(AVCodecContext& codec, const AVFrame* frame, AVPacket& packet, PacketSink& sink) {
  int error = avcodec_send_frame(&codec, frame);
  while (error == 0) {
    error = avcodec_receive_packet(&codec, &packet);
    if (error == 0) error = sink.take(codec, packet);
    av_packet_unref(&packet);
  }
  return error == AVERROR(EAGAIN) || error == AVERROR_EOF ? 0 : error;
}

const AVCodec* pictureCodec() {
  const AVCodec* const preferred = avcodec_find_encoder_by_name("libx264");
  return preferred ? preferred : avcodec_find_encoder(AV_CODEC_ID_H264);
}

}  // namespace

std::string errorText(int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(error, text, sizeof(text));
  return text;
}

int PictureEncoder::open(const StreamFormat& format, bool globalHeader) {
  const AVCodec* const codec = pictureCodec();
  if (!codec) return AVERROR_ENCODER_NOT_FOUND;
  codec_.reset(avcodec_alloc_context3(codec));
  frame_.reset(av_frame_alloc());
  packet_.reset(av_packet_alloc());
  if (!codec_ || !frame_ || !packet_) return AVERROR(ENOMEM);
  codec_->width = format.width;
  codec_->height = format.height;
  codec_->pix_fmt = AV_PIX_FMT_YUV420P;
  codec_->color_range = AVCOL_RANGE_MPEG;
  codec_->colorspace = AVCOL_SPC_SMPTE170M;
  codec_->time_base = {1, kPictureTicks};
  codec_->framerate = {format.framesPerSecond, 1};
  codec_->gop_size = kSecondsBetweenKeyPictures * format.framesPerSecond;
  codec_->max_b_frames = 0;
  codec_->thread_count = 1;
  codec_->log_level_offset = kQuieter;
  setBitrate(format.videoBitrate);
  if (globalHeader) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  // Both are options of libx264; other encoders do without.
  av_opt_set(codec_->priv_data, "preset", "superfast", 0);
  av_opt_set(codec_->priv_data, "tune", "zerolatency", 0);
  return avcodec_open2(codec_.get(), codec, nullptr);
}

int PictureEncoder::encode(const std::shared_ptr<const LumoRTCI420Buffer>& picture, Microseconds time,
                           PacketSink& sink) {
  const std::int64_t ticks = av_rescale(time.count(), kPictureTicks, AV_TIME_BASE);
  if (ticks <= lastTime_) return 0;
  lastTime_ = ticks;
  if (const int error = lend(picture, *frame_)) return error;
  frame_->pts = ticks;
  const int error = encodeTo(*codec_, frame_.get(), *packet_, sink);
  av_frame_unref(frame_.get());
  return error;
}

int PictureEncoder::flush(PacketSink& sink) { return encodeTo(*codec_, nullptr, *packet_, sink); }

int SoundEncoder::open(const StreamFormat& format, bool globalHeader) {
  const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
  if (!codec) return AVERROR_ENCODER_NOT_FOUND;
  codec_.reset(avcodec_alloc_context3(codec));
  frame_.reset(av_frame_alloc());
  packet_.reset(av_packet_alloc());
  if (!codec_ || !frame_ || !packet_) return AVERROR(ENOMEM);
  codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec_->sample_rate = AudioBlock::kSampleRate;
  codec_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
  codec_->bit_rate = std::int64_t{format.audioBitrate} * 1000;
  codec_->time_base = {1, AudioBlock::kSampleRate};
  codec_->log_level_offset = kQuieter;
  if (globalHeader) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (const int error = avcodec_open2(codec_.get(), codec, nullptr)) return error;
  frame_->format = AV_SAMPLE_FMT_FLTP;
  frame_->sample_rate = AudioBlock::kSampleRate;
  frame_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
  frame_->nb_samples = codec_->frame_size;
  return av_frame_get_buffer(frame_.get(), 0);
}

int SoundEncoder::encode(const AudioBlock& block, Microseconds start, PacketSink& sink) {
  const std::int64_t place = av_rescale(start.count(), AudioBlock::kSampleRate, AV_TIME_BASE);
  const std::int64_t expected = position_ + std::ssize(waiting_) / AudioBlock::kChannels;
  if (place - expected > kLongestJitter) position_ += place - expected;
  waiting_.insert(waiting_.end(), block.samples.begin(), block.samples.end());
  const auto frameSize = static_cast<std::size_t>(codec_->frame_size);
  while (waiting_.size() >= frameSize * AudioBlock::kChannels) {
    if (const int error = encodeFrame(frameSize, sink)) return error;
  }
  return 0;
}

int SoundEncoder::flush(PacketSink& sink) {
  const std::size_t rest = waiting_.size() / AudioBlock::kChannels;
  if (rest > 0) {
    if (const int error = encodeFrame(rest, sink)) return error;
  }
  return encodeTo(*codec_, nullptr, *packet_, sink);
}

int SoundEncoder::encodeFrame(std::size_t samples, PacketSink& sink) {
  if (const int error = av_frame_make_writable(frame_.get())) return error;
  for (std::size_t channel = 0; channel < AudioBlock::kChannels; ++channel) {
    auto* const plane = reinterpret_cast<float*>(frame_->extended_data[channel]);
    for (std::size_t i = 0; i < samples; ++i) {
      plane[i] = static_cast<float>(waiting_[i * AudioBlock::kChannels + channel]) / 32768.0F;
    }
  }
  frame_->nb_samples = static_cast<int>(samples);
  frame_->pts = position_;
  position_ += static_cast<std::int64_t>(samples);
  const auto used = static_cast<std::ptrdiff_t>(samples * AudioBlock::kChannels);
  waiting_.erase(waiting_.begin(), waiting_.begin() + used);
  return encodeTo(*codec_, frame_.get(), *packet_, sink);
}

}  // namespace lumo::ffmpeg
