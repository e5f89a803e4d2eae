#include "LumoRTCLocal/sdk/LocalOtherRooms.h"

#include <utility>

#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

LocalOtherRooms::LocalOtherRooms(std::shared_ptr<const LocalContext> context, EngineDelegate delegate)
    : context_(std::move(context)), delegate_(std::move(delegate)) {}

void LocalOtherRooms::close() {
  std::map<std::string, std::shared_ptr<LocalOtherRoom>> rooms;
  {
    const std::lock_guard lock(mutex_);
    open_ = false;
    rooms.swap(rooms_);
  }
  for (const auto& [roomId, room] : rooms) room->close();
}

std::int64_t LocalOtherRooms::join(const std::string& roomId, std::shared_ptr<LocalOtherRoom>& joined) {
  const auto room = std::make_shared<LocalOtherRoom>(context_, roomId);
  const auto visit = context_->server->visit(member_, roomId, room);
  if (visit.code != LocalCodeSuccess) return visit.code;
  room->enter(visit.present);
  const std::lock_guard lock(mutex_);
  if (!open_) return LocalCodeNotInRoom;
  rooms_[roomId] = room;
  joined = room;
  return LocalCodeSuccess;
}

std::int64_t LocalOtherRooms::leave(const std::string& roomId, bool notifyFinished) {
  std::shared_ptr<LocalOtherRoom> room;
  {
    const std::lock_guard lock(mutex_);
    const auto found = rooms_.find(roomId);
    if (found == rooms_.end()) return LocalCodeOtherRoomNotJoined;
    room = std::move(found->second);
    rooms_.erase(found);
  }
  room->close();
  context_->server->endVisit(member_, roomId);
  // Somebody may have ended the link before; that is as good.
  if (notifyFinished) context_->server->unlinkRoom(member_, roomId);
  return LocalCodeSuccess;
}

void LocalOtherRooms::addReceived(std::vector<std::shared_ptr<RemoteStream>>& received) {
  const std::lock_guard lock(mutex_);
  for (const auto& [roomId, room] : rooms_) room->mirror().addReceived(received);
}

void LocalOtherRooms::linkRequested(const LinkEnd& inviter, const std::string& extra) {
  if (const auto target = delegate()) target->didRequestJoinOtherRoom(inviter.roomId, inviter.userId, extra);
}

void LocalOtherRooms::linkRequestCancelled(const LinkEnd& inviter, const std::string& extra) {
  if (const auto target = delegate())
    target->didCancelRequestOtherRoom(inviter.roomId, inviter.userId, extra);
}

void LocalOtherRooms::linkAnswered(const LinkEnd& inviter, const LinkEnd& invitee, bool agree,
                                   const std::string& extra) {
  if (const auto target = delegate()) {
    target->didResponseJoinOtherRoom(inviter.roomId, inviter.userId, invitee.roomId, invitee.userId, agree,
                                     extra);
  }
}

void LocalOtherRooms::linkFinished(const std::string& roomId, const std::string& userId) {
  if (const auto target = delegate()) target->didFinishOtherRoom(roomId, userId);
}

std::shared_ptr<LMRTCEngineEventDelegate> LocalOtherRooms::delegate() {
  {
    const std::lock_guard lock(mutex_);
    if (!open_) return nullptr;
  }
  return delegate_();
}

}  // namespace lumo
