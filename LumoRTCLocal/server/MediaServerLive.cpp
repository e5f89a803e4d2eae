#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "LumoRTCLocal/server/MediaServer.h"

// The live mix of live rooms.

namespace lumo {

std::int64_t MediaServer::setMixConfig(const Member& member, const LMRTCMixConfig& config) {
  std::shared_ptr<LiveMix> mix;
  {
    const std::lock_guard lock(mutex_);
    if (const std::int64_t code = checkSteering(*member)) return code;
    mix = member->room->mix();
  }
  return mix->configure(config);
}

std::int64_t MediaServer::enableCdn(const Member& member, bool enabled) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (const std::int64_t code = checkSteering(*member)) return code;
  ServerRoom& room = *member->room;
  if (!enabled) {
    withdrawCdn(room, aftermath);
    return LocalCodeSuccess;
  }
  if (room.mixer().publications.empty()) return LocalCodeNotBroadcasting;
  const auto& stream = room.mix()->cdnStream();
  if (stream->publisher_) return LocalCodeSuccess;
  stream->publisher_ = &room.mixer();
  room.mixer().publications.push_back(stream);
  room.notify(*events_, nullptr, [stream](RoomObserver& observer) { observer.cdnStreamPublished(stream); });
  return LocalCodeSuccess;
}

std::int64_t MediaServer::setCdnFormat(const Member& member, std::int64_t preset, std::int64_t fpsValue) {
  std::shared_ptr<LiveMix> mix;
  {
    const std::lock_guard lock(mutex_);
    if (!member->room) return LocalCodeNotInRoom;
    mix = member->room->mix();
    if (!mix || !mix->cdnStream()->publisher_) return LocalCodeStreamGone;
  }
  return mix->configureCdn(preset, fpsValue);
}

std::int64_t MediaServer::addPush(const Member& member, const std::string& address,
                                  MixPushes::Completion completion) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (const std::int64_t code = checkSteering(*member)) return code;
  ServerRoom& room = *member->room;
  LiveMix& mix = *room.mix();
  if (mix.inputs()->empty()) return LocalCodeNotBroadcasting;
  if (const std::int64_t code = mix.pushes().add(address, mix.pushFormat(), std::move(completion)))
    return code;
  followDemand(room, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::removePush(const Member& member, const std::string& address,
                                     MixPushes::Completion completion) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (const std::int64_t code = checkSteering(*member)) return code;
  ServerRoom& room = *member->room;
  if (const std::int64_t code = room.mix()->pushes().remove(address, std::move(completion))) return code;
  followDemand(room, aftermath);
  return LocalCodeSuccess;
}

void MediaServer::setPushFailed(MixPushes::Failed pushFailed) {
  pushFailed_.set(pushFailed ? std::make_shared<const MixPushes::Failed>(std::move(pushFailed)) : nullptr);
}

std::shared_ptr<LiveMix> MediaServer::makeMix(const JoinRequest& request) {
  return LiveMix::create(request.roomId, request.liveType != LMRTCLiveTypeAudio, timeline_, audio_,
                         [weak = weak_from_this(), roomId = request.roomId](const std::string& address,
                                                                            const std::string& error) {
                           if (const auto self = weak.lock()) self->pushFailed(roomId, address, error);
                         });
}

std::int64_t MediaServer::checkSteering(const ServerMember& member) {
  if (!member.room) return LocalCodeNotInRoom;
  if (!member.room->isLive()) return LocalCodeNotALiveRoom;
  return member.role == LMRTCRoleTypeBroadcaster ? LocalCodeSuccess : LocalCodeNotABroadcaster;
}

void MediaServer::mixPublished(ServerRoom& room, const Publications& streams, Aftermath& aftermath) {
  LiveMix& mix = *room.mix();
  const bool isFirst = mix.inputs()->empty();
  for (const auto& stream : streams) mix.add(stream);
  if (isFirst) {
    for (const auto& stream : mix.streams()) {
      stream->publisher_ = &room.mixer();
      room.mixer().publications.push_back(stream);
    }
    room.notify(*events_, nullptr,
                [mixed = mix.streams()](RoomObserver& observer) { observer.liveStreamsPublished(mixed); });
  }
  mixGuests(room, aftermath);
  mixIntoLinked(room, aftermath);
}

void MediaServer::mixUnpublished(ServerRoom& room, const Publications& streams, Aftermath& aftermath) {
  LiveMix& mix = *room.mix();
  for (const auto& stream : streams) mix.remove(*stream);
  mixGuests(room, aftermath);
  mixIntoLinked(room, aftermath);
  if (!mix.inputs()->empty()) return;
  withdrawLocked(room.mixer(), mix.streams(), aftermath);
  room.notify(*events_, nullptr,
              [mixed = mix.streams()](RoomObserver& observer) { observer.liveStreamsUnpublished(mixed); });
  withdrawCdn(room, aftermath);
  std::ranges::move(mix.pushes().takeAll(), std::back_inserter(aftermath.ended));
  aftermath.mixes.push_back(room.mix());
}

Publications MediaServer::guestsOf(const ServerRoom& room) const {
  Publications guests;
  const auto inputs = room.mix()->inputs();
  if (std::ranges::all_of(*inputs, &MixInput::isGuest)) return guests;
  for (const std::string& otherId : links_.mixedInto(room.id())) {
    const auto other = rooms_.find(otherId);
    if (other == rooms_.end() || !other->second->isLive()) continue;
    other->second->forEach([&guests](const ServerMember& member) {
      std::ranges::copy(member.publications, std::back_inserter(guests));
    });
  }
  return guests;
}

/// Takes into the mix of a room, or out of it, what has changed in the linked rooms and in the links.
void MediaServer::mixGuests(ServerRoom& room, Aftermath& aftermath) {
  if (!room.isLive()) return;
  const Publications guests = guestsOf(room);
  std::unordered_set<std::shared_ptr<Publication>> missing(guests.begin(), guests.end());
  const auto inputs = room.mix()->inputs();
  for (const auto& input : *inputs) {
    const auto& stream = input->publication();
    if (missing.erase(stream) > 0 || !input->isGuest()) continue;
    room.mix()->remove(*stream);
    if (room.mixer().subscriptions.erase(stream) > 0)
      replaceSubscription(room.mixer(), stream, nullptr, aftermath);
  }
  for (const auto& stream : guests) {
    if (missing.contains(stream)) room.mix()->add(stream, true);
  }
  followDemand(room, aftermath);
}

/// The same for all rooms that this one is linked with.
void MediaServer::mixIntoLinked(const ServerRoom& room, Aftermath& aftermath) {
  for (const std::string& otherId : links_.linkedWith(room.id())) {
    const auto other = rooms_.find(otherId);
    if (other != rooms_.end()) mixGuests(*other->second, aftermath);
  }
}

void MediaServer::withdrawCdn(ServerRoom& room, Aftermath& aftermath) {
  const auto& stream = room.mix()->cdnStream();
  if (!stream->publisher_) return;
  withdrawLocked(room.mixer(), {stream}, aftermath);
  room.notify(*events_, nullptr, [stream](RoomObserver& observer) { observer.cdnStreamUnpublished(stream); });
  followDemand(room, aftermath);
}

/// Subscribes the mix to what it needs for those who want it, and to nothing else.
void MediaServer::followDemand(ServerRoom& room, Aftermath& aftermath) {
  if (!room.isLive()) return;
  ServerMember& mixer = room.mixer();
  const auto inputs = room.mix()->inputs();
  for (const auto& input : *inputs) {
    const auto& stream = input->publication();
    const bool wanted = room.mix()->wants(stream->name().mediaType);
    if (wanted == mixer.subscriptions.contains(stream)) continue;
    const Subscription subscription{stream, input, false};
    replaceSubscription(mixer, stream, wanted ? &subscription : nullptr, aftermath);
    if (wanted) mixer.subscriptions.insert(stream);
    if (!wanted) mixer.subscriptions.erase(stream);
  }
  aftermath.mixes.push_back(room.mix());
}

void MediaServer::pushFailed(const std::string& roomId, const std::string& address,
                             const std::string& error) {
  events_->post([sink = pushFailed_.get(), address, error] {
    if (sink) (*sink)(address, error);
  });
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  const auto found = rooms_.find(roomId);
  if (found != rooms_.end()) followDemand(*found->second, aftermath);
}

}  // namespace lumo
