#include "LumoRTCLocal/sdk/LocalOtherRoom.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"

namespace lumo {

LocalOtherRoom::LocalOtherRoom(std::shared_ptr<const LocalContext> context, std::string roomId)
    : roomId_(std::move(roomId)), mirror_(std::make_shared<RoomMirror>(std::move(context))) {}

void LocalOtherRoom::enter(const std::vector<MemberSnapshot>& present) {
  mirror_->enter(
      present,
      [weak = weak_from_this()](const auto& stream, std::int64_t mediaType) {
        if (const auto self = weak.lock()) self->reportFirstFrame(stream, mediaType);
      },
      [weak = weak_from_this()](const std::string& sei, const std::string& userId) {
        if (const auto self = weak.lock()) self->seiReceived(sei, userId);
      });
}

void LocalOtherRoom::close() {
  open_ = false;
  delegate_.set({});
}

void LocalOtherRoom::setDelegate(std::weak_ptr<LMRTCOtherRoomEventDelegate> delegate) {
  delegate_.set(std::move(delegate));
}

std::vector<std::shared_ptr<LMRTCRemoteUser>> LocalOtherRoom::remoteUsers() const {
  if (!open_) return {};
  return mirror_->users();
}

std::shared_ptr<LMRTCRemoteUser> LocalOtherRoom::getRemoteUser(const std::string& userId) const {
  return open_ ? mirror_->findUser(userId) : nullptr;
}

void LocalOtherRoom::memberJoined(const std::string& userId) {
  if (!open_) return;
  const auto user = mirror_->addUser(userId);
  if (const auto target = delegate()) target->didJoinUser(shared_from_this(), user);
}

void LocalOtherRoom::memberLeft(const std::string& userId, bool offline) {
  if (!open_) return;
  const auto user = mirror_->removeUser(userId);
  const auto target = delegate();
  if (!target) return;
  if (offline) {
    target->didOfflineUser(shared_from_this(), user);
  } else {
    target->didLeaveUser(shared_from_this(), user);
  }
}

void LocalOtherRoom::streamsPublished(const std::vector<PublicationState>& streams) {
  if (!open_) return;
  const auto inputs = mirror_->addStreams(streams);
  if (const auto target = delegate()) target->didPublishStreams(shared_from_this(), inputs);
}

void LocalOtherRoom::streamsUnpublished(const Publications& streams) {
  if (!open_) return;
  const auto inputs = mirror_->removeStreams(streams);
  if (const auto target = delegate()) target->didUnpublishStreams(shared_from_this(), inputs);
}

void LocalOtherRoom::streamEnabled(const std::shared_ptr<Publication>& stream, bool enabled) {
  if (!open_) return;
  const auto input = mirror_->setEnabled(*stream, enabled);
  const auto target = delegate();
  if (!target) return;
  if (input->mediaType() == LMRTCMediaTypeAudio) {
    target->didAudioMute(shared_from_this(), input, !enabled);
  } else {
    target->didVideoEnable(shared_from_this(), input, enabled);
  }
}

void LocalOtherRoom::seiReceived(const std::string& sei, const std::string& userId) {
  if (!open_) return;
  if (const auto target = delegate()) target->didReceiveSEI(shared_from_this(), sei, userId);
}

void LocalOtherRoom::reportFirstFrame(const std::shared_ptr<LMRTCInputStream>& stream,
                                      std::int64_t mediaType) {
  if (!open_) return;
  if (const auto target = delegate()) target->didReportFirstFrame(shared_from_this(), stream, mediaType);
}

}  // namespace lumo
