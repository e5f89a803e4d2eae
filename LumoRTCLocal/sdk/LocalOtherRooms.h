#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalOtherRoom.h"
#include "LumoRTCLocal/server/LinkObserver.h"
#include "LumoRTCLocal/server/MediaServer.h"

namespace lumo {

/// The rooms that the local user has joined beside the main one, for one stay in that, and the way of what
/// happens to links to the engine's delegate.
class LocalOtherRooms : public LinkObserver {
 public:
  /// The engine's delegate of the moment, or null.
  using EngineDelegate = std::function<std::shared_ptr<LMRTCEngineEventDelegate>()>;

  LocalOtherRooms(std::shared_ptr<const LocalContext> context, EngineDelegate delegate);

  /// SDK thread, once, right after the main room was joined.
  void enter(MediaServer::Member member) { member_ = std::move(member); }
  /// Closes every other room; the delegate hears nothing more. Any thread, more than once.
  void close();

  // SDK thread only.

  /// @param joined  set when the answer is 0
  std::int64_t join(const std::string& roomId, std::shared_ptr<LocalOtherRoom>& joined);
  /// @param notifyFinished  ends the link for everybody
  std::int64_t leave(const std::string& roomId, bool notifyFinished);

  /// Adds all streams of these rooms that are subscribed.
  void addReceived(std::vector<std::shared_ptr<RemoteStream>>& received);

 private:
  void linkRequested(const LinkEnd& inviter, const std::string& extra) override;
  void linkRequestCancelled(const LinkEnd& inviter, const std::string& extra) override;
  void linkAnswered(const LinkEnd& inviter, const LinkEnd& invitee, bool agree,
                    const std::string& extra) override;
  void linkFinished(const std::string& roomId, const std::string& userId) override;

  /// Null once the main room has been left.
  std::shared_ptr<LMRTCEngineEventDelegate> delegate();

  const std::shared_ptr<const LocalContext> context_;
  const EngineDelegate delegate_;
  MediaServer::Member member_;  ///< set by `enter`

  std::mutex mutex_;  ///< guards what follows
  bool open_ = true;
  std::map<std::string, std::shared_ptr<LocalOtherRoom>> rooms_;
};

}  // namespace lumo
