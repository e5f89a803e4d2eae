#include "LumoRTCLocal/server/AudioExchange.h"

#include <algorithm>
#include <utility>

namespace lumo {

AudioExchange::AudioExchange(std::shared_ptr<Timeline> timeline)
    : timeline_(std::move(timeline)), runner_(timeline_->makeRunner("audio")) {}

void AudioExchange::update(const std::shared_ptr<Publication>& publication) {
  const std::lock_guard lock(mutex_);
  const auto place = std::ranges::find(publications_, publication);
  if (publication->isWanted()) {
    if (place == publications_.end()) publications_.push_back(publication);
    startLocked();
  } else if (place != publications_.end()) {
    publications_.erase(place);
  }
}

void AudioExchange::addListener(const std::shared_ptr<AudioTickListener>& listener, Place place) {
  const std::lock_guard lock(mutex_);
  if (std::ranges::find(listeners_, listener) == listeners_.end())
    listeners_.insert(place == Place::ahead ? listeners_.begin() : listeners_.end(), listener);
  startLocked();
}

void AudioExchange::removeListener(const std::shared_ptr<AudioTickListener>& listener) {
  const std::lock_guard lock(mutex_);
  std::erase(listeners_, listener);
}

void AudioExchange::hold(const std::shared_ptr<Publication>& publication,
                         const std::shared_ptr<MediaReceiver>& receiver, const AudioBlock& block,
                         bool overNetwork) {
  jitterBuffer_.push(publication, receiver, block, overNetwork);
  const std::lock_guard lock(mutex_);
  startLocked();
}

void AudioExchange::startLocked() {
  if (running_) return;
  running_ = true;
  schedule(timeline_->now() + kBlock);
}

void AudioExchange::schedule(Microseconds time) {
  // The runner ends before the exchange does, so that its tasks need no owner; two words also fit into the
  // task without an allocation.
  runner_->postAt(time, [this, time] { tick(time); });
}

void AudioExchange::tick(Microseconds time) {
  const auto self = weak_from_this().lock();
  if (!self) return;
  {
    const std::lock_guard lock(mutex_);
    if (publications_.empty() && listeners_.empty() && jitterBuffer_.isEmpty()) {
      running_ = false;
      return;
    }
    currentPublications_ = publications_;
    currentListeners_ = listeners_;
  }
  for (const auto& listener : currentListeners_) listener->audioTickBegins(time);
  for (const auto& publication : currentPublications_) {
    if (!publication->isWanted() || !publication->audio()->hasSound()) continue;
    publication->audio()->read(block_);
    publication->sendAudio(block_, time);
  }
  jitterBuffer_.play(time);
  for (const auto& listener : currentListeners_) listener->audioTick(time);
  currentPublications_.clear();
  currentListeners_.clear();
  schedule(std::max(time + kBlock, timeline_->now() - 10 * kBlock));
}

Publication::DemandChanged demandOf(std::weak_ptr<AudioExchange> exchange) {
  return [weak = std::move(exchange)](const std::shared_ptr<Publication>& publication) {
    if (const auto target = weak.lock()) target->update(publication);
  };
}

}  // namespace lumo
