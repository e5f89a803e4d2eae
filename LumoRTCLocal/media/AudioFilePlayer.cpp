#include "LumoRTCLocal/media/AudioFilePlayer.h"

#include <algorithm>
#include <span>
#include <utility>

#include "LumoRTCLocal/media/MediaFileReader.h"

namespace lumo {
namespace {

/// How far decoding goes ahead, in blocks. The ring holds twice as much, so that after a seek there is room
/// beside what has become stale.
constexpr std::uint64_t kAhead = 32;
constexpr std::uint64_t kSlots = 2 * kAhead;

Microseconds spanOf(std::size_t samples) {
  return Microseconds(samples / AudioBlock::kChannels * 1'000'000 / AudioBlock::kSampleRate);
}

}  // namespace

/// Cuts the file's sound into blocks, pass after pass. The decoding runner alone.
class AudioFilePlayer::Decoder {
 public:
  Decoder(std::unique_ptr<MediaFileReader> reader, std::int64_t loopCount)
      : reader_(std::move(reader)), isEndless_(loopCount <= 0), passesLeft_(loopCount) {}

  Microseconds duration() const { return reader_->duration(); }

  std::int64_t passesLeft() const { return passesLeft_; }

  /// @param passesLeft  the one that is sought in included
  void seek(Microseconds position, std::int64_t passesLeft) {
    passesLeft_ = passesLeft;
    rest_ = {};
    isPassEmpty_ = false;  // behind the end there is nothing, and nothing wrong
    // A file that is sought behind its end looks like one that stops early.
    isPassOver_ = duration() > Microseconds(0) && position >= duration();
    if (!isPassOver_) isLost_ = !reader_->seek(position);
  }

  /// Fills `block`, over the seam of two passes too.
  /// @param end  set to where in the file the block is over
  /// @return what to play: `sound`, or why there is none
  Read next(AudioBlock& block, Microseconds& end) {
    std::size_t filled = 0;
    while (filled < AudioBlock::kSamples) {
      if (rest_.empty() && !readOn()) {
        const Read outcome = startNextPass();
        if (outcome == Read::sound) continue;
        end = isPassOver_ ? duration() : restEnd_;
        if (filled == 0) return outcome;
        std::fill(block.samples.begin() + static_cast<std::ptrdiff_t>(filled), block.samples.end(),
                  std::int16_t{0});
        break;
      }
      const std::size_t count = std::min(rest_.size(), AudioBlock::kSamples - filled);
      std::copy_n(rest_.begin(), count, block.samples.begin() + static_cast<std::ptrdiff_t>(filled));
      rest_ = rest_.subspan(count);
      filled += count;
    }
    end = restEnd_ - spanOf(rest_.size());
    return Read::sound;
  }

 private:
  bool readOn() {
    if (isPassOver_ || isLost_) return false;
    const auto sound = reader_->nextSound();
    if (!sound) return false;
    isPassEmpty_ = false;
    rest_ = sound->samples;
    restEnd_ = sound->timestamp + spanOf(rest_.size());
    return true;
  }

  Read startNextPass() {
    if (isLost_) return Read::failed;
    if (!isPassOver_ && reader_->isCutOff()) return Read::cutOff;
    if (isPassEmpty_) return Read::failed;  // else an endless loop would never find a block
    if (!isEndless_ && passesLeft_ <= 1) return Read::ended;
    if (!reader_->rewind()) return Read::failed;
    if (!isEndless_) --passesLeft_;
    isPassEmpty_ = true;
    isPassOver_ = false;
    return Read::sound;
  }

  const std::unique_ptr<MediaFileReader> reader_;
  const bool isEndless_;
  std::int64_t passesLeft_;
  bool isPassEmpty_ = true;
  bool isPassOver_ = false;             // sought behind the end
  bool isLost_ = false;                 // the last seek has failed
  std::span<const std::int16_t> rest_;  // of the sound read last, until the next
  Microseconds restEnd_{0};
};

AudioFilePlayer::Opened AudioFilePlayer::open(std::shared_ptr<Runner> decoding, const std::string& path,
                                              std::int64_t loopCount) {
  auto opened = MediaFileReader::openFile(path, MediaKind::sound);
  if (!opened.reader) return {nullptr, std::move(opened.error)};
  std::shared_ptr<AudioFilePlayer> player(new AudioFilePlayer(
      std::move(decoding), std::make_unique<Decoder>(std::move(opened.reader), loopCount), loopCount));
  player->requestFill();
  return {std::move(player), {}};
}

Microseconds AudioFilePlayer::durationOf(const std::string& path) {
  const auto opened = MediaFileReader::openFile(path, MediaKind::sound);
  return opened.reader ? opened.reader->duration() : Microseconds(0);
}

AudioFilePlayer::AudioFilePlayer(std::shared_ptr<Runner> decoding, std::unique_ptr<Decoder> decoder,
                                 std::int64_t loopCount)
    : decoding_(std::move(decoding)),
      duration_(decoder->duration()),
      slots_(kSlots),
      passesLeft_(loopCount),
      decoder_(std::move(decoder)) {}

AudioFilePlayer::~AudioFilePlayer() {
  if (decoding_->isCurrent()) return;
  decoding_->post([decoder = std::shared_ptr<Decoder>(std::move(decoder_))] {});
}

void AudioFilePlayer::seek(Microseconds position) {
  {
    const std::lock_guard lock(seekMutex_);
    seekGoal_ = std::max(position, Microseconds(0));
    seeks_.fetch_add(1, std::memory_order_release);
  }
  requestFill();
}

AudioFilePlayer::Read AudioFilePlayer::read(AudioBlock& block) {
  const std::uint64_t seeks = seeks_.load(std::memory_order_acquire);
  if (std::exchange(playedSeeks_, seeks) != seeks) {
    hasBegun_ = false;
    outcome_ = Read::sound;
  }
  if (outcome_ == Read::sound && take(seeks, block)) return Read::sound;
  block.samples.fill(0);
  return outcome_ == Read::sound ? Read::underrun : outcome_;
}

bool AudioFilePlayer::take(std::uint64_t seeks, AudioBlock& block) {
  std::uint64_t taken = taken_.load(std::memory_order_relaxed);
  const std::uint64_t written = written_.load(std::memory_order_acquire);
  while (taken < written && slots_[taken % kSlots].seeks != seeks) ++taken;
  const bool isThere = taken < written;
  if (isThere) {
    const Slot& slot = slots_[taken++ % kSlots];
    outcome_ = slot.kind;
    position_ = slot.end;
    passesLeft_.store(slot.passesLeft, std::memory_order_release);
    block = slot.block;
    hasBegun_ = true;
  } else if (hasBegun_) {
    underruns_.fetch_add(1, std::memory_order_relaxed);
  }
  taken_.store(taken, std::memory_order_release);
  if (written - taken <= kAhead / 2) requestFill();
  return isThere && outcome_ == Read::sound;
}

void AudioFilePlayer::requestFill() {
  if (isFillRequested_.exchange(true, std::memory_order_acq_rel)) return;
  decoding_->post([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->fill();
  });
}

void AudioFilePlayer::fill() {
  isFillRequested_.store(false, std::memory_order_release);
  followSeek();
  while (!isDecoded_ && decodedSeeks_ == seeks_.load(std::memory_order_acquire)) {
    const std::uint64_t written = written_.load(std::memory_order_relaxed);
    const std::uint64_t taken = taken_.load(std::memory_order_acquire);
    if (written - std::max(taken, freshFrom_) >= kAhead || written - taken >= kSlots) return;
    Slot& slot = slots_[written % kSlots];
    slot.seeks = decodedSeeks_;
    slot.kind = decoder_->next(slot.block, slot.end);
    slot.passesLeft = decoder_->passesLeft();
    isDecoded_ = slot.kind != Read::sound;
    written_.store(written + 1, std::memory_order_release);
  }
}

void AudioFilePlayer::followSeek() {
  Microseconds goal{0};
  {
    const std::lock_guard lock(seekMutex_);
    const std::uint64_t seeks = seeks_.load(std::memory_order_relaxed);
    if (std::exchange(decodedSeeks_, seeks) == seeks) return;
    goal = seekGoal_;
  }
  freshFrom_ = written_.load(std::memory_order_relaxed);
  isDecoded_ = false;
  decoder_->seek(goal, passesLeft_.load(std::memory_order_acquire));
}

}  // namespace lumo
