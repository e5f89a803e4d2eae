#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/LinkObserver.h"
#include "LumoRTCLocal/server/Publication.h"
#include "LumoRTCLocal/server/RoomLinks.h"
#include "LumoRTCLocal/server/RoomObserver.h"
#include "LumoRTCLocal/server/ServerRoom.h"

namespace lumo {

/// The process-local media service: rooms by id, which exist while they have members. It keeps the rules of
/// rooms and tells observers what happens; media goes from publication to receiver without passing it.
///
/// Every operation may be called on any thread, takes effect at once and answers with a LocalCode; one that
/// is refused changes nothing. Events are posted to the event runner in the order in which things happen.
class MediaServer {
 public:
  using Member = std::shared_ptr<ServerMember>;

  struct JoinRequest {
    std::string roomId;
    std::string userId;
    std::int64_t roomType = 0;               ///< LMRTCRoomType; the first member makes the room
    std::int64_t role = 0;                   ///< LMRTCRoleType; always broadcaster in a normal room
    bool exclusive = false;                  ///< removes a member of the same id instead of being refused
    std::weak_ptr<RoomObserver> observer;    ///< may be empty
    std::weak_ptr<LinkObserver> links = {};  ///< may be empty
  };
  struct JoinResult {
    std::int64_t code = 0;
    Member member;                        ///< null unless code is 0
    std::vector<MemberSnapshot> present;  ///< who was there before; later changes come as events
    std::string sessionId;
  };
  struct VisitResult {
    std::int64_t code = 0;
    std::vector<MemberSnapshot> present;  ///< as in JoinResult
  };
  struct Subscription {
    std::shared_ptr<Publication> publication;
    std::shared_ptr<MediaReceiver> receiver;
    bool tiny = false;
  };

  /// @param events  runs the observers; it outlives the server
  explicit MediaServer(std::shared_ptr<Runner> events) : events_(std::move(events)) {}

  JoinResult join(const JoinRequest& request);
  /// Unpublishes and unsubscribes what the member has, then takes it out of its room.
  /// @param offline  tells the others that the connection was lost
  std::int64_t leave(const Member& member, bool offline = false);
  /// Whether the stay is not over.
  bool isPresent(const Member& member) const;
  /// Removes the member of id `userId` from the room of `member`.
  /// @param reason  for the removed member's observer
  std::int64_t kick(const Member& member, const std::string& userId, std::int64_t reason);

  /// Starts telling `observer` of the room of `member`.
  /// @return what is there already
  std::vector<MemberSnapshot> observe(const Member& member, std::weak_ptr<RoomObserver> observer);

  /// Publishes all of `streams`, or none.
  /// @param liveRoom  the kind of room that the publication is meant for; absent takes either
  std::int64_t publish(const Member& member, const Publications& streams, std::optional<bool> liveRoom = {});
  /// What `publish` would answer now.
  std::int64_t mayPublish(const Member& member, const Publications& streams,
                          std::optional<bool> liveRoom = {}) const;
  std::int64_t unpublish(const Member& member, const Publications& streams,
                         std::optional<bool> liveRoom = {});
  /// Switches a stream on or off at its source, and tells the room if it is published and this is a change.
  void setEnabled(const std::shared_ptr<Publication>& stream, bool enabled);

  /// Subscribes to all of `subscriptions`, or none. A stream that is subscribed already changes its size.
  std::int64_t subscribe(const Member& member, const std::vector<Subscription>& subscriptions);
  std::int64_t unsubscribe(const Member& member, const Publications& streams);

  /// A broadcaster that becomes audience stops publishing first.
  /// @param role  LMRTCRoleType
  std::int64_t switchRole(const Member& member, std::int64_t role);
  /// Sends `sei` with the member's default video stream, to those who have subscribed to it.
  std::int64_t sendSei(const Member& member, const std::string& sei);

  // Links between rooms. A link lasts until somebody finishes it or the last member of either room has left;
  // an invitation until it is answered or cancelled, the rooms are linked or either end leaves its room.

  /// Who hears of links from now on, in place of the one that was given at the join.
  void observeLinks(const Member& member, std::weak_ptr<LinkObserver> observer);
  /// Invites a member of another room to link the two rooms.
  std::int64_t requestLink(const Member& member, const LinkEnd& invitee, const std::string& extra);
  std::int64_t cancelLinkRequest(const Member& member, const LinkEnd& invitee, const std::string& extra);
  /// The members of both rooms hear the answer; the invitee hears of an agreement only.
  std::int64_t answerLinkRequest(const Member& member, const LinkEnd& inviter, bool agree,
                                 const std::string& extra);
  /// Makes the member a guest of a linked room beside its own: the observer hears of that room, and its
  /// streams can be subscribed to. Nobody there sees the guest.
  VisitResult visit(const Member& member, const std::string& roomId, std::weak_ptr<RoomObserver> observer);
  /// Ends such a stay, and its subscriptions; nothing happens when it is over already.
  void endVisit(const Member& member, const std::string& roomId);

  /// Links the member's room with another one, in both directions, without an invitation.
  std::int64_t linkRoom(const Member& member, const std::string& otherRoomId);
  /// Ends the link with another room, and the stays of all members of both rooms that depend on it; they are
  /// told, but for `member`.
  std::int64_t unlinkRoom(const Member& member, const std::string& otherRoomId);
  /// The rooms linked with the room of that id, in the order of linking.
  std::vector<std::string> linkedRooms(const std::string& roomId) const;

 private:
  /// What an operation leaves for the moment when its lock is free again: it is declared before the lock.
  /// Publishers hear of the new demand, and receivers that nobody else holds go.
  struct Aftermath {
    Aftermath() = default;
    Aftermath(const Aftermath&) = delete;
    Aftermath& operator=(const Aftermath&) = delete;
    ~Aftermath();

    Publications touched;
    std::vector<std::shared_ptr<const Publication::Subscribers>> released;
  };

  std::int64_t admitLocked(const JoinRequest& request, Aftermath& aftermath);
  Member addLocked(const JoinRequest& request);
  void removeLocked(const Member& member, bool offline, Aftermath& aftermath);
  void closeLocked(ServerMember& member, const Publications& streams, Aftermath& aftermath);
  static void replaceSubscription(ServerMember& member, const std::shared_ptr<Publication>& stream,
                                  const Subscription* replacement, Aftermath& aftermath);
  static std::int64_t checkPublish(const ServerMember& member, const Publications& streams,
                                   std::optional<bool> liveRoom);
  static std::int64_t checkRoom(const ServerMember& member, std::optional<bool> liveRoom);

  void linkLocked(const std::string& roomId, const std::string& otherRoomId);
  void withdrawInvitationsLocked(const LinkEnd& leaver);
  void finishLinkLocked(const std::string& roomId, const std::string& otherRoomId,
                        const ServerMember& finisher, Aftermath& aftermath);
  static bool endVisitLocked(ServerMember& member, const ServerRoom& room, Aftermath& aftermath);
  template <class Event>
  void tell(const LinkEnd& end, const Event& event) const;
  template <class Event>
  void postLink(const ServerMember& listener, const Event& event) const;

  const std::shared_ptr<Runner> events_;
  mutable std::mutex mutex_;  ///< guards everything below, and the members' fields
  std::unordered_map<std::string, std::unique_ptr<ServerRoom>> rooms_;
  RoomLinks links_;
  std::uint64_t arrivals_ = 0;
};

}  // namespace lumo
