#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLocal/media/AudioBlock.h"

namespace lumo {

/// How many bytes of I420 a frame has.
std::size_t sizeOf(const LMRTCVideoFrame& frame);
std::size_t sizeOf(const AudioBlock& block);

/// Counts the media of one stream in one place on its way. Its figures only grow, so that any number of
/// readers can each tell what came since they last looked. Any thread.
class MediaMeter {
 public:
  struct Reading {
    std::int64_t pictures = 0;
    std::int64_t blocks = 0;  ///< of sound
    std::int64_t lost = 0;    ///< pictures or blocks
    std::int64_t bytes = 0;
    std::int64_t heardBlocks = 0;
    std::int64_t energy = 0;  ///< of the heard blocks together, each the mean square of its samples
    std::int32_t width = 0;   ///< of the newest picture
    std::int32_t height = 0;

    Reading since(const Reading& earlier) const;
    /// How loud the sound was: 0 for -60 dB and less, 100 for full scale, and even steps of dB between them;
    /// a tone of full scale has 95.
    std::int64_t audioLevel() const;
    /// The share that was lost, 0 to 1.
    float packetLoss() const;
  };

  void add(const LMRTCVideoFrame& frame);
  void add(const AudioBlock& block);
  /// Only measures how loud the block is.
  void hear(const AudioBlock& block);
  void addLost() { lost_.fetch_add(1, std::memory_order_relaxed); }

  Reading read() const;

 private:
  std::atomic<std::int64_t> pictures_{0};
  std::atomic<std::int64_t> blocks_{0};
  std::atomic<std::int64_t> lost_{0};
  std::atomic<std::int64_t> bytes_{0};
  std::atomic<std::int64_t> heardBlocks_{0};
  std::atomic<std::int64_t> energy_{0};
  std::atomic<std::int32_t> width_{0};
  std::atomic<std::int32_t> height_{0};
};

}  // namespace lumo
