#include "tests/support/MediaFixtures.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <tuple>
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
constexpr int kClipSampleRate = 44100;

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string("cannot make a clip: ") + what);
}

AVStream& addStream(AVFormatContext& format, AVMediaType type, AVCodecID codec, int ticksPerSecond) {
  AVStream* const stream = avformat_new_stream(&format, nullptr);
  stream->codecpar->codec_type = type;
  stream->codecpar->codec_id = codec;
  stream->time_base = {1, ticksPerSecond};
  return *stream;
}

/// QuickTime has no uncompressed planar pictures.
bool needsPackedPixels(const AVFormatContext& format) { return std::string(format.oformat->name) == "mov"; }

/// One picture of one colour, as the file stores it.
std::string pixelsOf(const AVFormatContext& format, const YuvColor& color) {
  constexpr std::size_t kPixels = std::size_t{kClipWidth} * kClipHeight;
  const auto [y, u, v] =
      std::tuple{static_cast<char>(color.y), static_cast<char>(color.u), static_cast<char>(color.v)};
  if (!needsPackedPixels(format)) {
    return std::string(kPixels, y) + std::string(kPixels / 4, u) + std::string(kPixels / 4, v);
  }
  std::string pixels;
  for (std::size_t pair = 0; pair < kPixels / 2; ++pair) pixels += {u, y, v, y};
  return pixels;
}

void addPictures(AVFormatContext& format, const Clip& clip) {
  AVStream& stream = addStream(format, AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_RAWVIDEO, clip.framesPerSecond);
  const bool isPacked = needsPackedPixels(format);
  stream.codecpar->codec_tag = isPacked ? MKTAG('2', 'v', 'u', 'y') : MKTAG('I', '4', '2', '0');
  stream.codecpar->format = isPacked ? AV_PIX_FMT_UYVY422 : AV_PIX_FMT_YUV420P;
  stream.codecpar->width = kClipWidth;
  stream.codecpar->height = kClipHeight;
  stream.avg_frame_rate = {clip.framesPerSecond, 1};
  if (clip.rotation == 0) return;
  auto* const matrix = av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
  av_display_rotation_set(reinterpret_cast<std::int32_t*>(matrix), -clip.rotation);
}

void addSound(AVFormatContext& format) {
  AVStream& stream = addStream(format, AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_S16LE, kClipSampleRate);
  stream.codecpar->format = AV_SAMPLE_FMT_S16;
  stream.codecpar->sample_rate = kClipSampleRate;
  stream.codecpar->bits_per_coded_sample = 16;
  stream.codecpar->block_align = 2;
  stream.codecpar->ch_layout = AV_CHANNEL_LAYOUT_MONO;
}

/// @param time  in ticks of 1 / `ticksPerSecond`, as is `duration`
void write(AVFormatContext& format, unsigned stream, const void* data, std::size_t size, std::int64_t time,
           std::int64_t duration, int ticksPerSecond) {
  const ffmpeg::Packet packet(av_packet_alloc());
  require(av_new_packet(packet.get(), static_cast<int>(size)) == 0, "memory");
  std::memcpy(packet->data, data, size);
  packet->stream_index = static_cast<int>(stream);
  packet->pts = packet->dts = time;
  packet->duration = duration;
  packet->flags = AV_PKT_FLAG_KEY;
  av_packet_rescale_ts(packet.get(), {1, ticksPerSecond}, format.streams[stream]->time_base);
  require(av_interleaved_write_frame(&format, packet.get()) == 0, "write");
}

void writePictures(AVFormatContext& format, const Clip& clip) {
  for (std::int32_t number = 0; number < clip.pictures; ++number) {
    const std::string pixels = pixelsOf(format, clipColor(number));
    write(format, 0, pixels.data(), pixels.size(), number, 1, clip.framesPerSecond);
  }
}

void writeSound(AVFormatContext& format, const Clip& clip) {
  std::array<std::int16_t, kClipSampleRate / 100> piece{};
  for (int start = 0; start < static_cast<int>(clip.toneSeconds * kClipSampleRate);
       start += int{piece.size()}) {
    for (std::size_t i = 0; i < piece.size(); ++i) {
      const double turns = clip.toneHz * (start + static_cast<double>(i)) / kClipSampleRate;
      piece[i] = static_cast<std::int16_t>(std::lround(16384 * std::sin(2 * std::numbers::pi * turns)));
    }
    write(format, format.nb_streams - 1, piece.data(), sizeof(piece), start, piece.size(), kClipSampleRate);
  }
}

/// Encodes one frame, or what is left, and writes what comes out.
void encode(AVFormatContext& format, AVCodecContext& encoder, const AVFrame* frame) {
  require(avcodec_send_frame(&encoder, frame) == 0, "encode");
  const ffmpeg::Packet packet(av_packet_alloc());
  while (avcodec_receive_packet(&encoder, packet.get()) == 0) {
    packet->stream_index = 0;
    av_packet_rescale_ts(packet.get(), encoder.time_base, format.streams[0]->time_base);
    require(av_interleaved_write_frame(&format, packet.get()) == 0, "write");
  }
}

ffmpeg::CodecContext openSoundEncoder(AVFormatContext& format) {
  const bool isOgg = std::string(format.oformat->name) == "ogg";
  const AVCodec* const codec =
      isOgg ? avcodec_find_encoder_by_name("libvorbis") : avcodec_find_encoder(format.oformat->audio_codec);
  ffmpeg::CodecContext encoder(avcodec_alloc_context3(codec));
  encoder->sample_fmt = codec->sample_fmts[0];
  encoder->sample_rate = AudioBlock::kSampleRate;
  encoder->time_base = {1, AudioBlock::kSampleRate};
  encoder->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
  encoder->bit_rate = 192'000;
  if (format.oformat->flags & AVFMT_GLOBALHEADER) encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  require(avcodec_open2(encoder.get(), codec, nullptr) == 0, "encoder");
  AVStream* const stream = avformat_new_stream(&format, nullptr);
  avcodec_parameters_from_context(stream->codecpar, encoder.get());
  stream->time_base = encoder->time_base;
  return encoder;
}

std::vector<std::int16_t> samplesOf(const std::vector<Tone>& tones) {
  std::vector<std::int16_t> samples;
  for (const Tone& tone : tones) {
    for (int i = 0; i < static_cast<int>(tone.seconds * AudioBlock::kSampleRate); ++i) {
      const double angle = 2 * std::numbers::pi * tone.frequencyHz * i / AudioBlock::kSampleRate;
      samples.insert(samples.end(), 2, static_cast<std::int16_t>(std::lround(8192 * std::sin(angle))));
    }
  }
  return samples;
}

void encodeSamples(AVFormatContext& format, AVCodecContext& encoder,
                   const std::vector<std::int16_t>& samples) {
  SwrContext* context = nullptr;
  swr_alloc_set_opts2(&context, &encoder.ch_layout, encoder.sample_fmt, encoder.sample_rate,
                      &encoder.ch_layout, AV_SAMPLE_FMT_S16, encoder.sample_rate, 0, nullptr);
  const ffmpeg::Resampler converter(context);
  require(swr_init(context) == 0, "converter");
  const int total = static_cast<int>(samples.size()) / AudioBlock::kChannels;
  const int step = encoder.frame_size > 0 ? encoder.frame_size : 4800;
  for (int start = 0; start < total; start += step) {
    const ffmpeg::Frame frame(av_frame_alloc());
    frame->format = encoder.sample_fmt;
    frame->nb_samples = std::min(step, total - start);
    frame->sample_rate = encoder.sample_rate;
    av_channel_layout_copy(&frame->ch_layout, &encoder.ch_layout);
    require(av_frame_get_buffer(frame.get(), 0) == 0, "memory");
    const auto* from = reinterpret_cast<const std::uint8_t*>(&samples[static_cast<std::size_t>(2 * start)]);
    swr_convert(context, frame->extended_data, frame->nb_samples, &from, frame->nb_samples);
    frame->pts = start;
    encode(format, encoder, frame.get());
  }
  encode(format, encoder, nullptr);
}

/// Opens a file to write, in the container of its extension.
std::unique_ptr<AVFormatContext, decltype(&avformat_free_context)> create(const std::string& path) {
  AVFormatContext* format = nullptr;
  avformat_alloc_output_context2(&format, nullptr, nullptr, path.c_str());
  require(format && avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, "open");
  return {format, avformat_free_context};
}

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
  const std::string path = folder.path(name);
  const auto owner = create(path);
  AVFormatContext* const format = owner.get();
  if (clip.pictures > 0) addPictures(*format, clip);
  if (clip.toneHz > 0) addSound(*format);
  require(avformat_write_header(format, nullptr) >= 0, "header");
  writePictures(*format, clip);
  if (clip.toneHz > 0) writeSound(*format, clip);
  require(av_write_trailer(format) == 0, "end");
  avio_closep(&format->pb);
  return path;
}

std::string writeTones(const TempFolder& folder, const std::string& name, const std::vector<Tone>& tones) {
  const std::string path = folder.path(name);
  const auto format = create(path);
  const auto encoder = openSoundEncoder(*format);
  require(avformat_write_header(format.get(), nullptr) >= 0, "header");
  encodeSamples(*format, *encoder, samplesOf(tones));
  require(av_write_trailer(format.get()) == 0, "end");
  avio_closep(&format->pb);
  return path;
}

std::string writeMotionJpeg(const TempFolder& folder, const std::string& name, std::int32_t pictures) {
  const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
  const ffmpeg::CodecContext encoder(avcodec_alloc_context3(codec));
  const ffmpeg::Frame frame(av_frame_alloc());
  const ffmpeg::Packet packet(av_packet_alloc());
  encoder->width = frame->width = kClipWidth;
  encoder->height = frame->height = kClipHeight;
  encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
  frame->format = AV_PIX_FMT_YUVJ420P;
  encoder->time_base = {1, 25};
  require(avcodec_open2(encoder.get(), codec, nullptr) == 0, "encoder");
  std::string file;
  for (std::int32_t number = 0; number < pictures; ++number) {
    const auto picture = solid(kClipWidth, kClipHeight, clipColor(number));
    frame->data[0] = picture->mutableDataY();
    frame->data[1] = picture->mutableDataU();
    frame->data[2] = picture->mutableDataV();
    frame->linesize[0] = picture->strideY();
    frame->linesize[1] = frame->linesize[2] = picture->strideU();
    require(avcodec_send_frame(encoder.get(), frame.get()) == 0, "encode");
    require(avcodec_receive_packet(encoder.get(), packet.get()) == 0, "encode");
    file.append(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size));
  }
  return folder.write(name, file);
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
