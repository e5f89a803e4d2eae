#include "LumoRTCLocal/media/StreamWriter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <charconv>
#include <chrono>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "LumoRTCLocal/media/FfmpegHandles.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/StreamEncoder.h"

namespace lumo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostPictures = 8;  // that wait
constexpr std::size_t kMostBlocks = 100;
constexpr std::chrono::seconds kPatience(5);
constexpr std::chrono::seconds kPatienceAtEnd(1);
constexpr Microseconds kBlockLength(10000);
constexpr std::string_view kSeparator = "://";

struct Container {
  std::string_view extension;
  const char* format;
};
constexpr std::array<Container, 4> kContainers = {
    {{".flv", "flv"}, {".ts", "mpegts"}, {".mp4", "mp4"}, {".mkv", "matroska"}}};

struct Parts {
  std::string protocol;
  std::string_view rest;
};

Parts split(std::string_view address) {
  const std::size_t end = address.find(kSeparator);
  if (end == std::string_view::npos) return {};
  std::string protocol(address.substr(0, end));
  std::ranges::transform(protocol, protocol.begin(),
                         [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return {std::move(protocol), address.substr(end + kSeparator.size())};
}

bool isProtocolName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](unsigned char letter) {
    return std::isalnum(letter) || letter == '+' || letter == '-' || letter == '.';
  });
}

const char* containerOf(std::string_view path) {
  const auto* const found = std::ranges::find_if(
      kContainers, [path](const Container& container) { return path.ends_with(container.extension); });
  return found == kContainers.end() ? nullptr : found->format;
}

bool isHost(std::string_view host) {
  return !host.empty() && std::ranges::all_of(host, [](unsigned char letter) {
    return std::isalnum(letter) ||
           std::string_view(".-_[]:").find(static_cast<char>(letter)) != std::string_view::npos;
  });
}

/// Whether `text` is host:port, the port optional unless it is asked for.
bool isAuthority(std::string_view text, bool needsPort) {
  const std::size_t colon = text.rfind(':');
  const bool hasPort = colon != std::string_view::npos && text.find(']', colon) == std::string_view::npos;
  if (!hasPort) return !needsPort && isHost(text);
  unsigned port = 0;
  const std::string_view digits = text.substr(colon + 1);
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  const bool isNumber = read.ec == std::errc() && read.ptr == digits.data() + digits.size();
  return isNumber && port > 0 && port < 65536 && isHost(text.substr(0, colon));
}

StreamAddress checkFile(std::string_view path) {
  if (path.size() < 2 || path.front() != '/' || path.ends_with('/')) return StreamAddress::malformed;
  return containerOf(path) ? StreamAddress::usable : StreamAddress::unknownContainer;
}

const char* formatFor(const Parts& parts) {
  if (parts.protocol == "rtmp") return "flv";
  return parts.protocol == "udp" ? "mpegts" : containerOf(parts.rest);
}

struct TimedPicture {
  std::shared_ptr<const LumoRTCI420Buffer> picture;
  Microseconds time{0};
};

struct TimedBlock {
  AudioBlock block;
  Microseconds time{0};  ///< when it began
};

int closeOutput(AVFormatContext& context) {
  if (context.oformat->flags & AVFMT_NOFILE) return 0;
  const int error = context.pb ? context.pb->error : 0;
  const int closed = avio_closep(&context.pb);
  return error < 0 ? error : closed;
}

struct FreeOutput {
  void operator()(AVFormatContext* context) const {
    closeOutput(*context);
    avformat_free_context(context);
  }
};

/// Makes FFmpeg give up on an address that blocks. Any thread.
class Deadline {
 public:
  void set(Clock::duration patience) { at_ = (Clock::now() + patience).time_since_epoch().count(); }
  /// From now on, nothing takes longer than to the end.
  void setEnd() { end_ = (Clock::now() + kPatienceAtEnd).time_since_epoch().count(); }
  static int hasPassed(void* opaque) {
    const auto& deadline = *static_cast<Deadline*>(opaque);
    return Clock::now().time_since_epoch().count() > std::min(deadline.at_.load(), deadline.end_.load());
  }

 private:
  std::atomic<Clock::rep> at_{0};
  std::atomic<Clock::rep> end_{Clock::duration::max().count()};
};

}  // namespace

/// Everything but the runner, so that a task can outlive the writer that it reports to.
struct StreamWriter::State : ffmpeg::PacketSink {
  enum class Phase { opening, open, ended };

  State(std::string streamAddress, const StreamFormat& streamFormat, Events streamEvents)
      : address(std::move(streamAddress)), format(streamFormat), events(std::move(streamEvents)) {
    for (auto* const queue : {&pictures, &currentPictures}) queue->reserve(kMostPictures);
    for (auto* const queue : {&blocks, &currentBlocks}) queue->reserve(kMostBlocks);
  }

  template <class Item>
  bool push(std::vector<Item>& queue, std::size_t most, Item item);

  // On the runner, or after its end.
  void open();
  int openOutput();
  int addStream(const AVCodecContext& encoder);
  void drain();
  int writeNext();
  void fail(int error);
  /// @return whether the stream is whole
  bool close();
  int take(const AVCodecContext& encoder, AVPacket& packet) override;

  const std::string address;
  const StreamFormat format;
  const Events events;
  std::atomic<Phase> phase{Phase::opening};
  std::atomic<std::int32_t> bitrate{format.videoBitrate};
  Deadline deadline;

  std::mutex mutex;  // guards what follows, up to the output
  std::vector<TimedPicture> pictures;
  std::vector<TimedBlock> blocks;
  bool isScheduled = false;

  // On the runner, or after its end.
  std::vector<TimedPicture> currentPictures;
  std::vector<TimedBlock> currentBlocks;
  std::size_t nextPicture = 0;
  std::size_t nextBlock = 0;
  Microseconds start{-1};
  std::unique_ptr<AVFormatContext, FreeOutput> output;
  ffmpeg::PictureEncoder pictureEncoder;
  ffmpeg::SoundEncoder soundEncoder;
  FramePool pool;
};

/// @return whether a drain has to be posted
template <class Item>
bool StreamWriter::State::push(std::vector<Item>& queue, std::size_t most, Item item) {
  if (phase != Phase::open) return false;
  const std::lock_guard lock(mutex);
  if (queue.size() >= most) return false;
  queue.push_back(std::move(item));
  return !std::exchange(isScheduled, true);
}

void StreamWriter::State::open() {
  deadline.set(kPatience);
  const int error = openOutput();
  if (error < 0) output.reset();
  phase = error < 0 ? Phase::ended : Phase::open;
  if (events.opened) events.opened(error < 0 ? address + ": " + ffmpeg::errorText(error) : std::string());
}

int StreamWriter::State::openOutput() {
  AVFormatContext* context = nullptr;
  const char* const name = formatFor(split(address));
  if (const int error = avformat_alloc_output_context2(&context, nullptr, name, address.c_str()); error < 0)
    return error;
  output.reset(context);
  const bool globalHeader = context->oformat->flags & AVFMT_GLOBALHEADER;
  if (format.hasPicture) {
    if (const int error = pictureEncoder.open(format, globalHeader); error < 0) return error;
    if (const int error = addStream(*pictureEncoder.codec()); error < 0) return error;
    context->streams[0]->avg_frame_rate = {format.framesPerSecond, 1};
  }
  if (const int error = soundEncoder.open(format, globalHeader); error < 0) return error;
  if (const int error = addStream(*soundEncoder.codec()); error < 0) return error;

  context->interrupt_callback = {Deadline::hasPassed, &deadline};
  AVDictionary* options = nullptr;
  if (split(address).protocol == "udp") av_dict_set(&options, "pkt_size", "1316", 0);  // whole TS packets
  const int opened =
      avio_open2(&context->pb, address.c_str(), AVIO_FLAG_WRITE, &context->interrupt_callback, &options);
  av_dict_free(&options);
  return opened < 0 ? opened : avformat_write_header(context, nullptr);
}

int StreamWriter::State::addStream(const AVCodecContext& encoder) {
  AVStream* const stream = avformat_new_stream(output.get(), nullptr);
  if (!stream) return AVERROR(ENOMEM);
  stream->time_base = encoder.time_base;
  return avcodec_parameters_from_context(stream->codecpar, &encoder);
}

void StreamWriter::State::drain() {
  {
    const std::lock_guard lock(mutex);
    isScheduled = false;
    std::swap(pictures, currentPictures);
    std::swap(blocks, currentBlocks);
  }
  nextPicture = nextBlock = 0;
  int error = 0;
  while (phase == Phase::open && error == 0 &&
         (nextPicture < currentPictures.size() || nextBlock < currentBlocks.size())) {
    error = writeNext();
  }
  currentPictures.clear();
  currentBlocks.clear();
  if (error < 0) fail(error);
}

int StreamWriter::State::writeNext() {
  const bool isPicture = nextBlock == currentBlocks.size() ||
                         (nextPicture < currentPictures.size() &&
                          currentPictures[nextPicture].time < currentBlocks[nextBlock].time);
  const Microseconds time = isPicture ? currentPictures[nextPicture].time : currentBlocks[nextBlock].time;
  if (start < Microseconds(0)) start = time;
  const Microseconds sinceStart = std::max(Microseconds(0), time - start);
  if (!isPicture) return soundEncoder.encode(currentBlocks[nextBlock++].block, sinceStart, *this);
  pictureEncoder.setBitrate(bitrate);
  return pictureEncoder.encode(
      letterboxed(currentPictures[nextPicture++].picture, format.width, format.height, pool), sinceStart,
      *this);
}

int StreamWriter::State::take(const AVCodecContext& encoder, AVPacket& packet) {
  const unsigned index = format.hasPicture && &encoder == soundEncoder.codec() ? 1 : 0;
  AVStream& stream = *output->streams[index];
  packet.stream_index = stream.index;
  av_packet_rescale_ts(&packet, encoder.time_base, stream.time_base);
  deadline.set(kPatience);
  return av_interleaved_write_frame(output.get(), &packet);
}

void StreamWriter::State::fail(int error) {
  phase = Phase::ended;
  output.reset();
  if (events.failed) events.failed(address + ": " + ffmpeg::errorText(error));
}

bool StreamWriter::State::close() {
  drain();
  const Phase former = phase.exchange(Phase::ended);
  if (former == Phase::opening && events.opened) events.opened(address + ": ended before it was open");
  if (former != Phase::open) return false;
  int error = format.hasPicture ? pictureEncoder.flush(*this) : 0;
  if (error == 0) error = soundEncoder.flush(*this);
  deadline.set(kPatience);
  if (error == 0) error = av_write_trailer(output.get());
  const int closed = closeOutput(*output);
  if (error == 0) error = closed;
  output.reset();
  if (error < 0) fail(error);
  return error >= 0;
}

StreamAddress StreamWriter::check(const std::string& address) {
  const Parts parts = split(address);
  const bool hasBlank = std::ranges::any_of(
      address, [](unsigned char letter) { return std::iscntrl(letter) || letter == ' '; });
  if (!isProtocolName(parts.protocol) || parts.rest.empty()) return StreamAddress::malformed;
  if (parts.protocol == "file") return checkFile(parts.rest);
  const bool isRtmp = parts.protocol == "rtmp";
  if (!isRtmp && parts.protocol != "udp") return StreamAddress::unknownProtocol;
  const std::size_t slash = std::min(parts.rest.find_first_of("/?"), parts.rest.size());
  const bool isComplete = !isRtmp || slash + 1 < parts.rest.size();  // rtmp needs an application
  const bool isFine = !hasBlank && isComplete && isAuthority(parts.rest.substr(0, slash), !isRtmp);
  return isFine ? StreamAddress::usable : StreamAddress::malformed;
}

StreamWriter::StreamWriter(Timeline& timeline, std::string address, const StreamFormat& format, Events events)
    : state_(std::make_shared<State>(std::move(address), format, std::move(events))),
      runner_(timeline.makeRunner("stream writer")) {
  runner_->post([state = state_] { state->open(); });
}

StreamWriter::~StreamWriter() {
  state_->deadline.setEnd();
  runner_.reset();
  state_->close();
}

void StreamWriter::writePicture(std::shared_ptr<const LumoRTCI420Buffer> picture, Microseconds time) {
  if (!state_->format.hasPicture) return;
  // The task holds nothing that would have to be allocated; `this` is alive whenever a task starts.
  if (state_->push(state_->pictures, kMostPictures, {std::move(picture), time}))
    runner_->post([this] { std::shared_ptr(state_)->drain(); });
}

void StreamWriter::writeSound(const AudioBlock& block, Microseconds time) {
  if (state_->push(state_->blocks, kMostBlocks, {block, time - kBlockLength}))
    runner_->post([this] { std::shared_ptr(state_)->drain(); });
}

void StreamWriter::setVideoBitrate(std::int32_t kilobitsPerSecond) { state_->bitrate = kilobitsPerSecond; }

void StreamWriter::finish(std::function<void(bool isWhole)> done) {
  runner_->post([state = state_, done = std::move(done)] {
    const bool isWhole = state->close();
    if (done) done(isWhole);
  });
}

}  // namespace lumo
