#include "LumoRTCLocal/sdk/LocalRoom.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"

namespace lumo {

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

LocalRoom::LocalRoom(std::shared_ptr<const LocalContext> context, std::string roomId, Kicked onKicked)
    : context_(std::move(context)), roomId_(std::move(roomId)), onKicked_(std::move(onKicked)) {}

void LocalRoom::enter(const MediaServer::JoinResult& joined, const LocalUser::Outputs& defaults) {
  sessionId_ = joined.sessionId;
  member_ = joined.member;
  localUser_.set(std::make_shared<LocalUser>(context_, joined.member, defaults));
  for (const MemberSnapshot& member : joined.present) {
    addUser(member.userId);
    for (const PublicationState& state : member.publications) addStream(state);
  }
}

void LocalRoom::close() {
  if (!open_.exchange(false)) return;
  const auto user = localUser_.exchange(nullptr);
  context_->server->leave(member_);
  if (user) user->close();
  context_->speaker->muteReceived(false);
  context_->speaker->receivedTap().set({});
  delegate_.set({});
}

void LocalRoom::setDelegate(std::weak_ptr<LMRTCRoomEventDelegate> delegate) {
  delegate_.set(std::move(delegate));
}

std::vector<std::shared_ptr<LMRTCRemoteUser>> LocalRoom::remoteUsers() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<LMRTCRemoteUser>> users;
  users.reserve(arrivals_.size());
  for (const auto& [arrival, user] : arrivals_) users.push_back(user);
  return users;
}

std::shared_ptr<LMRTCRemoteUser> LocalRoom::getRemoteUser(const std::string& userId) const {
  return findUser(userId);
}

std::vector<std::string> LocalRoom::otherRoomIdArray() const {
  return context_->server->linkedRooms(roomId_);
}

void LocalRoom::muteAllRemoteAudio(bool mute) {
  if (open_) context_->speaker->muteReceived(mute);
}

void LocalRoom::setReceivedAudioBufferCallback(LMRTCAudioDataCallback callback) {
  if (open_) context_->speaker->receivedTap().set(std::move(callback));
}

void LocalRoom::memberJoined(const std::string& userId) {
  if (!open_) return;
  const auto user = addUser(userId);
  if (const auto target = delegate()) target->didJoinUser(user);
}

void LocalRoom::memberLeft(const std::string& userId, bool offline) {
  if (!open_) return;
  const auto user = findUser(userId);
  {
    const std::lock_guard lock(mutex_);
    arrivals_.erase(user->arrival());
    users_.erase(userId);
  }
  const auto target = delegate();
  if (!target) return;
  if (offline) {
    target->didOfflineUser(user);
  } else {
    target->didLeaveUser(user);
  }
}

void LocalRoom::streamsPublished(const std::vector<PublicationState>& streams) {
  if (!open_) return;
  Delegate::Streams inputs;
  for (const PublicationState& state : streams) inputs.push_back(addStream(state));
  if (const auto target = delegate()) target->didPublishStreams(inputs);
}

void LocalRoom::streamsUnpublished(const Publications& streams) {
  if (!open_) return;
  Delegate::Streams inputs;
  for (const auto& publication : streams) {
    const auto stream = streams_.extract(publication.get()).mapped();
    stream->setSubscribed(false);
    inputs.push_back(stream->input());
    findUser(publication->name().userId)->remove(inputs.back());
  }
  if (const auto target = delegate()) target->didUnpublishStreams(inputs);
}

void LocalRoom::streamEnabled(const std::shared_ptr<Publication>& stream, bool enabled) {
  if (!open_) return;
  const auto& changed = streams_.at(stream.get());
  changed->setEnabled(enabled);
  const auto target = delegate();
  if (!target) return;
  const auto input = changed->input();
  if (input->mediaType() == LMRTCMediaTypeAudio) {
    target->didAudioMute(input, !enabled);
  } else {
    target->didVideoEnable(input, enabled);
  }
}

void LocalRoom::roleSwitched(const std::string& userId, std::int64_t role) {
  if (!open_) return;
  if (const auto target = delegate()) target->didSwitchRoleWithUser(findUser(userId), role);
}

void LocalRoom::seiReceived(const std::string& sei, const std::string& userId) {
  if (!open_) return;
  if (const auto target = delegate()) target->didReceiveSEI(sei, userId);
}

void LocalRoom::kicked(std::int64_t reason) {
  if (open_) onKicked_(shared_from_this(), reason);
}

void LocalRoom::firstMediaArrived(const std::shared_ptr<RemoteStream>& stream) {
  context_->sdk->post([weakRoom = weak_from_this(), weakStream = std::weak_ptr<RemoteStream>(stream)] {
    const auto room = weakRoom.lock();
    const auto reported = weakStream.lock();
    if (room && reported) room->reportFirstFrame(reported);
  });
}

void LocalRoom::reportFirstFrame(const std::shared_ptr<RemoteStream>& stream) {
  if (!open_ || !stream->isSubscribed()) return;
  const auto target = delegate();
  if (target) target->didReportFirstFrame(stream->input(), stream->publication()->name().mediaType);
}

std::shared_ptr<LMRTCRoomEventDelegate> LocalRoom::delegate() const { return delegate_.get().lock(); }

std::shared_ptr<LocalRemoteUser> LocalRoom::findUser(const std::string& userId) const {
  const std::lock_guard lock(mutex_);
  const auto found = users_.find(userId);
  return found == users_.end() ? nullptr : found->second;
}

std::shared_ptr<LocalRemoteUser> LocalRoom::addUser(const std::string& userId) {
  const auto user = std::make_shared<LocalRemoteUser>(userId, ++arrivalCount_);
  const std::lock_guard lock(mutex_);
  users_.emplace(userId, user);
  arrivals_.emplace(user->arrival(), user);
  return user;
}

std::shared_ptr<LMRTCInputStream> LocalRoom::addStream(const PublicationState& state) {
  const auto stream = RemoteStream::create(context_, state, weak_from_this());
  streams_.emplace(state.publication.get(), stream);
  findUser(state.publication->name().userId)->add(stream->input());
  return stream->input();
}

}  // namespace lumo
