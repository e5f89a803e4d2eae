#pragma once

#include <string>

namespace lumo {

/// A member of a room, by name: one end of an invitation.
struct LinkEnd {
  std::string roomId;
  std::string userId;

  bool operator==(const LinkEnd&) const = default;
};

/// What a member hears of links with other rooms: one call per event, on the server's event runner, in the
/// order in which the events happened.
class LinkObserver {
 public:
  virtual ~LinkObserver() = default;

  /// The member is invited to link its room with that of `inviter`.
  virtual void linkRequested(const LinkEnd& /*inviter*/, const std::string& /*extra*/) {}
  /// That invitation was taken back.
  virtual void linkRequestCancelled(const LinkEnd& /*inviter*/, const std::string& /*extra*/) {}
  /// An invitation between this room and another one was answered.
  virtual void linkAnswered(const LinkEnd& /*inviter*/, const LinkEnd& /*invitee*/, bool /*agree*/,
                            const std::string& /*extra*/) {}
  /// The link with a room that the member has joined beside its own was ended by that user, and with it that
  /// stay.
  virtual void linkFinished(const std::string& /*roomId*/, const std::string& /*userId*/) {}
};

}  // namespace lumo
