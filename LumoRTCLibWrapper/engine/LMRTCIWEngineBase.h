#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineState.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStatusReport.h"
#include "LumoRTCLibWrapper/util/LMIWCallbackGate.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"

class CallFrame;
class LMRTCAudioEffectManager;
class LMRTCAudioOutputStream;
class LMRTCBaseRoom;
class LMRTCCDNInputStream;
class LMRTCCameraVideoOutputStream;
class LMRTCInputStream;
class LMRTCLocalUser;
class LMRTCOutputStream;
class LMRTCRemoteUser;

/// What the groups of the engine's operations and events share: calling the listener, finding rooms, users
/// and streams, and the rules by which streams are announced. Nothing here is for hosts.
class LMRTCIWEngineBase : public LMRTCIWEngineState {
 protected:
  using OptionalText = std::optional<std::string>;
  using RemoteUserPtr = std::shared_ptr<LMRTCRemoteUser>;
  using InputStreamPtr = std::shared_ptr<LMRTCInputStream>;
  using InputStreams = std::vector<InputStreamPtr>;
  using OutputStreams = std::vector<std::shared_ptr<LMRTCOutputStream>>;
  using OtherRoomPtr = std::shared_ptr<LMRTCOtherRoom>;

  LMRTCIWEngineBase() = default;
  ~LMRTCIWEngineBase() = default;

  // Calling the listener; the bodies are in Notify.h

  /// The listener's callback: nothing when the listener is gone, leaves the field empty, or the engine was
  /// destroyed.
  template <class Callback>
  lumo::HostCallback<Callback> listener(Callback LMRTCIWEngineDelegate::*field) const;

  /// Calls the listener's callback, if there is one. @return whether it was called
  template <class... Parameters, class... Arguments>
  bool notify(std::function<void(Parameters...)> LMRTCIWEngineDelegate::*field,
              const Arguments&... arguments) const;

  /// Writes the listener line of an event and calls the listener's callback, if there is one. The line's
  /// values are the callback's arguments; surplus ones are not shown.
  /// @param method  the callback's name
  template <class Callback, class... Arguments>
  void announce(Callback LMRTCIWEngineDelegate::*field, const char* method, const char* keys,
                const Arguments&... arguments) const;
  /// The same with a line that shows other values.
  template <class Callback, class... Arguments>
  void announceAs(Callback LMRTCIWEngineDelegate::*field, const char* method, const char* keys,
                  lumo::FormatValues values, const Arguments&... arguments) const;

  // Rooms and users

  /// The main room and its local user; both or neither.
  struct JoinedRoom {
    std::shared_ptr<LMRTCRoom> room;
    std::shared_ptr<LMRTCLocalUser> localUser;
    explicit operator bool() const { return room != nullptr; }
  };
  JoinedRoom joinedRoom() const;

  /// A room and a remote user of it; both or neither.
  struct RemoteUserRoom {
    std::shared_ptr<LMRTCBaseRoom> room;
    RemoteUserPtr user;
  };
  /// The first room that has a remote user of that id, the main room before the sub-rooms, and that user.
  RemoteUserRoom getRemoteUserRoom(const std::string& userId) const;

  /// The main room's id for an event. Without a main room that has its local user: nothing, after an error
  /// line under `method`.
  OptionalText roomIdForEvent(const char* method) const;

  /// The main room, if there is one, then the sub-rooms.
  std::vector<std::shared_ptr<LMRTCBaseRoom>> allRooms() const;

  // What operations need, or the code of the check that failed

  /// What live-mix operations need, or the code of the check that failed.
  struct LiveMix {
    std::int64_t code;
    std::shared_ptr<LMRTCLocalUser> localUser;
    std::shared_ptr<LMRTCLiveInfo> info;
    explicit operator bool() const { return info != nullptr; }
  };
  LiveMix liveMix(const CallFrame& frame) const;
  /// What publishing and unpublishing a custom stream need, or the code of the check that failed.
  struct CustomPublication {
    std::int64_t code;
    std::shared_ptr<LMRTCLocalUser> localUser;
    std::shared_ptr<LMRTCIWCustomStream> custom;
    std::int64_t role;
  };
  CustomPublication customPublication(const CallFrame& frame, const std::string& tag) const;
  /// The inner CDN stream, or the code of the check that failed. A missing room is logged under
  /// `notJoinedMethod`.
  struct CdnStream {
    std::int64_t code;
    std::shared_ptr<LMRTCCDNInputStream> stream;
  };
  CdnStream cdnStream(const CallFrame& frame, const char* notJoinedMethod) const;

  /// What audio-effect operations need: the manager (null without an SDK) and the effect's file, or the code
  /// of the check that failed.
  struct AudioEffect {
    std::int64_t code;
    std::shared_ptr<LMRTCAudioEffectManager> manager;
    std::string url;
  };
  AudioEffect audioEffects(const CallFrame& frame) const;
  AudioEffect audioEffect(const CallFrame& frame, std::int64_t effectId, const char* missing) const;

  // The default streams

  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const;
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const;
  void prepareDefaultStreams(std::int64_t mediaType) const;
  OutputStreams defaultStreams(std::int64_t mediaType) const;
  // Announcing what rooms hold

  void replayLiveMix(const LMRTCRoom& room, const LMRTCIWRoomSetup& setup) const;
  void callbackRemoteUsers(const LMRTCBaseRoom& room) const;
  void callbackRemoteUser(const LMRTCRemoteUser& user, const std::string& roomId) const;
  void callbackStreamState(const LMRTCInputStream& stream, const std::string& roomId) const;

  // The same for events, of the main room and of sub-rooms alike
  void reportPublished(const std::string& roomId, const InputStreams& streams) const;
  void reportPublishedState(const std::string& roomId, const LMRTCInputStream& stream) const;
  void reportUnpublished(const std::string& roomId, const InputStreams& streams) const;
  void reportFirstFrame(const std::string& roomId, const LMRTCInputStream& stream, std::int64_t mediaType,
                        bool logAlways) const;

  // Keeping and reporting

  using CustomStreamCallback =
      std::function<void(const std::string& userId, const std::string& tag, std::int64_t type,
                         std::int64_t code, const std::string& message)>;
  void notifyPerStream(CustomStreamCallback LMRTCIWEngineDelegate::*field, const InputStreams& streams,
                       std::int64_t code) const;

  // Nothing is kept once the engine was destroyed.
  /// Keeps the host's object under `key`, or forgets what is there: null.
  template <class Objects, class Object>
  void keepOrForget(Objects& objects, const std::string& key, const Object& object) {
    if (const auto pass = callbackGate_.enter(); pass && object) {
      objects.insertOrAssign(key, object);
    } else {
      objects.erase(key);
    }
  }
  void keepLiveInfo(std::shared_ptr<LMRTCLiveInfo> liveInfo);
  void keepRole(std::int64_t role, std::shared_ptr<LMRTCLiveInfo> liveInfo);
  void notifyRoleSwitched(std::int64_t code) const;
  void forgetSubRoom(const std::string& roomId);

  void notifyProbeFinished(std::int64_t code, const std::string& message) const;

  lumo::HostCallback<LMRTCIWStatsDelegate> statsListener() const;
  lumo::HostCallback<LMRTCIWNetworkProbeDelegate> probeListener() const;
  /// The reported statuses by stream id, completed by those of silent remote streams.
  std::unordered_map<std::string, LMRTCLiveAudioStatus> getFullAudioStates(
      const std::vector<LMRTCLiveAudioStatus>& statuses) const;

  /// Passed by whoever calls the host, or keeps what the engine's end clears. Closed by `destroy`.
  lumo::CallbackGate callbackGate_;
};
