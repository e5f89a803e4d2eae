#include "LumoRTCLocal/server/RoomLinks.h"

#include <algorithm>
#include <iterator>

namespace lumo {

void RoomLinks::link(const std::string& roomId, const std::string& otherRoomId) {
  if (areLinked(roomId, otherRoomId)) return;
  links_[roomId].push_back({otherRoomId});
  links_[otherRoomId].push_back({roomId});
}

void RoomLinks::unlink(const std::string& roomId, const std::string& otherRoomId) {
  const auto drop = [this](const std::string& from, const std::string& to) {
    std::erase_if(links_[from], [&to](const Link& link) { return link.otherRoomId == to; });
  };
  drop(roomId, otherRoomId);
  drop(otherRoomId, roomId);
  std::erase_if(links_, [](const auto& entry) { return entry.second.empty(); });
}

bool RoomLinks::areLinked(const std::string& roomId, const std::string& otherRoomId) const {
  const auto found = links_.find(roomId);
  return found != links_.end() &&
         std::ranges::find(found->second, otherRoomId, &Link::otherRoomId) != found->second.end();
}

std::vector<std::string> RoomLinks::linkedWith(const std::string& roomId) const {
  return roomsOf(roomId, [](const Link&) { return true; });
}

void RoomLinks::setMixes(const std::string& roomId, const std::string& otherRoomId, bool mixes) {
  for (Link& link : links_.at(roomId)) {
    if (link.otherRoomId == otherRoomId) link.mixes = mixes;
  }
}

std::vector<std::string> RoomLinks::mixedInto(const std::string& roomId) const {
  return roomsOf(roomId, [](const Link& link) { return link.mixes; });
}

bool RoomLinks::invite(const LinkInvitation& invitation) {
  const bool pending = std::ranges::any_of(invitations_, [&invitation](const LinkInvitation& other) {
    return other.inviter == invitation.inviter && other.invitee == invitation.invitee;
  });
  if (!pending) invitations_.push_back(invitation);
  return !pending;
}

std::optional<LinkInvitation> RoomLinks::take(const LinkEnd& inviter, const LinkEnd& invitee) {
  const auto taken = takeIf([&](const LinkInvitation& invitation) {
    return invitation.inviter == inviter && invitation.invitee == invitee;
  });
  return taken.empty() ? std::nullopt : std::optional(taken.front());
}

std::vector<LinkInvitation> RoomLinks::takeOf(const LinkEnd& member) {
  return takeIf([&member](const LinkInvitation& invitation) {
    return invitation.inviter == member || invitation.invitee == member;
  });
}

std::vector<LinkInvitation> RoomLinks::takeBetween(const std::string& roomId,
                                                   const std::string& otherRoomId) {
  return takeIf([&](const LinkInvitation& invitation) {
    const std::string& from = invitation.inviter.roomId;
    const std::string& to = invitation.invitee.roomId;
    return (from == roomId && to == otherRoomId) || (from == otherRoomId && to == roomId);
  });
}

std::vector<std::string> RoomLinks::roomsOf(const std::string& roomId,
                                            bool (*isMeant)(const Link& link)) const {
  std::vector<std::string> rooms;
  const auto found = links_.find(roomId);
  if (found == links_.end()) return rooms;
  for (const Link& link : found->second) {
    if (isMeant(link)) rooms.push_back(link.otherRoomId);
  }
  return rooms;
}

std::vector<LinkInvitation> RoomLinks::takeIf(const std::function<bool(const LinkInvitation&)>& isMeant) {
  const auto kept = std::stable_partition(invitations_.begin(), invitations_.end(), std::not_fn(isMeant));
  std::vector<LinkInvitation> taken(std::make_move_iterator(kept),
                                    std::make_move_iterator(invitations_.end()));
  invitations_.erase(kept, invitations_.end());
  return taken;
}

}  // namespace lumo
