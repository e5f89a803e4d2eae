#include <algorithm>
#include <utility>

#include "LumoRTCLocal/server/LocalCodes.h"
#include "LumoRTCLocal/server/MediaServer.h"

// Links between rooms.

namespace lumo {
namespace {

LinkEnd endOf(const ServerMember& member) { return {member.room->id(), member.userId}; }

}  // namespace

void MediaServer::observeLinks(const Member& member, std::weak_ptr<LinkObserver> observer) {
  const std::lock_guard lock(mutex_);
  member->links = std::move(observer);
}

std::int64_t MediaServer::requestLink(const Member& member, const LinkEnd& invitee, bool mixes,
                                      const std::string& extra) {
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const LinkEnd inviter = endOf(*member);
  if (invitee.roomId == inviter.roomId) return LocalCodeOwnRoom;
  const auto found = rooms_.find(invitee.roomId);
  if (found == rooms_.end()) return LocalCodeUnknownRoom;
  if (!found->second->find(invitee.userId)) return LocalCodeUserNotInRoom;
  if (links_.areLinked(inviter.roomId, invitee.roomId)) return LocalCodeAlreadyLinked;
  if (!links_.invite({inviter, invitee, mixes})) return LocalCodeInvitationPending;
  tell(invitee, [inviter, extra](LinkObserver& observer) { observer.linkRequested(inviter, extra); });
  return LocalCodeSuccess;
}

std::int64_t MediaServer::cancelLinkRequest(const Member& member, const LinkEnd& invitee,
                                            const std::string& extra) {
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const LinkEnd inviter = endOf(*member);
  if (!links_.take(inviter, invitee)) return LocalCodeNoInvitation;
  tell(invitee, [inviter, extra](LinkObserver& observer) { observer.linkRequestCancelled(inviter, extra); });
  return LocalCodeSuccess;
}

std::int64_t MediaServer::answerLinkRequest(const Member& member, const LinkEnd& inviter, bool agree,
                                            bool mixes, const std::string& extra) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const LinkEnd invitee = endOf(*member);
  const auto invitation = links_.take(inviter, invitee);
  if (!invitation) return LocalCodeNoInvitation;
  // One that refuses knows; one that agrees hears of it with all others.
  const ServerMember* const except = agree ? nullptr : member.get();
  for (const std::string& roomId : {inviter.roomId, invitee.roomId}) {
    rooms_.at(roomId)->forEach([&](const ServerMember& listener) {
      if (&listener == except) return;
      postLink(listener,
               [=](LinkObserver& observer) { observer.linkAnswered(inviter, invitee, agree, extra); });
    });
  }
  if (!agree) return LocalCodeSuccess;
  linkLocked(inviter.roomId, invitee.roomId);
  setMixesLocked(inviter.roomId, invitee.roomId, invitation->mixes, aftermath);
  setMixesLocked(invitee.roomId, inviter.roomId, mixes, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::linkRoom(const Member& member, const std::string& otherRoomId, bool mixes) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  if (otherRoomId.empty()) return LocalCodeEmptyRoomId;
  if (otherRoomId == member->room->id()) return LocalCodeOwnRoom;
  linkLocked(member->room->id(), otherRoomId);
  setMixesLocked(member->room->id(), otherRoomId, mixes, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::unlinkRoom(const Member& member, const std::string& otherRoomId) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const std::string& roomId = member->room->id();
  if (!links_.areLinked(roomId, otherRoomId)) return LocalCodeNotLinked;
  if (const auto other = rooms_.find(otherRoomId); other != rooms_.end()) {
    endVisitLocked(*member, *other->second, aftermath);
  }
  finishLinkLocked(roomId, otherRoomId, *member, aftermath);
  return LocalCodeSuccess;
}

std::vector<std::string> MediaServer::linkedRooms(const std::string& roomId) const {
  const std::lock_guard lock(mutex_);
  return links_.linkedWith(roomId);
}

MediaServer::VisitResult MediaServer::visit(const Member& member, const std::string& roomId,
                                            std::weak_ptr<RoomObserver> observer) {
  const std::lock_guard lock(mutex_);
  if (!member->room) return {LocalCodeNotInRoom, {}};
  if (roomId == member->room->id()) return {LocalCodeOwnRoom, {}};
  const auto found = rooms_.find(roomId);
  if (found == rooms_.end()) return {LocalCodeUnknownRoom, {}};
  if (!links_.areLinked(member->room->id(), roomId)) return {LocalCodeNotLinked, {}};
  if (member->stayIn(found->second.get())) return {LocalCodeOtherRoomJoined, {}};
  const auto guest = std::make_shared<ServerMember>();
  guest->userId = member->userId;
  guest->room = found->second.get();
  guest->observer = std::move(observer);
  guest->room->listen(*guest);
  member->visits.push_back(guest);
  return {LocalCodeSuccess, guest->room->snapshot(nullptr)};
}

std::int64_t MediaServer::endVisit(const Member& member, const std::string& roomId) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const auto found = rooms_.find(roomId);
  const bool ended = found != rooms_.end() && endVisitLocked(*member, *found->second, aftermath);
  return ended ? LocalCodeSuccess : LocalCodeOtherRoomNotJoined;
}

void MediaServer::linkLocked(const std::string& roomId, const std::string& otherRoomId) {
  links_.link(roomId, otherRoomId);
  for (const LinkInvitation& settled : links_.takeBetween(roomId, otherRoomId)) {
    tell(settled.invitee,
         [inviter = settled.inviter](LinkObserver& observer) { observer.linkRequestCancelled(inviter, {}); });
  }
}

void MediaServer::setMixesLocked(const std::string& roomId, const std::string& otherRoomId, bool mixes,
                                 Aftermath& aftermath) {
  links_.setMixes(roomId, otherRoomId, mixes);
  mixGuests(*rooms_.at(roomId), aftermath);
}

void MediaServer::withdrawInvitationsLocked(const LinkEnd& leaver) {
  for (const auto& [inviter, invitee, mixes] : links_.takeOf(leaver)) {
    if (inviter == leaver) {
      tell(invitee,
           [inviter = leaver](LinkObserver& observer) { observer.linkRequestCancelled(inviter, {}); });
    } else {
      tell(inviter, [from = inviter, to = leaver](LinkObserver& observer) {
        observer.linkAnswered(from, to, false, {});
      });
    }
  }
}

void MediaServer::finishLinkLocked(const std::string& roomId, const std::string& otherRoomId,
                                   const ServerMember& finisher, Aftermath& aftermath) {
  links_.unlink(roomId, otherRoomId);
  const auto dismiss = [&](const std::string& fromId, const std::string& visitedId) {
    const auto from = rooms_.find(fromId);
    const auto visited = rooms_.find(visitedId);
    if (from == rooms_.end() || visited == rooms_.end()) return;
    mixGuests(*from->second, aftermath);
    from->second->forEach([&](ServerMember& visitor) {
      if (!endVisitLocked(visitor, *visited->second, aftermath)) return;
      postLink(visitor, [visitedId, userId = finisher.userId](LinkObserver& observer) {
        observer.linkFinished(visitedId, userId);
      });
    });
  };
  dismiss(roomId, otherRoomId);
  dismiss(otherRoomId, roomId);
}

bool MediaServer::endVisitLocked(ServerMember& member, const ServerRoom& room, Aftermath& aftermath) {
  const auto visit = std::ranges::find(member.visits, &room, &ServerMember::room);
  if (visit == member.visits.end()) return false;
  std::erase_if(member.subscriptions, [&](const auto& stream) {
    if (stream->publisher_->room != &room) return false;
    replaceSubscription(member, stream, nullptr, aftermath);
    return true;
  });
  (*visit)->room->dismiss(**visit);
  member.visits.erase(visit);
  return true;
}

template <class Event>
void MediaServer::tell(const LinkEnd& end, const Event& event) const {
  postLink(*rooms_.at(end.roomId)->find(end.userId), event);
}

template <class Event>
void MediaServer::postLink(const ServerMember& listener, const Event& event) const {
  if (listener.links.expired()) return;
  events_->post([observer = listener.links, event] {
    if (const auto target = observer.lock()) event(*target);
  });
}

}  // namespace lumo
