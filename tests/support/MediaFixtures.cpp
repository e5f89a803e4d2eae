#include "tests/support/MediaFixtures.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <utility>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/FfmpegHandles.h"

namespace lumo {

void PrintTo(const YuvColor& color, std::ostream* out) {
  *out << +color.y << "," << +color.u << "," << +color.v;
}

namespace test {
namespace {

constexpr std::int32_t kClipWidth = 64;
constexpr std::int32_t kClipHeight = 48;

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string("cannot make a clip: ") + what);
}

/// Interleaved samples to encode.
struct Sound {
  AVCodecID codec = AV_CODEC_ID_NONE;
  int sampleRate = AudioBlock::kSampleRate;
  int channels = AudioBlock::kChannels;
  std::vector<std::int16_t> samples{};

  void add(const Tone& tone, double amplitude) {
    for (int i = 0; i < static_cast<int>(tone.seconds * sampleRate); ++i) {
      const double wave = std::sin(2 * std::numbers::pi * tone.frequencyHz * i / sampleRate);
      samples.insert(samples.end(), static_cast<std::size_t>(channels),
                     static_cast<std::int16_t>(std::lround(32768 * amplitude * wave)));
    }
  }
};

/// A media file to write, in the container of its extension.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path) {
    AVFormatContext* format = nullptr;
    avformat_alloc_output_context2(&format, nullptr, nullptr, path.c_str());
    format_.reset(format);
    require(format && avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, "open");
  }

  AVCodecID soundCodec() const { return format_->oformat->audio_codec; }

  void write(const Clip& clip, const Sound& sound) {
    if (clip.pictures > 0) openPictures(clip);
    if (!sound.samples.empty()) openSound(sound);
    require(avformat_write_header(format_.get(), nullptr) >= 0, "header");
    for (std::int32_t number = 0; number < clip.pictures; ++number) encodePicture(number);
    if (pictures_) encode(*pictures_, 0, nullptr);
    if (sound_) encodeSound(sound.samples.data(), static_cast<int>(sound.samples.size()) / sound.channels);
    require(av_write_trailer(format_.get()) == 0, "end");
    avio_closep(&format_->pb);
  }

 private:
  ffmpeg::CodecContext makeEncoder(const AVCodec* codec, int ticksPerSecond) const {
    require(codec, "codec");
    ffmpeg::CodecContext encoder(avcodec_alloc_context3(codec));
    encoder->time_base = {1, ticksPerSecond};
    if (format_->oformat->flags & AVFMT_GLOBALHEADER) encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return encoder;
  }
  AVStream& addStream(AVCodecContext& encoder) const {
    require(avcodec_open2(&encoder, nullptr, nullptr) == 0, "encoder");
    AVStream* const stream = avformat_new_stream(format_.get(), nullptr);
    avcodec_parameters_from_context(stream->codecpar, &encoder);
    stream->time_base = encoder.time_base;
    return *stream;
  }

  void openPictures(const Clip& clip) {
    const bool isJpeg = format_->oformat->name == std::string("mjpeg");
    pictures_ = makeEncoder(avcodec_find_encoder(isJpeg ? AV_CODEC_ID_MJPEG : AV_CODEC_ID_FFV1),
                            clip.framesPerSecond);
    pictures_->width = kClipWidth;
    pictures_->height = kClipHeight;
    pictures_->pix_fmt = isJpeg ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
    AVStream& stream = addStream(*pictures_);
    stream.avg_frame_rate = {clip.framesPerSecond, 1};
    if (clip.rotation == 0) return;
    auto* const matrix =
        av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    av_display_rotation_set(reinterpret_cast<std::int32_t*>(matrix), -clip.rotation);
  }
  void openSound(const Sound& sound) {
    const AVCodec* const codec = avcodec_find_encoder(sound.codec);
    sound_ = makeEncoder(codec, sound.sampleRate);
    sound_->sample_fmt = codec->sample_fmts[0];
    sound_->sample_rate = sound.sampleRate;
    sound_->bit_rate = 192'000;
    av_channel_layout_default(&sound_->ch_layout, sound.channels);
    addStream(*sound_);
  }

  void encodePicture(std::int32_t number) {
    const auto picture = solid(kClipWidth, kClipHeight, clipColor(number));
    const ffmpeg::Frame frame(av_frame_alloc());
    frame->format = pictures_->pix_fmt;
    frame->width = kClipWidth;
    frame->height = kClipHeight;
    frame->pts = number;
    frame->data[0] = picture->mutableDataY();
    frame->data[1] = picture->mutableDataU();
    frame->data[2] = picture->mutableDataV();
    frame->linesize[0] = picture->strideY();
    frame->linesize[1] = frame->linesize[2] = picture->strideU();
    encode(*pictures_, 0, frame.get());
  }
  void encodeSound(const std::int16_t* samples, int total) {
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &sound_->ch_layout, sound_->sample_fmt, sound_->sample_rate,
                        &sound_->ch_layout, AV_SAMPLE_FMT_S16, sound_->sample_rate, 0, nullptr);
    const ffmpeg::Resampler converter(context);
    require(swr_init(context) == 0, "converter");
    const int step = sound_->frame_size > 0 ? sound_->frame_size : sound_->sample_rate / 100;
    for (int start = 0; start < total; start += step) {
      const ffmpeg::Frame frame(av_frame_alloc());
      frame->format = sound_->sample_fmt;
      frame->nb_samples = std::min(step, total - start);
      frame->sample_rate = sound_->sample_rate;
      av_channel_layout_copy(&frame->ch_layout, &sound_->ch_layout);
      require(av_frame_get_buffer(frame.get(), 0) == 0, "memory");
      const auto* from =
          reinterpret_cast<const std::uint8_t*>(samples + start * sound_->ch_layout.nb_channels);
      swr_convert(context, frame->extended_data, frame->nb_samples, &from, frame->nb_samples);
      frame->pts = start;
      encode(*sound_, pictures_ ? 1 : 0, frame.get());
    }
    encode(*sound_, pictures_ ? 1 : 0, nullptr);
  }
  /// Encodes one frame, or what is left, and writes what comes out.
  void encode(AVCodecContext& encoder, int stream, const AVFrame* frame) {
    require(avcodec_send_frame(&encoder, frame) == 0, "encode");
    const ffmpeg::Packet packet(av_packet_alloc());
    while (avcodec_receive_packet(&encoder, packet.get()) == 0) {
      packet->stream_index = stream;
      av_packet_rescale_ts(packet.get(), encoder.time_base, format_->streams[stream]->time_base);
      require(av_interleaved_write_frame(format_.get(), packet.get()) == 0, "write");
    }
  }

  std::unique_ptr<AVFormatContext, decltype(&avformat_free_context)> format_{nullptr, avformat_free_context};
  ffmpeg::CodecContext pictures_;
  ffmpeg::CodecContext sound_;
};

}  // namespace

TempFolder::TempFolder() {
  std::string name = testing::TempDir() + "lumo-media-XXXXXX";
  if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a folder in " + testing::TempDir());
  folder_ = name;
}

TempFolder::~TempFolder() { std::filesystem::remove_all(folder_); }

std::string TempFolder::write(const std::string& name, const std::string& contents) const {
  std::ofstream(path(name), std::ios::binary) << contents;
  return path(name);
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

YuvColor clipColor(std::int32_t picture) { return {static_cast<std::uint8_t>(40 + 5 * picture), 90, 200}; }

std::string writeClip(const TempFolder& folder, const std::string& name, const Clip& clip) {
  Sound sound{.codec = AV_CODEC_ID_PCM_S16LE, .sampleRate = 44100, .channels = 1};
  if (clip.toneHz > 0) sound.add({clip.toneHz, clip.toneSeconds}, 0.5);
  OutputFile(folder.path(name)).write(clip, sound);
  return folder.path(name);
}

std::string writeTones(const TempFolder& folder, const std::string& name, const std::vector<Tone>& tones) {
  OutputFile file(folder.path(name));
  Sound sound{.codec = file.soundCodec()};
  for (const Tone& tone : tones) sound.add(tone, 0.25);
  file.write({.pictures = 0}, sound);
  return folder.path(name);
}

std::shared_ptr<LumoRTCI420Buffer> solid(std::int32_t width, std::int32_t height, const YuvColor& color) {
  auto picture = LumoRTCI420Buffer::create(width, height);
  const auto chromaSize = static_cast<std::size_t>(picture->chromaWidth() * picture->chromaHeight());
  std::memset(picture->mutableDataY(), color.y, static_cast<std::size_t>(width * height));
  std::memset(picture->mutableDataU(), color.u, chromaSize);
  std::memset(picture->mutableDataV(), color.v, chromaSize);
  return picture;
}

YuvColor colorAt(const LumoRTCI420Buffer& picture, std::int32_t x, std::int32_t y) {
  return {picture.dataY()[y * picture.strideY() + x], picture.dataU()[y / 2 * picture.strideU() + x / 2],
          picture.dataV()[y / 2 * picture.strideV() + x / 2]};
}

double toneLevel(std::span<const std::int16_t> samples, double frequencyHz) {
  // Goertzel's algorithm.
  const double coefficient = 2 * std::cos(2 * std::numbers::pi * frequencyHz / AudioBlock::kSampleRate);
  double last = 0;
  double beforeLast = 0;
  for (std::size_t i = 0; i < samples.size(); i += AudioBlock::kChannels) {
    beforeLast = std::exchange(last, samples[i] + coefficient * last - beforeLast);
  }
  const double power = last * last + beforeLast * beforeLast - coefficient * last * beforeLast;
  const double count = static_cast<double>(samples.size()) / AudioBlock::kChannels;
  return 2 * std::sqrt(power) / count / 32768;
}

}  // namespace test
}  // namespace lumo
