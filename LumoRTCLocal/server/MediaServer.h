#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/LinkObserver.h"
#include "LumoRTCLocal/server/LiveMix.h"
#include "LumoRTCLocal/server/Network.h"
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
class MediaServer : public std::enable_shared_from_this<MediaServer> {
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
    std::int64_t liveType = 0;               ///< LMRTCLiveType; decided by the first member, too
    std::shared_ptr<NetworkConnection> connection = {};  ///< null: perfect
  };
  struct JoinResult {
    std::int64_t code = 0;
    Member member;                           ///< null unless code is 0
    std::vector<MemberSnapshot> present;     ///< who was there before; later changes come as events
    Publications liveStreams;                ///< of the live mix
    std::shared_ptr<Publication> cdnStream;  ///< null: there is none
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
  MediaServer(std::shared_ptr<Timeline> timeline, std::shared_ptr<Runner> events,
              std::shared_ptr<AudioExchange> audio);

  /// A connection for one user, perfect at first.
  std::shared_ptr<NetworkConnection> makeConnection();

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
  /// @return what is there already, and in the rooms that it visits
  std::vector<MemberSnapshot> observe(const Member& member, std::weak_ptr<RoomObserver> observer);

  /// Tells `observer` when the member is removed from its room, and, unlike `observe`, nothing else.
  void observeRemoval(const Member& member, std::weak_ptr<RoomObserver> observer);

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
  /// @param role    LMRTCRoleType
  /// @param config  of the live mix, taken over together with the role; null: none
  std::int64_t switchRole(const Member& member, std::int64_t role, const LMRTCMixConfig* config = nullptr);
  /// Sends `sei` with the next picture of the member's default video stream.
  std::int64_t sendSei(const Member& member, const std::string& sei);

  /// The sound that enters the live mix of the member's room; nothing in a normal room.
  std::optional<Publications> liveVoices(const Member& member) const;

  // The live mix, for broadcasters of a live room. It exists while somebody publishes; its settings last as
  // long as the room.

  std::int64_t setMixConfig(const Member& member, const LMRTCMixConfig& config);
  /// Switches the inner CDN stream on or off; switching it on needs somebody who publishes.
  std::int64_t enableCdn(const Member& member, bool enabled);
  /// As MixSettings::applyCdn, for any member, while there is an inner CDN stream.
  std::int64_t setCdnFormat(const Member& member, std::int64_t preset, std::int64_t fpsValue);
  /// As MixPushes::add and MixPushes::remove. All addresses are closed when nobody publishes any more.
  std::int64_t addPush(const Member& member, const std::string& address, MixPushes::Completion completion);
  std::int64_t removePush(const Member& member, const std::string& address, MixPushes::Completion completion);
  /// Told, as an event, of every address that cannot be opened or fails later. Empty ends it.
  void setPushFailed(MixPushes::Failed pushFailed);

  // Links between rooms. A link lasts until somebody finishes it or the last member of either room has left;
  // an invitation until it is answered or cancelled, the rooms are linked or either end leaves its room.

  /// Who hears of links from now on, in place of the one that was given at the join.
  void observeLinks(const Member& member, std::weak_ptr<LinkObserver> observer);
  /// Invites a member of another room to link the two rooms.
  /// @param mixes  whether the live mix of the member's room takes in the other room, once they are linked;
  ///               the invitee decides about the mix of its own room
  std::int64_t requestLink(const Member& member, const LinkEnd& invitee, bool mixes,
                           const std::string& extra);
  std::int64_t cancelLinkRequest(const Member& member, const LinkEnd& invitee, const std::string& extra);
  /// The members of both rooms hear the answer; the invitee hears of an agreement only.
  /// @param mixes  as in requestLink, for the room of `member`; without effect unless it agrees
  std::int64_t answerLinkRequest(const Member& member, const LinkEnd& inviter, bool agree, bool mixes,
                                 const std::string& extra);
  /// Makes the member a guest of a linked room beside its own: the observer hears of that room, and its
  /// streams can be subscribed to. Nobody there sees the guest.
  VisitResult visit(const Member& member, const std::string& roomId, std::weak_ptr<RoomObserver> observer);
  /// Ends such a stay, and its subscriptions.
  /// @return LocalCodeOtherRoomNotJoined when it is over already
  std::int64_t endVisit(const Member& member, const std::string& roomId);

  /// Links the member's room with another one, in both directions, without an invitation.
  /// @param mixes  as in requestLink; replaces what was said before about the member's room
  std::int64_t linkRoom(const Member& member, const std::string& otherRoomId, bool mixes = false);
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
    std::vector<std::shared_ptr<LiveMix>> mixes;  ///< that have something to start, or are over
    MixPushes::Writers ended;                     ///< addresses to close
  };

  std::int64_t admitLocked(const JoinRequest& request, Aftermath& aftermath);
  Member addLocked(const JoinRequest& request);
  void removeLocked(const Member& member, bool offline, Aftermath& aftermath);
  void closeLocked(ServerMember& member, const Publications& streams, Aftermath& aftermath);
  void withdrawLocked(ServerMember& member, const Publications& streams, Aftermath& aftermath);
  static void replaceSubscription(ServerMember& member, const std::shared_ptr<Publication>& stream,
                                  const Subscription* replacement, Aftermath& aftermath);
  static std::int64_t checkPublish(const ServerMember& member, const Publications& streams,
                                   std::optional<bool> liveRoom);
  static std::int64_t checkRoom(const ServerMember& member, std::optional<bool> liveRoom);

  void linkLocked(const std::string& roomId, const std::string& otherRoomId);
  void setMixesLocked(const std::string& roomId, const std::string& otherRoomId, bool mixes,
                      Aftermath& aftermath);
  void withdrawInvitationsLocked(const LinkEnd& leaver);
  void finishLinkLocked(const std::string& roomId, const std::string& otherRoomId,
                        const ServerMember& finisher, Aftermath& aftermath);
  static bool endVisitLocked(ServerMember& member, const ServerRoom& room, Aftermath& aftermath);
  template <class Event>
  void tell(const LinkEnd& end, const Event& event) const;
  template <class Event>
  void postLink(const ServerMember& listener, const Event& event) const;

  std::shared_ptr<LiveMix> makeMix(const JoinRequest& request);
  static std::int64_t checkSteering(const ServerMember& member);
  void mixPublished(ServerRoom& room, const Publications& streams, Aftermath& aftermath);
  void mixUnpublished(ServerRoom& room, const Publications& streams, Aftermath& aftermath);
  Publications guestsOf(const ServerRoom& room) const;
  void mixGuests(ServerRoom& room, Aftermath& aftermath);
  void mixIntoLinked(const ServerRoom& room, Aftermath& aftermath);
  void withdrawCdn(ServerRoom& room, Aftermath& aftermath);
  static void followDemand(ServerRoom& room, Aftermath& aftermath);
  void pushFailed(const std::string& roomId, const std::string& address, const std::string& error);

  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<Runner> events_;
  const std::shared_ptr<AudioExchange> audio_;
  const std::shared_ptr<Network> network_;
  Cell<std::shared_ptr<const MixPushes::Failed>> pushFailed_;
  mutable std::mutex mutex_;  ///< guards everything below, and the members' fields
  std::unordered_map<std::string, std::unique_ptr<ServerRoom>> rooms_;
  RoomLinks links_;
  std::uint64_t arrivals_ = 0;
  std::uint64_t connections_ = 0;
};

}  // namespace lumo
