#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "LumoRTCLocal/server/LinkObserver.h"

namespace lumo {

/// An invitation that has not been answered.
struct LinkInvitation {
  LinkEnd inviter;
  LinkEnd invitee;
  bool mixes = false;  ///< the inviter wants the invitee's room in the live mix of its own
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
  /// Sets whether the live mix of a room takes in what the other room publishes, as long as the link lasts;
  /// not at first. Says nothing about the other room's mix.
  void setMixes(const std::string& roomId, const std::string& otherRoomId, bool mixes);
  /// The rooms that the live mix of a room takes in, in the order of linking.
  std::vector<std::string> mixedInto(const std::string& roomId) const;

  /// @return false when the same invitation is pending
  bool invite(const LinkInvitation& invitation);
  /// @return nothing when there is no such invitation
  std::optional<LinkInvitation> take(const LinkEnd& inviter, const LinkEnd& invitee);
  /// Takes all invitations that a member has made or got.
  std::vector<LinkInvitation> takeOf(const LinkEnd& member);
  /// Takes all invitations between two rooms.
  std::vector<LinkInvitation> takeBetween(const std::string& roomId, const std::string& otherRoomId);

 private:
  struct Link {
    std::string otherRoomId;
    bool mixes = false;
  };

  std::vector<std::string> roomsOf(const std::string& roomId, bool (*isMeant)(const Link& link)) const;
  std::vector<LinkInvitation> takeIf(const std::function<bool(const LinkInvitation&)>& isMeant);

  std::map<std::string, std::vector<Link>> links_;  ///< by room, each link twice
  std::vector<LinkInvitation> invitations_;
};

}  // namespace lumo
