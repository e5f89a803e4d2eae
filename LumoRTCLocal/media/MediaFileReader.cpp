#include "LumoRTCLocal/media/MediaFileReader.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/common.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/FrameConverter.h"
#include "LumoRTCLocal/media/StreamDecoder.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using ffmpeg::FormatContext;
using ffmpeg::Frame;
using ffmpeg::Packet;
using ffmpeg::StreamDecoder;
using Result = StreamDecoder::Result;

constexpr AVRational kTicks{1, AV_TIME_BASE};  // what a container counts time in

void prepareFfmpeg() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (av_log_get_level() == AV_LOG_INFO) av_log_set_level(AV_LOG_QUIET);  // unless the host has chosen
    avdevice_register_all();
  });
}

bool isDevice(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_character_file(path, ignored);
}

/// The demuxer that paints plain text takes any text file.
bool isPlainText(const AVFormatContext& format) { return std::string_view(format.iformat->name) == "tty"; }

std::string describeOpenError(int code) {
  if (code == AVERROR_INVALIDDATA || code == AVERROR_EOF) return "is not a media file, or not a whole one";
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return std::string("cannot be opened: ") + text.data();
}

/// Opens the file, or the device so that reading from it never waits.
/// @return 0, or FFmpeg's error code
int openInput(const std::string& path, bool isLive, FormatContext& format) {
  AVFormatContext* context = avformat_alloc_context();
  if (!context) return AVERROR(ENOMEM);
  if (isLive) context->flags |= AVFMT_FLAG_NONBLOCK;
  const AVInputFormat* const input = isLive ? av_find_input_format("video4linux2") : nullptr;
  const std::string url = isLive ? path : "file:" + path;
  const int code = avformat_open_input(&context, url.c_str(), input, nullptr);
  if (code < 0) return code;  // FFmpeg has freed the context
  format.reset(context);
  // A device knows its format; looking for it would spin until enough pictures have come.
  if (isLive) return 0;
  if (isPlainText(*format)) return AVERROR_INVALIDDATA;
  if (const int infoCode = avformat_find_stream_info(format.get(), nullptr); infoCode < 0) return infoCode;
  return format->nb_streams == 0 ? AVERROR_INVALIDDATA : 0;
}

/// The stream that a player would choose; null when there is none. The cover picture of a song does not
/// count.
const AVStream* chooseStream(AVFormatContext& format, AVMediaType type) {
  const int index = av_find_best_stream(&format, type, -1, -1, nullptr, 0);
  if (index < 0) return nullptr;
  const AVStream* const stream = format.streams[index];
  return stream->disposition & AV_DISPOSITION_ATTACHED_PIC ? nullptr : stream;
}

/// Degrees clockwise that turn the pictures of the stream upright.
std::int32_t rotationOf(const AVStream& stream) {
  std::size_t size = 0;
  const std::uint8_t* const data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  std::array<std::int32_t, 9> matrix{};
  if (!data || size < sizeof(matrix)) return 0;
  std::memcpy(matrix.data(), data, sizeof(matrix));
  const double counterclockwise = av_display_rotation_get(matrix.data());
  if (std::isnan(counterclockwise)) return 0;
  const auto quarters = static_cast<std::int32_t>(std::lround(-counterclockwise / 90));
  return (quarters % 4 + 4) % 4 * 90;
}

/// How long so many samples per channel last.
Microseconds spanOf(std::int64_t samples) {
  return Microseconds(av_rescale(samples, 1'000'000, AudioBlock::kSampleRate));
}

/// How many samples per channel a time takes.
std::size_t samplesIn(Microseconds time) {
  return static_cast<std::size_t>(av_rescale(time.count(), AudioBlock::kSampleRate, 1'000'000));
}

}  // namespace

struct MediaFileReader::State {
  State(std::string mediaPath, MediaKind mediaKind)
      : path(std::move(mediaPath)), kind(mediaKind), isLive(isDevice(path)) {}

  /// @return what is wrong; empty when all is well
  std::string open();
  std::string openStreams();
  std::string openDecoder(AVMediaType type, const char* name, std::optional<StreamDecoder>& decoder);
  std::string decodeBeginning();

  /// The next frame of one decoder; false at the end, or when a device has none yet.
  bool decode(StreamDecoder& decoder);
  /// Hands packets out until `decoder` has one or has been told that no more will come; false when a device
  /// has none yet.
  bool readFor(StreamDecoder& decoder);
  /// Whether the packets stop before the time that the file announces.
  bool endsEarly() const;
  /// Goes through the frames to the last that starts at or before `time`.
  bool decodePictureAt(Microseconds time, AVFrame& frame, Microseconds& timestamp);

  bool seekInput(Microseconds time);
  /// Decodes one more piece into `samples`; false at the end.
  bool decodeSound(Microseconds& timestamp);

  const std::string path;
  const MediaKind kind;
  const bool isLive;

  FormatContext format;  // before the decoders, which refer to its streams
  std::optional<StreamDecoder> picture;
  std::optional<StreamDecoder> sound;
  bool isDamaged = false;
  bool isCutOff = false;
  std::optional<Microseconds> pictureGoal;  // where a seek still has to arrive
  std::optional<Microseconds> soundGoal;

  ffmpeg::PictureConverter pictureConverter;
  ffmpeg::SoundConverter soundConverter;
  bool isSoundFlushed = false;
  Microseconds soundEnd{0};
  std::vector<std::int16_t> samples;
};

std::string MediaFileReader::State::open() {
  if (const int code = openInput(path, isLive, format); code < 0) return describeOpenError(code);
  if (std::string error = openStreams(); !error.empty()) return error;
  for (unsigned index = 0; index < format->nb_streams; ++index) {
    const auto is = [=](const auto& decoder) {
      return decoder && decoder->index() == static_cast<int>(index);
    };
    if (!is(picture) && !is(sound)) format->streams[index]->discard = AVDISCARD_ALL;
  }
  return isLive ? std::string() : decodeBeginning();
}

std::string MediaFileReader::State::openStreams() {
  const std::string noPicture =
      kind == MediaKind::sound ? "" : openDecoder(AVMEDIA_TYPE_VIDEO, "picture", picture);
  const std::string noSound =
      kind == MediaKind::picture ? "" : openDecoder(AVMEDIA_TYPE_AUDIO, "sound", sound);
  if (!picture && !sound) return noPicture.empty() ? noSound : noPicture;
  if (picture) pictureConverter.setRotation(rotationOf(picture->stream()));
  return {};
}

std::string MediaFileReader::State::openDecoder(AVMediaType type, const char* name,
                                                std::optional<StreamDecoder>& decoder) {
  const AVStream* const stream = chooseStream(*format, type);
  if (!stream) return std::string("has no ") + name;
  const std::int64_t start = format->start_time == AV_NOPTS_VALUE ? 0 : format->start_time;
  decoder = StreamDecoder::open(*stream, start);
  return decoder ? std::string() : std::string("has a ") + name + " that cannot be decoded";
}

std::string MediaFileReader::State::decodeBeginning() {
  for (auto* const decoder : {&picture, &sound}) {
    if (!*decoder) continue;
    if (decode(**decoder)) {
      (*decoder)->unread();
    } else {
      decoder->reset();
    }
  }
  return picture || sound ? std::string() : "holds nothing that can be decoded";
}

bool MediaFileReader::State::decode(StreamDecoder& decoder) {
  Result result = decoder.decode();
  while (result == Result::needsPacket && readFor(decoder)) result = decoder.decode();
  return result == Result::frame;
}

bool MediaFileReader::State::readFor(StreamDecoder& decoder) {
  while (!decoder.hasPackets()) {
    Packet packet(av_packet_alloc());
    const int code = av_read_frame(format.get(), packet.get());
    if (code == AVERROR(EAGAIN)) {
      if (isLive) return false;
      continue;  // a file has no more to wait for: the demuxer has only skipped something
    }
    if (code < 0) {
      isCutOff = isLive || code != AVERROR_EOF || endsEarly();
      if (picture) picture->end();
      if (sound) sound->end();
      return true;
    }
    for (auto* const target : {&picture, &sound}) {
      if (!*target || packet->stream_index != (*target)->index()) continue;
      (*target)->add(std::move(packet));
      break;
    }
  }
  return true;
}

bool MediaFileReader::State::endsEarly() const {
  constexpr Microseconds kTolerance = 500ms;
  if (format->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) return false;  // only a guess
  Microseconds end{0};
  unsigned count = 0;
  for (const auto* const decoder : {&picture, &sound}) {
    if (!*decoder) continue;
    const auto length = (*decoder)->announcedLength();
    if (length && (*decoder)->packetsEnd() + kTolerance < *length) return true;
    end = std::max(end, (*decoder)->packetsEnd());
    ++count;
  }
  // The length of the whole file says something only when no other stream can be the longest one.
  return count == format->nb_streams && end.count() + kTolerance.count() < format->duration;
}

bool MediaFileReader::State::decodePictureAt(Microseconds time, AVFrame& frame, Microseconds& timestamp) {
  bool isFound = false;
  while (decode(*picture)) {
    if (isFound && picture->timestamp() > time) {
      picture->unread();
      break;
    }
    isFound = true;
    timestamp = picture->timestamp();
    picture->takeFrame(frame);
  }
  return isFound;
}

bool MediaFileReader::State::seekInput(Microseconds time) {
  // Formats without timestamps can only guess where a time is.
  if (format->iformat->flags & AVFMT_NOTIMESTAMPS) return false;
  const AVStream& stream = (picture ? *picture : *sound).stream();
  const std::int64_t start = format->start_time == AV_NOPTS_VALUE ? 0 : format->start_time;
  // Compressed sound needs what comes before to sound as it should; without pictures there is room for that.
  const Microseconds leadIn = picture ? Microseconds(0) : std::min<Microseconds>(time, 100ms);
  // Rounded down: the nearest tick of a coarse clock may lie beyond the picture that is wanted.
  const std::int64_t tick =
      av_rescale_q_rnd(av_sat_add64(start, (time - leadIn).count()), kTicks, stream.time_base, AV_ROUND_DOWN);
  if (av_seek_frame(format.get(), stream.index, tick, AVSEEK_FLAG_BACKWARD) < 0) return false;
  if (picture) picture->flush();
  if (sound) sound->flush();
  soundConverter.reset();
  isSoundFlushed = false;
  return true;
}

bool MediaFileReader::State::decodeSound(Microseconds& timestamp) {
  samples.clear();
  timestamp = soundEnd;
  if (decode(*sound)) {
    timestamp = sound->timestamp() - spanOf(soundConverter.delay());
    if (!soundConverter.convert(&sound->frame(), samples)) isDamaged = true;
  } else if (std::exchange(isSoundFlushed, true) || !soundConverter.convert(nullptr, samples)) {
    return false;
  }
  soundEnd = timestamp + spanOf(static_cast<std::int64_t>(samples.size()) / AudioBlock::kChannels);
  return true;
}

MediaFileReader::MediaFileReader(std::unique_ptr<State> state) : state_(std::move(state)) {}

MediaFileReader::~MediaFileReader() = default;

MediaOpenResult MediaFileReader::open(const std::string& path, MediaKind kind) {
  prepareFfmpeg();
  auto state = std::make_unique<State>(path, kind);
  if (const std::string error = state->open(); !error.empty()) return {nullptr, path + " " + error};
  return {std::unique_ptr<MediaFileReader>(new MediaFileReader(std::move(state))), {}};
}

MediaOpenResult MediaFileReader::openFile(const std::string& path, MediaKind kind) {
  std::error_code ignored;
  if (std::filesystem::exists(path, ignored) && !std::filesystem::is_regular_file(path, ignored))
    return {nullptr, path + " is not a file"};
  return open(path, kind);
}

bool MediaFileReader::hasPicture() const { return state_->picture.has_value(); }

bool MediaFileReader::hasSound() const { return state_->sound.has_value(); }

bool MediaFileReader::isLive() const { return state_->isLive; }

Microseconds MediaFileReader::duration() const {
  return Microseconds(std::max<std::int64_t>(state_->format->duration, 0));
}

std::optional<MediaPicture> MediaFileReader::nextPicture() {
  if (!state_->picture) return std::nullopt;
  if (const auto goal = std::exchange(state_->pictureGoal, std::nullopt)) {
    const Frame frame(av_frame_alloc());
    MediaPicture found;
    if (!state_->decodePictureAt(*goal, *frame, found.timestamp)) return std::nullopt;
    found.picture = state_->pictureConverter.convert(*frame);
    if (found.picture) return found;
  }
  while (state_->decode(*state_->picture)) {
    if (auto picture = state_->pictureConverter.convert(state_->picture->frame())) {
      return MediaPicture{std::move(picture), state_->picture->timestamp()};
    }
    state_->isDamaged = true;
  }
  return std::nullopt;
}

std::optional<MediaSound> MediaFileReader::nextSound() {
  if (!state_->sound) return std::nullopt;
  MediaSound result;
  while (state_->decodeSound(result.timestamp)) {
    if (state_->samples.empty() || (state_->soundGoal && state_->soundEnd <= *state_->soundGoal)) continue;
    result.samples = state_->samples;
    const auto goal = std::exchange(state_->soundGoal, std::nullopt);
    if (goal && *goal > result.timestamp) {
      const std::size_t skipped = samplesIn(*goal - result.timestamp);
      result.samples =
          result.samples.subspan(std::min(skipped * AudioBlock::kChannels, result.samples.size()));
      result.timestamp = *goal;
    }
    if (!result.samples.empty()) return result;
  }
  return std::nullopt;
}

bool MediaFileReader::isDamaged() const {
  const auto isHurt = [](const auto& decoder) { return decoder && decoder->isDamaged(); };
  return state_->isDamaged || state_->isCutOff || isHurt(state_->picture) || isHurt(state_->sound);
}

bool MediaFileReader::isCutOff() const { return state_->isCutOff; }

bool MediaFileReader::seek(Microseconds time) {
  if (state_->isLive) return false;
  if (!state_->seekInput(time)) {
    auto fresh = std::make_unique<State>(state_->path, state_->kind);
    if (!fresh->open().empty()) return false;
    state_ = std::move(fresh);
  }
  state_->pictureGoal = time;
  state_->soundGoal = time;
  return true;
}

bool MediaFileReader::rewind() { return seek(Microseconds(0)); }

}  // namespace lumo
