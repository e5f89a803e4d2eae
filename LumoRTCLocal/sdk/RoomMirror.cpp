#include "LumoRTCLocal/sdk/RoomMirror.h"

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/sdk/LocalCdnInput.h"

namespace lumo {
namespace {

/// Whether it is not one of the live mix.
bool isOfUser(const Publication& publication) {
  const std::int64_t kind = publication.name().mediaStreamType;
  return kind == LMRTCMediaStreamTypeNormal || kind == LMRTCMediaStreamTypeCustom;
}

}  // namespace

void LocalRemoteUser::add(const std::shared_ptr<LMRTCInputStream>& stream) {
  auto streams = streams_.get();
  streams.push_back(stream);
  streams_.set(std::move(streams));
}

void LocalRemoteUser::remove(const std::shared_ptr<LMRTCInputStream>& stream) {
  auto streams = streams_.get();
  std::erase(streams, stream);
  streams_.set(std::move(streams));
}

std::vector<std::shared_ptr<LMRTCRemoteUser>> RoomMirror::users() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<LMRTCRemoteUser>> users;
  users.reserve(arrivals_.size());
  for (const auto& [arrival, user] : arrivals_) users.push_back(user);
  return users;
}

std::shared_ptr<LocalRemoteUser> RoomMirror::findUser(const std::string& userId) const {
  const std::lock_guard lock(mutex_);
  const auto found = users_.find(userId);
  return found == users_.end() ? nullptr : found->second;
}

void RoomMirror::enter(const std::vector<MemberSnapshot>& present, FirstMedia onFirstMedia, Sei onSei) {
  onSei_ = std::move(onSei);
  onFirstMedia_ = std::move(onFirstMedia);
  for (const MemberSnapshot& member : present) {
    addUser(member.userId);
    addStreams(member.publications);
  }
}

std::shared_ptr<LocalRemoteUser> RoomMirror::addUser(const std::string& userId) {
  const auto user = std::make_shared<LocalRemoteUser>(userId, ++arrivalCount_);
  const std::lock_guard lock(mutex_);
  users_.emplace(userId, user);
  arrivals_.emplace(user->arrival(), user);
  return user;
}

std::shared_ptr<LocalRemoteUser> RoomMirror::removeUser(const std::string& userId) {
  const std::lock_guard lock(mutex_);
  const auto user = users_.extract(userId).mapped();
  arrivals_.erase(user->arrival());
  return user;
}

RoomMirror::Streams RoomMirror::addStreams(const std::vector<PublicationState>& streams) {
  Streams inputs;
  for (const PublicationState& state : streams) {
    const auto stream = RemoteStream::create(context_, state, weak_from_this());
    streams_.emplace(state.publication.get(), stream);
    inputs.push_back(stream->input());
    findUser(state.publication->name().userId)->add(inputs.back());
  }
  return inputs;
}

RoomMirror::Streams RoomMirror::addMixedStreams(const Publications& streams) {
  Streams inputs;
  for (const auto& publication : streams) {
    const auto stream = RemoteStream::create(context_, {publication, true}, weak_from_this());
    streams_.emplace(publication.get(), stream);
    inputs.push_back(stream->input());
  }
  return inputs;
}

std::shared_ptr<LMRTCCDNInputStream> RoomMirror::addCdnStream(const std::shared_ptr<Publication>& publication,
                                                              const MediaServer::Member& member) {
  const auto stream = std::make_shared<LocalCdnInput>(context_, member, PublicationState{publication, true},
                                                      weak_from_this());
  streams_.emplace(publication.get(), stream);
  return stream;
}

RoomMirror::Streams RoomMirror::removeStreams(const Publications& streams) {
  Streams inputs;
  for (const auto& publication : streams) {
    const auto stream = streams_.extract(publication.get()).mapped();
    stream->setSubscribed(false);
    inputs.push_back(stream->input());
    if (isOfUser(*publication)) findUser(publication->name().userId)->remove(inputs.back());
  }
  return inputs;
}

void RoomMirror::addReceived(std::vector<std::shared_ptr<RemoteStream>>& received) const {
  for (const auto& [publication, stream] : streams_) {
    if (stream->isSubscribed()) received.push_back(stream);
  }
}

std::shared_ptr<LMRTCInputStream> RoomMirror::setEnabled(const Publication& stream, bool enabled) {
  const auto& changed = streams_.at(&stream);
  changed->setEnabled(enabled);
  return changed->input();
}

void RoomMirror::firstMediaArrived(const std::shared_ptr<RemoteStream>& stream) {
  context_->sdk->post([weakMirror = weak_from_this(), weakStream = std::weak_ptr<RemoteStream>(stream)] {
    const auto mirror = weakMirror.lock();
    const auto reported = weakStream.lock();
    if (!mirror || !reported || !reported->isSubscribed()) return;
    mirror->onFirstMedia_(reported->input(), reported->publication()->name().mediaType);
  });
}

void RoomMirror::seiArrived(const std::shared_ptr<RemoteStream>& stream, const std::string& text) {
  context_->sdk->post(
      [weakMirror = weak_from_this(), weakStream = std::weak_ptr<RemoteStream>(stream), text] {
        const auto mirror = weakMirror.lock();
        const auto carrier = weakStream.lock();
        if (!mirror || !carrier || !carrier->isSubscribed()) return;
        mirror->onSei_(text, carrier->publication()->name().userId);
      });
}

}  // namespace lumo
