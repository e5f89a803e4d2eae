#include "LumoRTCLocal/server/Publication.h"

#include <algorithm>
#include <utility>

namespace lumo {

std::shared_ptr<Publication> Publication::create(StreamName name, bool enabled,
                                                 std::shared_ptr<AudioSource> audio,
                                                 DemandChanged demandChanged) {
  return std::shared_ptr<Publication>(
      new Publication(std::move(name), enabled, std::move(audio), std::move(demandChanged)));
}

Publication::Publication(StreamName name, bool enabled, std::shared_ptr<AudioSource> audio,
                         DemandChanged demandChanged)
    : name_(std::move(name)),
      audio_(std::move(audio)),
      demandChanged_(std::move(demandChanged)),
      enabled_(enabled),
      subscribers_(std::make_shared<const Subscribers>()) {}

void Publication::sendVideo(const LMRTCVideoFrame& frame, bool toTiny) const {
  if (!isEnabled()) return;
  const auto subscribers = subscribers_.get();
  for (const Subscriber& subscriber : *subscribers) {
    if (subscriber.tiny == toTiny) subscriber.receiver->receiveVideo(frame);
  }
}

void Publication::sendAudio(const AudioBlock& block, Microseconds time) const {
  if (!isEnabled()) return;
  const auto subscribers = subscribers_.get();
  for (const Subscriber& subscriber : *subscribers) subscriber.receiver->receiveAudio(block, time);
}

std::shared_ptr<const Publication::Subscribers> Publication::setSubscribers(Subscribers subscribers) {
  receiverCount_.store(subscribers.size(), std::memory_order_relaxed);
  tinyCount_.store(static_cast<std::size_t>(std::ranges::count(subscribers, true, &Subscriber::tiny)),
                   std::memory_order_relaxed);
  return subscribers_.exchange(std::make_shared<const Subscribers>(std::move(subscribers)));
}

void Publication::tellDemand() {
  if (demandChanged_) demandChanged_(shared_from_this());
}

}  // namespace lumo
