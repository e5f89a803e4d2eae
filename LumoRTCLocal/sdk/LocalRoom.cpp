#include "LumoRTCLocal/sdk/LocalRoom.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"

namespace lumo {

LocalRoom::LocalRoom(std::shared_ptr<const LocalContext> context, std::string roomId,
                     std::shared_ptr<LocalOtherRooms> otherRooms, Kicked onKicked)
    : context_(std::move(context)),
      roomId_(std::move(roomId)),
      otherRooms_(std::move(otherRooms)),
      onKicked_(std::move(onKicked)),
      mirror_(std::make_shared<RoomMirror>(context_)) {}

void LocalRoom::enter(const MediaServer::JoinResult& joined, const LocalUser::Outputs& defaults) {
  sessionId_ = joined.sessionId;
  member_ = joined.member;
  otherRooms_->enter(member_);
  localUser_.set(std::make_shared<LocalUser>(context_, joined.member, defaults, [weak = weak_from_this()] {
    if (const auto self = weak.lock(); self && self->open_) self->onKicked_(self, std::nullopt);
  }));
  mirror_->enter(
      joined.present,
      [weak = weak_from_this()](const auto& stream, std::int64_t mediaType) {
        if (const auto self = weak.lock()) self->reportFirstFrame(stream, mediaType);
      },
      [weak = weak_from_this()](const std::string& sei, const std::string& userId) {
        if (const auto self = weak.lock()) self->seiReceived(sei, userId);
      });
  liveStreams_.set(mirror_->addMixedStreams(joined.liveStreams));
  if (joined.cdnStream) cdnStream_.set(mirror_->addCdnStream(joined.cdnStream, member_));
}

void LocalRoom::close() {
  if (!open_.exchange(false)) return;
  otherRooms_->close();
  const auto user = localUser_.exchange(nullptr);
  context_->server->leave(member_);
  if (user) user->close();
  context_->speaker->muteReceived(false);
  context_->speaker->receivedTap().set({});
  delegate_.set({});
}

Publications LocalRoom::sent() const {
  const auto user = localUser_.get();
  return user ? user->publications() : Publications();
}

std::vector<std::shared_ptr<RemoteStream>> LocalRoom::received() const {
  std::vector<std::shared_ptr<RemoteStream>> received;
  mirror_->addReceived(received);
  otherRooms_->addReceived(received);
  return received;
}

void LocalRoom::setDelegate(std::weak_ptr<LMRTCRoomEventDelegate> delegate) {
  delegate_.set(std::move(delegate));
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
  const auto user = mirror_->addUser(userId);
  if (const auto target = delegate()) target->didJoinUser(user);
}

void LocalRoom::memberLeft(const std::string& userId, bool offline) {
  if (!open_) return;
  const auto user = mirror_->removeUser(userId);
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
  const auto inputs = mirror_->addStreams(streams);
  if (const auto target = delegate()) target->didPublishStreams(inputs);
}

void LocalRoom::streamsUnpublished(const Publications& streams) {
  if (!open_) return;
  const auto inputs = mirror_->removeStreams(streams);
  if (const auto target = delegate()) target->didUnpublishStreams(inputs);
}

void LocalRoom::streamEnabled(const std::shared_ptr<Publication>& stream, bool enabled) {
  if (!open_) return;
  const auto input = mirror_->setEnabled(*stream, enabled);
  const auto target = delegate();
  if (!target) return;
  if (input->mediaType() == LMRTCMediaTypeAudio) {
    target->didAudioMute(input, !enabled);
  } else {
    target->didVideoEnable(input, enabled);
  }
}

void LocalRoom::liveStreamsPublished(const Publications& streams) {
  if (!open_) return;
  const auto inputs = mirror_->addMixedStreams(streams);
  liveStreams_.set(inputs);
  if (const auto target = delegate()) target->didPublishLiveStreams(inputs);
}

void LocalRoom::liveStreamsUnpublished(const Publications& streams) {
  if (!open_) return;
  const auto inputs = mirror_->removeStreams(streams);
  liveStreams_.set({});
  if (const auto target = delegate()) target->didUnpublishLiveStreams(inputs);
}

void LocalRoom::cdnStreamPublished(const std::shared_ptr<Publication>& stream) {
  if (!open_) return;
  const auto input = mirror_->addCdnStream(stream, member_);
  cdnStream_.set(input);
  if (const auto target = delegate()) target->didPublishCDNStream(input);
}

void LocalRoom::cdnStreamUnpublished(const std::shared_ptr<Publication>& stream) {
  if (!open_) return;
  mirror_->removeStreams({stream});
  const auto input = cdnStream_.exchange(nullptr);
  if (const auto target = delegate()) target->didUnpublishCDNStream(input);
}

void LocalRoom::roleSwitched(const std::string& userId, std::int64_t role) {
  if (!open_) return;
  if (const auto target = delegate()) target->didSwitchRoleWithUser(mirror_->findUser(userId), role);
}

void LocalRoom::seiReceived(const std::string& sei, const std::string& userId) {
  if (!open_) return;
  if (const auto target = delegate()) target->didReceiveSEI(sei, userId);
}

void LocalRoom::kicked(std::int64_t reason) {
  if (open_) onKicked_(shared_from_this(), reason);
}

void LocalRoom::reportFirstFrame(const std::shared_ptr<LMRTCInputStream>& stream, std::int64_t mediaType) {
  if (!open_) return;
  if (const auto target = delegate()) target->didReportFirstFrame(stream, mediaType);
}

std::shared_ptr<LMRTCRoomEventDelegate> LocalRoom::delegate() const { return delegate_.get(); }

}  // namespace lumo
