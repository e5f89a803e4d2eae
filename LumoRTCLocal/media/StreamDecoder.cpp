#include "LumoRTCLocal/media/StreamDecoder.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <utility>

namespace lumo::ffmpeg {
namespace {

constexpr AVRational kMicroseconds{1, 1'000'000};
/// As far as times go that a file claims, so that they can be added.
constexpr std::int64_t kFarthest = std::int64_t{1} << 60;

/// How long the frame lasts, as far as it or the stream says.
Microseconds durationOf(const AVFrame& frame, const AVStream& stream) {
  if (frame.nb_samples > 0 && frame.sample_rate > 0) {
    return Microseconds(av_rescale(frame.nb_samples, 1'000'000, frame.sample_rate));
  }
  if (frame.pkt_duration > 0)
    return Microseconds(std::clamp(av_rescale_q(frame.pkt_duration, stream.time_base, kMicroseconds),
                                   std::int64_t{0}, kFarthest));
  if (stream.avg_frame_rate.num <= 0) return Microseconds(40'000);
  return Microseconds(av_rescale_q(1, av_inv_q(stream.avg_frame_rate), kMicroseconds));
}

}  // namespace

std::optional<StreamDecoder> StreamDecoder::open(const AVStream& stream, std::int64_t fileStart) {
  const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
  CodecContext context(codec ? avcodec_alloc_context3(codec) : nullptr);
  if (!context || avcodec_parameters_to_context(context.get(), stream.codecpar) < 0) return std::nullopt;
  context->pkt_timebase = stream.time_base;
  context->thread_count = 1;  // whoever reads many files at once has enough threads
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return std::nullopt;
  return StreamDecoder(stream, fileStart, std::move(context));
}

StreamDecoder::StreamDecoder(const AVStream& stream, std::int64_t fileStart, CodecContext codec)
    : stream_(&stream), fileStart_(fileStart), codec_(std::move(codec)), frame_(av_frame_alloc()) {}

void StreamDecoder::add(Packet packet) {
  const std::int64_t time = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts;
  if (time != AV_NOPTS_VALUE)
    packetsEnd_ = std::max(packetsEnd_, sinceStart(av_sat_add64(time, packet->duration)));
  packets_.push_back(std::move(packet));
}

std::optional<Microseconds> StreamDecoder::announcedLength() const {
  if (stream_->duration <= 0) return std::nullopt;  // AV_NOPTS_VALUE is below 0
  const std::int64_t start = stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time;
  return sinceStart(av_sat_add64(start, stream_->duration));
}

void StreamDecoder::flush() {
  avcodec_flush_buffers(codec_.get());
  packets_.clear();
  ended_ = false;
  unread_ = false;
}

StreamDecoder::Result StreamDecoder::decode() {
  if (std::exchange(unread_, false)) return Result::frame;
  while (true) {
    const int code = avcodec_receive_frame(codec_.get(), frame_.get());
    if (code == 0) {
      setTimestamp();
      return Result::frame;
    }
    if (code == AVERROR_EOF) return Result::ended;
    if (code != AVERROR(EAGAIN)) damaged_ = true;
    if (packets_.empty() && !ended_) return Result::needsPacket;
    send();
  }
}

void StreamDecoder::takeFrame(AVFrame& target) {
  av_frame_unref(&target);
  av_frame_move_ref(&target, frame_.get());
}

void StreamDecoder::send() {
  Packet packet;  // none: the end
  if (!packets_.empty()) {
    packet = std::move(packets_.front());
    packets_.pop_front();
    if (packet->flags & AV_PKT_FLAG_CORRUPT) damaged_ = true;
  }
  const int code = avcodec_send_packet(codec_.get(), packet.get());
  if (code < 0 && code != AVERROR_EOF) damaged_ = true;
}

void StreamDecoder::setTimestamp() {
  timestamp_ = expected_;
  if (frame_->best_effort_timestamp != AV_NOPTS_VALUE) {
    timestamp_ = std::max(sinceStart(frame_->best_effort_timestamp), Microseconds(0));
  }
  expected_ = timestamp_ + durationOf(*frame_, *stream_);
  if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT)) damaged_ = true;
}

Microseconds StreamDecoder::sinceStart(std::int64_t time) const {
  const std::int64_t microseconds = av_rescale_q(time, stream_->time_base, kMicroseconds);
  return Microseconds(std::clamp(av_sat_sub64(microseconds, fileStart_), -kFarthest, kFarthest));
}

}  // namespace lumo::ffmpeg
