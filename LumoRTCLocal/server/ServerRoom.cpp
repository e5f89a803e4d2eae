#include "LumoRTCLocal/server/ServerRoom.h"

#include <algorithm>
#include <utility>

namespace lumo {

std::shared_ptr<Publication> ServerMember::find(const StreamName& name) const {
  const auto found = std::ranges::find_if(publications, [&name](const auto& publication) {
    return publication->name().tag == name.tag && publication->name().mediaType == name.mediaType;
  });
  return found == publications.end() ? nullptr : *found;
}

const ServerMember* ServerMember::stayIn(const ServerRoom* where) const {
  if (room == where) return this;
  const auto found = std::ranges::find(visits, where, &ServerMember::room);
  return found == visits.end() ? nullptr : found->get();
}

ServerRoom::ServerRoom(std::string id, std::shared_ptr<LiveMix> mix)
    : id_(std::move(id)), mix_(std::move(mix)), mixer_(std::make_shared<ServerMember>()) {
  mixer_->userId = id_;
  mixer_->room = this;
}

std::shared_ptr<ServerMember> ServerRoom::find(const std::string& userId) const {
  const auto found = members_.find(userId);
  return found == members_.end() ? nullptr : found->second;
}

void ServerRoom::add(const std::shared_ptr<ServerMember>& member) {
  member->room = this;
  members_.emplace(member->userId, member);
  arrivals_.emplace(member->arrival, member.get());
}

void ServerRoom::remove(ServerMember& member) {
  member.room = nullptr;
  std::erase(listeners_, &member);
  arrivals_.erase(member.arrival);
  members_.erase(member.userId);
}

void ServerRoom::listen(ServerMember& member) {
  if (std::ranges::find(listeners_, &member) == listeners_.end()) listeners_.push_back(&member);
}

void ServerRoom::dismiss(ServerMember& guest) {
  guest.room = nullptr;
  std::erase(listeners_, &guest);
}

std::vector<MemberSnapshot> ServerRoom::snapshot(const ServerMember* except) const {
  std::vector<MemberSnapshot> snapshots;
  snapshots.reserve(arrivals_.size());
  for (const auto& [arrival, member] : arrivals_) {
    if (member == except) continue;
    MemberSnapshot& entry = snapshots.emplace_back(MemberSnapshot{member->userId, {}});
    for (const auto& publication : member->publications) {
      entry.publications.push_back({publication, publication->isEnabled()});
    }
  }
  return snapshots;
}

}  // namespace lumo
