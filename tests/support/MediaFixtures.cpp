#include "tests/support/MediaFixtures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>

#include "LumoRTCLocal/media/StreamEncoder.h"

namespace lumo::test {
namespace {

constexpr int kSampleRate = 44100;
constexpr StreamFormat kClipFormat{.width = 64, .height = 48, .framesPerSecond = 10};

void require(int result) {
  if (result < 0) throw std::runtime_error("cannot make a media file: " + ffmpeg::errorText(result));
}

/// Samples of -1 to 1, the same for both channels.
std::vector<float> samplesOf(const std::vector<Tone>& tones, double amplitude) {
  std::vector<float> samples;
  for (const auto& [frequencyHz, seconds] : tones) {
    const double step = 2 * std::numbers::pi * frequencyHz / kSampleRate;
    for (int i = 0; i < static_cast<int>(seconds * kSampleRate); ++i)
      samples.push_back(static_cast<float>(amplitude * std::sin(step * i)));
  }
  return samples;
}

/// A media file to write, in the container of its extension: at first all streams are added, then `write` is
/// called.
class OutputFile : ffmpeg::PacketSink {
 public:
  explicit OutputFile(const std::string& path) {
    require(avformat_alloc_output_context2(&format_, nullptr, nullptr, path.c_str()));
    require(avio_open(&format_->pb, path.c_str(), AVIO_FLAG_WRITE));
  }
  ~OutputFile() override {
    avio_closep(&format_->pb);
    avformat_free_context(format_);
  }

  AVCodecID soundCodec() const { return format_->oformat->audio_codec; }

  void addPictures() {
    require(pictures_.open(kClipFormat, true));
    addStream(*pictures_.codec())->avg_frame_rate = {kClipFormat.framesPerSecond, 1};
  }
  void addSound(AVCodecID codec) {
    const bool isLossy = codec == AV_CODEC_ID_MP3 || codec == AV_CODEC_ID_AAC;
    sound_.reset(avcodec_alloc_context3(avcodec_find_encoder(codec)));
    sound_->sample_fmt = isLossy ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S16;
    sound_->sample_rate = kSampleRate;
    sound_->time_base = {1, kSampleRate};
    sound_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    sound_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    require(avcodec_open2(sound_.get(), nullptr, nullptr));
    addStream(*sound_);
  }

  void write(std::int32_t pictures, const std::vector<float>& samples) {
    require(avformat_write_header(format_, nullptr));
    for (std::int32_t number = 0; number < pictures; ++number)
      require(pictures_.encode(solid(64, 48, clipColor(number)), number * Microseconds(100'000), *this));
    if (pictures > 0) require(pictures_.flush(*this));
    if (sound_) writeSound(samples);
    require(av_write_trailer(format_));
  }

 private:
  AVStream* addStream(const AVCodecContext& encoder) {
    AVStream* const stream = avformat_new_stream(format_, nullptr);
    require(avcodec_parameters_from_context(stream->codecpar, &encoder));
    return stream;
  }
  int take(const AVCodecContext& encoder, AVPacket& packet) override {
    packet.stream_index = encoder.codec_type == AVMEDIA_TYPE_VIDEO || !pictures_.codec() ? 0 : 1;
    av_packet_rescale_ts(&packet, encoder.time_base, format_->streams[packet.stream_index]->time_base);
    return av_interleaved_write_frame(format_, &packet);
  }
  void writeSound(std::span<const float> samples) {
    const auto step = static_cast<std::size_t>(std::max(sound_->frame_size, kSampleRate / 100));
    for (std::size_t start = 0; start < samples.size(); start += step) {
      const ffmpeg::Frame frame(av_frame_alloc());
      frame->format = sound_->sample_fmt;
      frame->ch_layout = sound_->ch_layout;
      frame->nb_samples = static_cast<int>(std::min(step, samples.size() - start));
      frame->pts = static_cast<std::int64_t>(start);
      require(av_frame_get_buffer(frame.get(), 0));
      for (int i = 0; i < 2 * frame->nb_samples; ++i) {
        const float sample = samples[start + static_cast<std::size_t>(i / 2)];
        if (sound_->sample_fmt == AV_SAMPLE_FMT_S16)
          reinterpret_cast<std::int16_t*>(frame->data[0])[i] = static_cast<std::int16_t>(32767 * sample);
        else
          reinterpret_cast<float*>(frame->data[i % 2])[i / 2] = sample;
      }
      encodeSound(frame.get());
    }
    encodeSound(nullptr);
  }
  /// Encodes one frame, or what is left.
  void encodeSound(const AVFrame* frame) {
    require(avcodec_send_frame(sound_.get(), frame));
    const ffmpeg::Packet packet(av_packet_alloc());
    while (avcodec_receive_packet(sound_.get(), packet.get()) == 0) require(take(*sound_, *packet));
  }

  AVFormatContext* format_ = nullptr;
  ffmpeg::PictureEncoder pictures_;
  ffmpeg::CodecContext sound_;
};

}  // namespace

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
  OutputFile file(folder.path(name));
  if (clip.pictures > 0) file.addPictures();
  if (clip.toneHz > 0) file.addSound(AV_CODEC_ID_PCM_S16LE);
  file.write(clip.pictures, samplesOf({{clip.toneHz, clip.toneHz > 0 ? clip.toneSeconds : 0}}, 0.5));
  return folder.path(name);
}

std::string writeTones(const TempFolder& folder, const std::string& name, const std::vector<Tone>& tones) {
  OutputFile file(folder.path(name));
  file.addSound(file.soundCodec());
  file.write(0, samplesOf(tones, 0.2525));  // the encoder of MP3 takes 5 % off
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
  const double step = std::numbers::pi * frequencyHz / AudioBlock::kSampleRate;  // there are two channels
  std::complex<double> sum;
  for (std::size_t i = 0; i < samples.size(); i += AudioBlock::kChannels)
    sum += 1.0 * samples[i] * std::polar(1.0, step * static_cast<double>(i));
  return 4 * std::abs(sum) / static_cast<double>(samples.size()) / 32768;
}

}  // namespace lumo::test
