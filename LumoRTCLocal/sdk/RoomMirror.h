#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalInputStream.h"
#include "LumoRTCLocal/server/MediaServer.h"
#include "LumoRTCLocal/server/Publication.h"
#include "LumoRTCLocal/server/RoomObserver.h"

namespace lumo {

/// Another member of a room.
class LocalRemoteUser : public LMRTCRemoteUser {
 public:
  LocalRemoteUser(std::string userId, std::uint64_t arrival)
      : arrival_(arrival), userId_(std::move(userId)) {}

  std::optional<std::string> userId() const override { return userId_; }
  std::vector<std::shared_ptr<LMRTCInputStream>> remoteStreams() const override { return streams_.get(); }

  /// The place in the order of joining.
  std::uint64_t arrival() const { return arrival_; }
  /// SDK thread only.
  void add(const std::shared_ptr<LMRTCInputStream>& stream);
  void remove(const std::shared_ptr<LMRTCInputStream>& stream);

 private:
  const std::uint64_t arrival_;
  const std::string userId_;
  Cell<std::vector<std::shared_ptr<LMRTCInputStream>>> streams_;
};

/// What the SDK's users see of a room on the server: its other members and their streams. It changes on the
/// SDK's thread only.
class RoomMirror : public RemoteStreamListener, public std::enable_shared_from_this<RoomMirror> {
 public:
  using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;
  /// Hears, on the SDK's thread, of the first media of each subscription.
  using FirstMedia =
      std::function<void(const std::shared_ptr<LMRTCInputStream>& stream, std::int64_t mediaType)>;

  /// Hears, on the SDK's thread, of the texts that come with the pictures of a user.
  using Sei = std::function<void(const std::string& sei, const std::string& userId)>;

  explicit RoomMirror(std::shared_ptr<const LocalContext> context) : context_(std::move(context)) {}

  // Any thread.

  /// In the order in which they joined.
  std::vector<std::shared_ptr<LMRTCRemoteUser>> users() const;
  std::shared_ptr<LocalRemoteUser> findUser(const std::string& userId) const;

  // SDK thread only; the names are those that the server has told of.

  /// Takes over what was there at the join; once.
  void enter(const std::vector<MemberSnapshot>& present, FirstMedia onFirstMedia, Sei onSei);
  std::shared_ptr<LocalRemoteUser> addUser(const std::string& userId);
  /// @return the user that was removed
  std::shared_ptr<LocalRemoteUser> removeUser(const std::string& userId);
  Streams addStreams(const std::vector<PublicationState>& streams);
  /// Adds streams of the live mix, which belong to no user.
  Streams addMixedStreams(const Publications& streams);
  /// @param member  the local one
  std::shared_ptr<LMRTCCDNInputStream> addCdnStream(const std::shared_ptr<Publication>& stream,
                                                    const MediaServer::Member& member);
  /// @return the streams that were removed
  Streams removeStreams(const Publications& streams);
  /// Adds all streams that are subscribed.
  void addReceived(std::vector<std::shared_ptr<RemoteStream>>& received) const;
  std::shared_ptr<LMRTCInputStream> setEnabled(const Publication& stream, bool enabled);

 private:
  void firstMediaArrived(const std::shared_ptr<RemoteStream>& stream) override;
  void seiArrived(const std::shared_ptr<RemoteStream>& stream, const std::string& text) override;

  const std::shared_ptr<const LocalContext> context_;

  mutable std::mutex mutex_;  ///< guards the two maps of users
  std::unordered_map<std::string, std::shared_ptr<LocalRemoteUser>> users_;
  std::map<std::uint64_t, std::shared_ptr<LocalRemoteUser>> arrivals_;

  // SDK thread only.
  FirstMedia onFirstMedia_;
  Sei onSei_;
  std::uint64_t arrivalCount_ = 0;
  std::unordered_map<const Publication*, std::shared_ptr<RemoteStream>> streams_;
};

}  // namespace lumo
