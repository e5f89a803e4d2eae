#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "LumoRTCLocal/server/LinkObserver.h"

namespace lumo {

/// An invitation that has not been answered.
struct LinkInvitation {
  LinkEnd inviter;
  LinkEnd invitee;
};

/// Which rooms are linked, and who has invited whom to link theirs. Guarded by the server's lock.
class RoomLinks {
 public:
  /// Links two rooms, in both directions; twice is once.
  void link(const std::string& roomId, const std::string& otherRoomId);
  void unlink(const std::string& roomId, const std::string& otherRoomId);
  bool areLinked(const std::string& roomId, const std::string& otherRoomId) const;
  /// In the order of linking.
  std::vector<std::string> linkedWith(const std::string& roomId) const;

  /// @return false when the same invitation is pending
  bool invite(const LinkInvitation& invitation);
  /// @return false when there is no such invitation
  bool take(const LinkEnd& inviter, const LinkEnd& invitee);
  /// Takes all invitations that a member has made or got.
  std::vector<LinkInvitation> takeOf(const LinkEnd& member);
  /// Takes all invitations between two rooms.
  std::vector<LinkInvitation> takeBetween(const std::string& roomId, const std::string& otherRoomId);

 private:
  std::vector<LinkInvitation> takeIf(const std::function<bool(const LinkInvitation&)>& isMeant);

  std::map<std::string, std::vector<std::string>> links_;
  std::vector<LinkInvitation> invitations_;
};

}  // namespace lumo
