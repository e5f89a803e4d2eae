#include "LumoRTCLocal/server/JitterBuffer.h"

#include <algorithm>

#include "LumoRTCLocal/server/Publication.h"

namespace lumo {
namespace {

constexpr std::size_t kWindow = 100;  // blocks in a second

}  // namespace

bool JitterBuffer::Queue::push(const AudioBlock& block) {
  const bool isFull = count == ring.size();
  if (isFull) pop(1);
  ring[(first + count++) % ring.size()] = block;
  return isFull;
}

void JitterBuffer::Queue::pop(std::size_t number) {
  first = (first + number) % ring.size();
  count -= number;
}

void JitterBuffer::push(const std::shared_ptr<Publication>& publication,
                        const std::shared_ptr<MediaReceiver>& receiver, const AudioBlock& block,
                        bool overNetwork) {
  bool isOneLost = false;
  {
    const std::lock_guard lock(mutex_);
    Queue* queue = find(*receiver);
    if (!queue) {
      queue = queues_.emplace_back(std::make_unique<Queue>()).get();
      queue->publication = publication;
      queue->receiver = receiver;
      queue->key = receiver.get();
      queue->ring.resize(kMostBlocks);
      index_[receiver.get()] = queue;
      queueCount_.store(queues_.size(), std::memory_order_relaxed);
    }
    isOneLost = queue->push(block);
    queue->isDelayed |= overNetwork;
  }
  if (isOneLost) receiver->mediaLost();
}

bool JitterBuffer::holds(const MediaReceiver& receiver) const {
  if (isEmpty()) return false;
  const std::lock_guard lock(mutex_);
  return find(receiver) != nullptr;
}

void JitterBuffer::play(Microseconds time) {
  if (isEmpty()) return;
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(queues_, [this](const auto& queue) {
      if (takeDueLocked(*queue)) return false;
      forgetLocked(*queue);
      return true;
    });
    queueCount_.store(queues_.size(), std::memory_order_relaxed);
  }
  for (const Due& due : due_) {
    if (due.isPlayed) due.receiver->receiveAudio(due.block, time);
  }
  due_.clear();
}

JitterBuffer::Queue* JitterBuffer::find(const MediaReceiver& receiver) const {
  const auto found = index_.find(&receiver);
  // A receiver that has gone may have had the address of one that is there.
  return found == index_.end() || found->second->receiver.expired() ? nullptr : found->second;
}

void JitterBuffer::forgetLocked(const Queue& queue) {
  const auto found = index_.find(queue.key);
  if (found != index_.end() && found->second == &queue) index_.erase(found);
}

/// @return whether the queue is still needed
bool JitterBuffer::takeDueLocked(Queue& queue) {
  // Whoever turns out to be the last to hold one of the two lets it go after the lock.
  Due& due = due_.emplace_back(Due{queue.publication.lock(), queue.receiver.lock(), {}, false});
  if (!due.publication || !due.receiver) return false;
  if (!due.publication->isEnabled() || !due.publication->reaches(*due.receiver)) return false;
  if (queue.count > 0) {
    due.block = queue.ring[queue.first];
    due.isPlayed = true;
    queue.pop(1);
  }
  queue.fewest = std::min(queue.fewest, queue.count);
  if (++queue.ticks < kWindow) return true;
  queue.pop(queue.fewest);
  queue.ticks = 0;
  queue.fewest = kMostBlocks;
  return std::exchange(queue.isDelayed, false);
}

}  // namespace lumo
