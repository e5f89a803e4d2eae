#include "LumoRTCLocal/server/Publication.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLocal/server/Network.h"

namespace lumo {
namespace {

const LMRTCVideoFrame& measured(const SentPicture& picture) { return picture.frame; }
const AudioBlock& measured(const AudioBlock& block) { return block; }

}  // namespace

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

bool Publication::addSei(const std::string& text) {
  const std::lock_guard lock(seiMutex_);
  const std::array wanted{isNormalWanted(), isTinyWanted()};
  for (std::size_t size = 0; size < wanted.size(); ++size) {
    if (wanted[size] && sei_[size].size() >= kMostSei) return false;
  }
  for (std::size_t size = 0; size < wanted.size(); ++size) {
    if (wanted[size]) sei_[size].push_back(text);
  }
  hasSei_.store(true, std::memory_order_relaxed);
  return true;
}

void Publication::sendVideo(const LMRTCVideoFrame& frame, bool toTiny) {
  if (isEnabled()) send(SentPicture{frame, takeSei(toTiny), toTiny}, std::nullopt);
}

void Publication::sendAudio(const AudioBlock& block, Microseconds time) {
  if (isEnabled()) send(block, time);
}

template <class Media>
void Publication::arrived(const Media& media, bool isDown, const std::shared_ptr<MediaReceiver>& receiver) {
  if (!isEnabled()) return;
  const auto subscribers = subscribers_.get();
  if (!isDown) return spread(media, *subscribers, std::nullopt);
  const auto found = std::ranges::find(*subscribers, receiver, &Subscriber::receiver);
  if (found != subscribers->end()) deliver(media, *found, std::nullopt);
}

template void Publication::arrived(const SentPicture&, bool, const std::shared_ptr<MediaReceiver>&);
template void Publication::arrived(const AudioBlock&, bool, const std::shared_ptr<MediaReceiver>&);

bool Publication::reaches(const MediaReceiver& receiver) const {
  const auto subscribers = subscribers_.get();
  return std::ranges::any_of(*subscribers, [&](const auto& to) { return to.receiver.get() == &receiver; });
}

std::shared_ptr<const SentPicture::Texts> Publication::takeSei(bool tiny) {
  if (!hasSei_.load(std::memory_order_relaxed)) return nullptr;
  const std::lock_guard lock(seiMutex_);
  auto texts = std::exchange(sei_[tiny ? 1 : 0], {});
  hasSei_.store(!sei_[tiny ? 0 : 1].empty(), std::memory_order_relaxed);
  return texts.empty() ? nullptr : std::make_shared<const SentPicture::Texts>(std::move(texts));
}

void Publication::dropUnwantedSei() {
  const std::lock_guard lock(seiMutex_);
  if (!isNormalWanted()) sei_[0].clear();
  if (!isTinyWanted()) sei_[1].clear();
}

bool Publication::isFor(const Subscriber& subscriber, const SentPicture& picture) {
  return subscriber.tiny == picture.tiny;
}

/// @param tick  the present 10 ms of the audio runner; nothing on other threads
template <class Media>
void Publication::send(const Media& media, std::optional<Microseconds> tick) {
  const auto subscribers = subscribers_.get();
  const auto isMeant = [&](const Subscriber& subscriber) { return isFor(subscriber, media); };
  if (std::ranges::none_of(*subscribers, isMeant)) return;
  const bool isDirect = !connection_ || connection_->up.isDirect();
  if (isDirect || connection_->network->send(connection_->up, media, weak_from_this(), {})) {
    meterOf(media).add(measured(media));
    if (isDirect) spread(media, *subscribers, tick);
    return;
  }
  meterOf(media).addLost();
  for (const Subscriber& subscriber : *subscribers) {
    if (isMeant(subscriber)) subscriber.receiver->mediaLost();
  }
}

template <class Media>
void Publication::spread(const Media& media, const Subscribers& subscribers,
                         std::optional<Microseconds> tick) {
  for (const Subscriber& subscriber : subscribers) {
    if (!isFor(subscriber, media)) continue;
    const auto& connection = subscriber.connection;
    if (!connection || connection->down.isDirect()) {
      deliver(media, subscriber, tick);
    } else if (!connection->network->send(connection->down, media, weak_from_this(), subscriber.receiver)) {
      subscriber.receiver->mediaLost();
    }
  }
}

void Publication::deliver(const SentPicture& picture, const Subscriber& subscriber,
                          std::optional<Microseconds> /*tick*/) {
  subscriber.receiver->receiveVideo(picture.frame);
  if (!picture.texts) return;
  for (const std::string& text : *picture.texts) subscriber.receiver->receiveSei(text);
}

void Publication::deliver(const AudioBlock& block, const Subscriber& subscriber,
                          std::optional<Microseconds> tick) {
  const auto& connection = connection_ ? connection_ : subscriber.connection;
  AudioExchange* const sound = connection ? &connection->network->sound() : nullptr;
  if (tick && (!sound || !sound->holds(*subscriber.receiver)))
    return subscriber.receiver->receiveAudio(block, *tick);
  sound->hold(shared_from_this(), subscriber.receiver, block, !tick);
}

std::shared_ptr<const Publication::Subscribers> Publication::setSubscribers(Subscribers subscribers) {
  receiverCount_.store(subscribers.size(), std::memory_order_relaxed);
  tinyCount_.store(static_cast<std::size_t>(std::ranges::count(subscribers, true, &Subscriber::tiny)),
                   std::memory_order_relaxed);
  dropUnwantedSei();
  return subscribers_.exchange(std::make_shared<const Subscribers>(std::move(subscribers)));
}

void Publication::tellDemand() {
  if (demandChanged_) demandChanged_(shared_from_this());
}

}  // namespace lumo
