#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

class MediaReceiver;
class Publication;

/// Sound that has come over a network, until the audio clock hands it out: at most one block per receiver in
/// 10 ms, in order. What is late makes a gap; what has to wait although nothing has been late for a second is
/// left out, so that the delay does not grow; beyond kMostBlocks the oldest one is lost. Any thread.
class JitterBuffer {
 public:
  static constexpr std::size_t kMostBlocks = 50;

  /// @param overNetwork  whether it was delayed; false only keeps it behind what was
  void push(const std::shared_ptr<Publication>& publication, const std::shared_ptr<MediaReceiver>& receiver,
            const AudioBlock& block, bool overNetwork);
  /// Whether sound for `receiver` has to go through here at present.
  bool holds(const MediaReceiver& receiver) const;
  bool isEmpty() const { return queueCount_.load(std::memory_order_relaxed) == 0; }

  /// Hands out what is due. Drops the sound of streams that are no longer subscribed, or switched off. Audio
  /// runner only.
  void play(Microseconds time);

 private:
  /// The blocks of one subscription, in a ring.
  struct Queue {
    std::weak_ptr<Publication> publication;
    std::weak_ptr<MediaReceiver> receiver;
    const MediaReceiver* key = nullptr;
    std::vector<AudioBlock> ring;
    std::size_t first = 0;
    std::size_t count = 0;
    // Of the present second.
    std::size_t ticks = 0;
    std::size_t fewest = kMostBlocks;
    bool isDelayed = false;

    /// @return whether the oldest one had to go for it
    bool push(const AudioBlock& block);
    void pop(std::size_t number);
  };
  struct Due {
    std::shared_ptr<Publication> publication;
    std::shared_ptr<MediaReceiver> receiver;
    AudioBlock block;
    bool isPlayed = false;
  };

  Queue* find(const MediaReceiver& receiver) const;
  void forgetLocked(const Queue& queue);
  bool takeDueLocked(Queue& queue);

  mutable std::mutex mutex_;                    ///< guards the queues
  std::vector<std::unique_ptr<Queue>> queues_;  // in the order in which they hand out
  std::unordered_map<const MediaReceiver*, Queue*> index_;
  std::atomic<std::size_t> queueCount_{0};
  std::vector<Due> due_;  // audio runner only; keeps its memory
};

}  // namespace lumo
