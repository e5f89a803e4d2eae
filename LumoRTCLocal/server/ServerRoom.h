#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/LinkObserver.h"
#include "LumoRTCLocal/server/Publication.h"
#include "LumoRTCLocal/server/RoomObserver.h"

namespace lumo {

class LiveMix;
class ServerRoom;

/// One stay of one user in one room. Outside the server it is a handle only: its fields are guarded by the
/// server's lock.
struct ServerMember {
  std::string userId;
  std::int64_t role = 0;  ///< LMRTCRoleType
  std::uint64_t arrival = 0;
  std::weak_ptr<RoomObserver> observer;
  std::shared_ptr<NetworkConnection> connection;                   ///< null: perfect
  ServerRoom* room = nullptr;                                      ///< null once the stay is over
  Publications publications;                                       ///< in the order of publication
  std::unordered_set<std::shared_ptr<Publication>> subscriptions;  ///< in all rooms
  std::weak_ptr<LinkObserver> links;
  std::vector<std::shared_ptr<ServerMember>> visits;  ///< as a guest of linked rooms

  /// The stay in that room: this one or one of the visits; null for none.
  const ServerMember* stayIn(const ServerRoom* where) const;

  /// What the member publishes under that name, or null.
  std::shared_ptr<Publication> find(const StreamName& name) const;
};

/// A room of the server: who is in it, and who hears of it. Guarded by the server's lock.
class ServerRoom {
 public:
  /// @param mix  of a live room; null in a normal one
  ServerRoom(std::string id, std::shared_ptr<LiveMix> mix);

  const std::string& id() const { return id_; }
  bool isLive() const { return mix_ != nullptr; }
  const std::shared_ptr<LiveMix>& mix() const { return mix_; }
  /// Who publishes the mixed streams and subscribes to what is mixed: nobody's guest, unseen by the members.
  ServerMember& mixer() { return *mixer_; }
  bool isEmpty() const { return members_.empty(); }

  std::shared_ptr<ServerMember> find(const std::string& userId) const;
  void add(const std::shared_ptr<ServerMember>& member);
  void remove(ServerMember& member);
  /// Makes `member` hear of the room; a member without an observer costs nothing per event.
  void listen(ServerMember& member);

  /// Takes out a guest: one that listens without being a member.
  void dismiss(ServerMember& guest);
  template <class Visit>
  void forEach(const Visit& visit) const {
    for (const auto& [arrival, member] : arrivals_) visit(*member);
  }

  /// Everybody but `except`, in the order in which they came.
  std::vector<MemberSnapshot> snapshot(const ServerMember* except) const;

  /// Posts one event to everybody who listens, except the member that caused it.
  template <class Event>
  void notify(Runner& events, const ServerMember* except, const Event& event) const {
    for (const ServerMember* listener : listeners_) {
      if (listener != except) post(events, *listener, event);
    }
  }
  template <class Event>
  static void post(Runner& events, const ServerMember& listener, const Event& event) {
    events.post([observer = listener.observer, event] {
      if (const auto target = observer.lock()) event(*target);
    });
  }

 private:
  const std::string id_;
  const std::shared_ptr<LiveMix> mix_;
  const std::shared_ptr<ServerMember> mixer_;
  std::unordered_map<std::string, std::shared_ptr<ServerMember>> members_;
  std::map<std::uint64_t, ServerMember*> arrivals_;
  std::vector<ServerMember*> listeners_;
};

}  // namespace lumo
