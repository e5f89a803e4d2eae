#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineState.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"

class CallFrame;
class LMRTCAudioOutputStream;
class LMRTCBaseRoom;
class LMRTCCameraVideoOutputStream;
class LMRTCIWView;
class LMRTCLocalUser;
class LMRTCOutputStream;
class LMRTCRemoteUser;
struct LMRTCIWAudioConfig;
struct LMRTCIWVideoConfig;

/// The engine in front of the media SDK: one per process, driven with plain values.
///
/// An operation runs on the caller's thread, from any thread, and returns a code at once: 0 when it was
/// accepted, a LMRTCWrapperCode when a check failed (the codes stand in the order of the checks, each with
/// one error line in the log), or a code of the SDK. A refused operation has no other effect and no callback
/// follows. The outcome of an accepted one arrives later through the callback that the operation names
/// (LMRTCIWEngineDelegate), with the SDK's code and text, on the SDK's thread unless another is named. Every
/// call and every outcome is logged (LMFwLog).
///
/// After `destroy` an instance stays usable but finds nothing: its operations return -10 or -13, whichever
/// they check first, its remaining completions are silent and no callback is made.
class LMRTCIWEngine : public LMRTCIWEngineState,
                      public std::enable_shared_from_this<LMRTCIWEngine>,
                      private LMRTCEngineEventDelegate,
                      private LMRTCRoomEventDelegate,
                      private LMRTCOtherRoomEventDelegate {
  struct PrivateKey {};

 public:
  using OptionalText = std::optional<std::string>;
  using UserIds = std::vector<std::string>;

  /// @name Lifecycle
  /// @{

  /// The process's engine, created with a default setup if there is none.
  static std::shared_ptr<LMRTCIWEngine> create();

  /// The process's engine. The first call, and the first after `destroy`, creates it and initialises the SDK
  /// from `setup`; later calls ignore their setup. Concurrent first calls create one engine. Install the
  /// media SDK first (LMRTCProvider).
  /// @param setup  shared with the engine; null acts as a setup of all false and zero
  static std::shared_ptr<LMRTCIWEngine> create(const std::shared_ptr<LMRTCIWEngineSetup>& setup);

  explicit LMRTCIWEngine(PrivateKey);
  ~LMRTCIWEngine();
  LMRTCIWEngine(const LMRTCIWEngine&) = delete;
  LMRTCIWEngine& operator=(const LMRTCIWEngine&) = delete;

  /// Empties every cache, un-initialises the SDK and gives the instance up, so that the next `create` makes a
  /// new one. It does not leave the room first and keeps the listener and the single observers installed. May
  /// be called inside any callback, but not at the same time as `create` on another thread.
  void destroy();

  /// Forgets the size and frame rate set for the inner CDN stream; every `leaveRoom` ends with it.
  void reset();

  /// The wrapper's version.
  static std::string getLumoRTCLibWrapperVersion();

  /// @}
  /// @name Room
  /// @{

  /// Joins the main room. On success `onRoomJoined` is followed by what the room already holds:
  /// `onSubRoomBanded` per linked room; per user `onUserJoined`, what the user publishes and the state of
  /// each stream; for an audience member the live mix.
  /// @param roomId  not checked here; the SDK's answer tells
  /// @param setup   media type, role and kind of join; kept, and shared with the engine, also when the join
  /// fails
  /// @return 0; LMRTCWrapperCodeParameterError when `setup` is null
  /// @callback onRoomJoined
  std::int64_t joinRoom(const std::string& roomId, const std::shared_ptr<LMRTCIWRoomSetup>& setup);

  /// Leaves the main room; nothing is checked.
  /// @return 0
  /// @callback onRoomLeft
  std::int64_t leaveRoom();

  /// The SDK's object for a remote user of the main room or, failing that, of a joined sub-room; null when
  /// nobody has that id.
  std::shared_ptr<LMRTCRemoteUser> getRemoteUser(const std::string& userId);

  /// The server's name for this stay in the room; empty while no room is joined.
  std::string getSessionId();

  /// @}
  /// @name Audio and video configuration
  /// Applied to the default streams at once; the records are only read during the call and no value is
  /// range-checked.
  /// @{

  /// Sets quality, scenario and recording volume of the microphone.
  /// @return 0; LMRTCWrapperCodeParameterError when `config` is null
  std::int64_t setAudioConfig(const LMRTCIWAudioConfig* config);

  /// Sets size, frame rate, bit rates and mirroring of the normal camera stream.
  /// @return 0; LMRTCWrapperCodeParameterError when `config` is null
  std::int64_t setVideoConfig(const LMRTCIWVideoConfig* config);

  /// The same for the normal or the small camera stream.
  /// @param tiny  true: the small stream, whose mirroring follows the normal one
  /// @return 0; LMRTCWrapperCodeParameterError when `config` is null
  std::int64_t setVideoConfig(const LMRTCIWVideoConfig* config, bool tiny);

  /// @}
  /// @name Publishing
  /// @{

  /// Publishes microphone, camera or both: as ordinary streams for a meeting member, as a live publication
  /// for a broadcaster. Codec and small stream are set from the engine setup first, even if the role is then
  /// refused.
  /// @param mediaType  LMRTCIWMediaType
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeParameterError for
  /// any other
  ///         media type, or (without a log line) any other role
  /// @callback onPublished
  std::int64_t publish(std::int64_t mediaType);

  /// Takes the streams out of the room again. Arguments and codes as for `publish`.
  /// @callback onUnpublished
  std::int64_t unpublish(std::int64_t mediaType);

  /// @}
  /// @name Subscribing
  /// Only microphone and camera streams count here, whichever room their user was found in. The outcome is
  /// reported once for each given id, found or not.
  /// @{

  /// Receives the streams of one user: the normal size.
  /// @param mediaType  LMRTCIWMediaType; any other number selects nothing
  /// @return 0; LMRTCWrapperCodeParameterError when `userId` is absent; then as for the list form
  /// @callback onSubscribed
  std::int64_t subscribe(const OptionalText& userId, std::int64_t mediaType);
  /// @param tiny  true: the small video stream
  std::int64_t subscribe(const OptionalText& userId, std::int64_t mediaType, bool tiny);

  /// Receives the streams of several users; ids that are not in the room are skipped.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeParameterError
  /// when the users
  ///         publish no such stream
  /// @callback onSubscribed
  std::int64_t subscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType);
  std::int64_t subscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType, bool tiny);

  /// Stops receiving the streams of one user, whichever size was subscribed.
  /// @return 0; LMRTCWrapperCodeParameterError when `userId` is absent; then as for the list form
  /// @callback onUnsubscribed
  std::int64_t unsubscribe(const OptionalText& userId, std::int64_t mediaType);

  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined or the list is empty;
  ///         LMRTCWrapperCodeParameterError when the users publish no such stream
  /// @callback onUnsubscribed
  std::int64_t unsubscribeWithUserIds(const UserIds& userIds, std::int64_t mediaType);

  /// Receives the live mix of a live room.
  /// @param mediaType  0 audio, 1 video, any other number both
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeParameterError
  /// when the room
  ///         has no such live stream
  /// @callback onLiveMixSubscribed
  std::int64_t subscribeLiveMix(std::int64_t mediaType);
  std::int64_t subscribeLiveMix(std::int64_t mediaType, bool tiny);

  /// Stops receiving the live mix. Arguments and codes as for `subscribeLiveMix`.
  /// @callback onLiveMixUnsubscribed
  std::int64_t unsubscribeLiveMix(std::int64_t mediaType);

  /// @}
  /// @name Video views
  /// The view is told on the calling thread; native views want the main thread. A binding does not depend on
  /// the moment of publication or subscription, but is made once: bind again when a user publishes video
  /// later.
  /// @{

  /// Shows the camera. The engine holds the view weakly.
  /// @return 0; LMRTCWrapperCodeParameterError when `view` is null
  std::int64_t setLocalView(const std::shared_ptr<LMRTCIWView>& view);
  std::int64_t setLocalViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view);

  /// Asks the camera's view to let go, if it still exists.
  /// @return 0
  std::int64_t removeLocalView();

  /// Shows the camera of a remote user; the view is told of an absent stream when the user publishes no
  /// video. The engine keeps the view until `destroy`, or until a null view replaces it.
  /// @return 0; LMRTCWrapperCodeRemoteUserNotJoined when nobody has that id
  std::int64_t setRemoteView(const std::shared_ptr<LMRTCIWView>& view, const std::string& userId);
  std::int64_t setRemoteViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view,
                                             const std::string& userId);

  /// Asks the user's view to let go; the engine still keeps it.
  /// @return 0; LMRTCWrapperCodeParameterError, without a log line, when the user has no view
  std::int64_t removeRemoteView(const std::string& userId);

  /// Shows the live mix. The engine holds the view weakly.
  /// @return 0; LMRTCWrapperCodeParameterError when `view` is null
  std::int64_t setLiveMixView(const std::shared_ptr<LMRTCIWView>& view);
  std::int64_t setLiveMixViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view);

  /// Asks the live mix's view to let go, if it still exists.
  /// @return 0
  std::int64_t removeLiveMixView();

  /// @}

 private:
  using RemoteUserPtr = std::shared_ptr<LMRTCRemoteUser>;
  using InputStreamPtr = std::shared_ptr<LMRTCInputStream>;
  using InputStreams = std::vector<InputStreamPtr>;
  using OutputStreams = std::vector<std::shared_ptr<LMRTCOutputStream>>;
  using OtherRoomPtr = std::shared_ptr<LMRTCOtherRoom>;

  // LMRTCEngineEventDelegate
  void didKicked(const std::string& roomId, std::int64_t reason) override;

  // LMRTCRoomEventDelegate
  void didJoinUser(const RemoteUserPtr& user) override;
  void didLeaveUser(const RemoteUserPtr& user) override;
  void didOfflineUser(const RemoteUserPtr& user) override;
  void didReportFirstFrame(const InputStreamPtr& stream, std::int64_t mediaType) override;
  void didPublishStreams(const InputStreams& streams) override;
  void didUnpublishStreams(const InputStreams& streams) override;
  void didPublishLiveStreams(const InputStreams& streams) override;
  void didUnpublishLiveStreams(const InputStreams& streams) override;
  void didPublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>& stream) override;
  void didUnpublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>& stream) override;
  void didAudioMute(const InputStreamPtr& stream, bool muted) override;
  void didVideoEnable(const InputStreamPtr& stream, bool enabled) override;
  void didReceiveMessage(const std::string& message) override;
  void didSwitchRoleWithUser(const RemoteUserPtr& user, std::int64_t roleType) override;
  void didReceiveSEI(const std::string& sei, const std::string& userId) override;
  void didReceiveLiveStreamSEI(const std::string& sei) override;

  // LMRTCOtherRoomEventDelegate
  void didJoinUser(const OtherRoomPtr& room, const RemoteUserPtr& user) override;
  void didOfflineUser(const OtherRoomPtr& room, const RemoteUserPtr& user) override;
  void didLeaveUser(const OtherRoomPtr& room, const RemoteUserPtr& user) override;
  void didPublishStreams(const OtherRoomPtr& room, const InputStreams& streams) override;
  void didUnpublishStreams(const OtherRoomPtr& room, const InputStreams& streams) override;
  void didReportFirstFrame(const OtherRoomPtr& room, const InputStreamPtr& stream,
                           std::int64_t mediaType) override;
  void didAudioMute(const OtherRoomPtr& room, const InputStreamPtr& stream, bool muted) override;
  void didVideoEnable(const OtherRoomPtr& room, const InputStreamPtr& stream, bool enabled) override;
  void didReceiveMessage(const OtherRoomPtr& room, const std::string& message) override;
  void didReceiveSEI(const OtherRoomPtr& room, const std::string& sei, const std::string& userId) override;

  void init(const std::shared_ptr<LMRTCIWEngineSetup>& setup);
  void emptyCaches();

  /// This engine as one of the SDK's listeners.
  template <class Delegate>
  std::weak_ptr<Delegate> asDelegate() {
    return std::shared_ptr<Delegate>(shared_from_this(), this);
  }

  /// The listener's callback: null when the listener is gone, leaves the field empty, or the engine was
  /// destroyed. Keeps the listener alive while it is held.
  template <class Callback>
  std::shared_ptr<const Callback> listener(Callback LMRTCIWEngineDelegate::*field) const;

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

  /// The main room and its local user; both or neither.
  struct JoinedRoom {
    std::shared_ptr<LMRTCRoom> room;
    std::shared_ptr<LMRTCLocalUser> localUser;
    explicit operator bool() const { return room != nullptr; }
  };
  JoinedRoom joinedRoom() const;

  /// The first room that has a remote user of that id, the main room before the sub-rooms; null when none
  /// has.
  std::shared_ptr<LMRTCBaseRoom> getRemoteUserRoom(const std::string& userId) const;

  void handleJoined(std::int64_t code, const std::shared_ptr<LMRTCRoom>& room, const LMRTCIWRoomSetup& setup);
  void replayLiveMix(const LMRTCRoom& room, const LMRTCIWRoomSetup& setup) const;
  void callbackRemoteUsers(const LMRTCBaseRoom& room) const;
  void callbackRemoteUser(const LMRTCRemoteUser& user, const std::string& roomId) const;
  void callbackStreamState(const LMRTCInputStream& stream, const std::string& roomId) const;

  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const;
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const;
  void prepareDefaultStreams(std::int64_t mediaType) const;
  OutputStreams defaultStreams(std::int64_t mediaType) const;
  std::int64_t publishLive(const CallFrame& frame, LMRTCLocalUser& localUser, std::int64_t mediaType,
                           const OutputStreams& streams);
  std::int64_t unpublishLive(const CallFrame& frame, LMRTCLocalUser& localUser, std::int64_t mediaType,
                             const OutputStreams& streams);
  InputStreams ordinaryStreams(const UserIds& userIds, std::int64_t mediaType);

  /// The main room's id for an event. Without a main room that has its local user: nothing, after an error
  /// line under `method`.
  OptionalText roomIdForEvent(const char* method) const;

  // What events of the main room and of sub-rooms have in common.
  void reportPublished(const std::string& roomId, const InputStreams& streams) const;
  void reportPublishedState(const std::string& roomId, const LMRTCInputStream& stream) const;
  void reportUnpublished(const std::string& roomId, const InputStreams& streams) const;
  void reportFirstFrame(const std::string& roomId, const LMRTCInputStream& stream, std::int64_t mediaType,
                        bool logAlways) const;

  std::atomic<bool> destroyed_ = false;
};
