#include "LumoRTCLocal/server/Network.h"

namespace lumo {

Network::Network(std::shared_ptr<Timeline> timeline, std::shared_ptr<AudioExchange> sound)
    : timeline_(std::move(timeline)), sound_(std::move(sound)), runner_(timeline_->makeRunner("network")) {}

template <class Media>
bool Network::send(NetworkLink& link, const Media& media, std::weak_ptr<Publication> publication,
                   const std::shared_ptr<MediaReceiver>& receiver) {
  const auto arrival = link.carry(sizeOf(media), timeline_->now());
  if (!arrival) return false;
  std::size_t place = 0;
  {
    const std::lock_guard lock(mutex_);
    place = takePlaceLocked();
    Flight& flight = flights_[place];
    flight.publication = std::move(publication);
    flight.receiver = receiver;
    flight.isDown = receiver != nullptr;
    flight.media = media;
  }
  // The runner ends before the network does, so that its tasks need no owner; two words also fit into the
  // task without an allocation.
  runner_->postAt(*arrival, [this, place] { arrive(place); });
  return true;
}

template bool Network::send(NetworkLink&, const SentPicture&, std::weak_ptr<Publication>,
                            const std::shared_ptr<MediaReceiver>&);
template bool Network::send(NetworkLink&, const AudioBlock&, std::weak_ptr<Publication>,
                            const std::shared_ptr<MediaReceiver>&);

std::size_t Network::takePlaceLocked() {
  if (freePlaces_.empty()) {
    freePlaces_.push_back(flights_.size());
    flights_.emplace_back();
  }
  const std::size_t place = freePlaces_.back();
  freePlaces_.pop_back();
  return place;
}

void Network::arrive(std::size_t place) {
  const auto self = weak_from_this().lock();
  if (!self) return;
  Flight flight;
  {
    const std::lock_guard lock(mutex_);
    std::swap(flight, flights_[place]);
    freePlaces_.push_back(place);
  }
  const auto publication = flight.publication.lock();
  if (!publication) return;
  std::visit([&](const auto& media) { publication->arrived(media, flight.isDown, flight.receiver.lock()); },
             flight.media);
}

}  // namespace lumo
