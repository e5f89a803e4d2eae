#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Plays the sound of one file, block by block. A runner decodes ahead of the reader, up to 320 ms; `read`
/// never waits for it. At manual pace what is decoded is there before the next block is read.
///
/// Destroying a player never waits either: the file is closed on the decoding runner.
class AudioFilePlayer : public std::enable_shared_from_this<AudioFilePlayer> {
 public:
  /// Exactly one of the two is set.
  struct Opened {
    std::shared_ptr<AudioFilePlayer> player;
    std::string error;  ///< for people: the file's name and what is wrong
  };

  /// What a call of `read` gave.
  enum class Read {
    sound,     ///< the next block
    underrun,  ///< silence: decoding has not come that far yet
    ended,     ///< silence: the file was played to its end, as often as asked for
    cutOff,    ///< silence: the file stops before its announced end, and was played up to there
    failed,    ///< silence: the file cannot be read any further
  };

  /// Opens a file and begins to decode it. Missing, empty, irregular (a device, a pipe) and undecodable files
  /// give an error. Blocks while the file's beginning is read.
  /// @param decoding   decodes; several players may share one
  /// @param loopCount  how many times the file plays, without a gap; 0 and negative numbers: endlessly
  static Opened open(std::shared_ptr<Runner> decoding, const std::string& path, std::int64_t loopCount);

  /// How long the sound of a file is; 0 when it cannot be played or does not say.
  static Microseconds durationOf(const std::string& path);

  ~AudioFilePlayer();
  AudioFilePlayer(const AudioFilePlayer&) = delete;
  AudioFilePlayer& operator=(const AudioFilePlayer&) = delete;

  /// How long the file says that it is; 0 when it does not say. Any thread.
  Microseconds duration() const { return duration_; }

  /// Continues at another place of the file, as often as was still to come. Any thread.
  /// @param position  below 0 means the start; at the end of the file or behind it, this pass is over
  void seek(Microseconds position);

  /// The next 10 ms. One thread at a time; never waits. What has ended stays so until a seek.
  Read read(AudioBlock& block);

  /// Where in the file the next block starts. The thread that reads.
  Microseconds position() const { return position_; }

  /// How many blocks were asked for that had not been decoded in time; those right after the start or a seek
  /// do not count. Any thread.
  std::uint64_t underruns() const { return underruns_.load(std::memory_order_relaxed); }

 private:
  class Decoder;

  struct Slot {
    AudioBlock block;
    Microseconds end{0};  ///< where in the file the block is over
    std::uint64_t seeks = 0;
    Read kind = Read::sound;
    std::int64_t passesLeft = 0;  ///< the present one included
  };

  AudioFilePlayer(std::shared_ptr<Runner> decoding, std::unique_ptr<Decoder> decoder, std::int64_t loopCount);

  void requestFill();
  void fill();
  void followSeek();
  bool take(std::uint64_t seeks, AudioBlock& block);

  const std::shared_ptr<Runner> decoding_;
  const Microseconds duration_;

  // A ring with one writer, the decoding runner, and one reader. Both count slots from the start.
  std::vector<Slot> slots_;
  std::atomic<std::uint64_t> written_{0};
  std::atomic<std::uint64_t> taken_{0};
  /// Of the slot that was read last: after a seek that is where the count goes on, however far decoding was.
  std::atomic<std::int64_t> passesLeft_;
  std::atomic<bool> isFillRequested_{false};
  std::atomic<std::uint64_t> underruns_{0};

  /// Counts the seeks. A slot of an earlier count is stale, and skipped.
  std::atomic<std::uint64_t> seeks_{0};
  std::mutex seekMutex_;  ///< guards the goal; never taken by the reader
  Microseconds seekGoal_{0};

  // The decoding runner alone.
  std::unique_ptr<Decoder> decoder_;
  std::uint64_t decodedSeeks_ = 0;
  std::uint64_t freshFrom_ = 0;  // the first slot since the last seek
  bool isDecoded_ = false;       // the slot with the end has been written

  // The reading thread alone.
  std::uint64_t playedSeeks_ = 0;
  bool hasBegun_ = false;  // since the last seek
  Microseconds position_{0};
  Read outcome_ = Read::sound;
};

}  // namespace lumo
