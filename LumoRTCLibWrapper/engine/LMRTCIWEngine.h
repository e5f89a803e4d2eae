#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineBase.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOtherRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProbeTest.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoomEventDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStatusReport.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoInputStreamDelegate.h"

class CallFrame;
class LMRTCIWView;
class LMRTCLocalUser;
class LMRTCOutputStream;
class LMRTCIWCustomLayout;
class LMRTCRemoteUser;
class LMRTCStream;
struct CMSampleBuffer;
struct LMRTCAudioData;
struct LMRTCIWAudioConfig;
struct LMRTCIWVideoConfig;
struct UIImage;
struct UIPoint;

/// The engine in front of the media SDK: one per process, driven with plain values.
///
/// An operation runs on the caller's thread, from any thread, and returns a code at once: 0 when it was
/// accepted, a LMRTCWrapperCode when a check failed (the codes stand in the order of the checks, each with
/// one error line in the log), or a code of the SDK. A refused operation has no other effect and no callback
/// follows. The outcome of an accepted one arrives later through the callback that the operation names
/// (LMRTCIWEngineDelegate), with the SDK's code and text, on the SDK's thread unless another is named. Every
/// call and every outcome is logged (LMFwLog).
///
/// After `destroy` an instance stays usable but finds nothing: operations that check for the SDK, a room, a
/// stream or a view fail, those that check nothing return 0. Its remaining completions are silent and no
/// callback is made.
class LMRTCIWEngine : public LMRTCIWEngineBase,
                      public std::enable_shared_from_this<LMRTCIWEngine>,
                      private LMRTCEngineEventDelegate,
                      private LMRTCRoomEventDelegate,
                      private LMRTCOtherRoomEventDelegate,
                      private LMRTCVideoInputStreamDelegate,
                      private LMRTCStatusReportDelegate,
                      private LMRTCAudioMixerAudioPlayDelegate,
                      private LMRTCFileVideoOutputStreamDelegate,
                      private LMRTCProbeTestDelegate {
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
  ~LMRTCIWEngine() override;
  LMRTCIWEngine(const LMRTCIWEngine&) = delete;
  LMRTCIWEngine& operator=(const LMRTCIWEngine&) = delete;

  /// Empties every cache, un-initialises the SDK and gives the instance up, so that the next `create` makes a
  /// new one. It does not leave the room first and keeps the listener and the single observers installed. Not
  /// at the same time as `create` on another thread.
  ///
  /// When it has returned no callback starts any more. It waits for callbacks that run on other threads, so
  /// do not hold a lock meanwhile that a callback takes. May be called inside any callback: then it does not
  /// wait, and callbacks that run on other threads may end after it.
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
  ///         any other media type, or (without a log line) any other role
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
  ///         when the users publish no such stream
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
  ///         when the room has no such live stream
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
  /// @name Devices and muting
  /// Synchronous; what the SDK makes of a value is not observed and no value is range-checked. After
  /// `destroy` the ones that concern the default streams do nothing and return 0.
  /// @{

  /// @return 0
  std::int64_t enableMicrophone(bool enable);
  /// Whether received sound is played.
  /// @return 0
  std::int64_t enableSpeaker(bool enable);
  /// @param volume  percent of the captured level
  /// @return 0
  std::int64_t adjustLocalVolume(std::int64_t volume);
  /// Does nothing but log; kept for hosts that call it.
  /// @return 0
  std::int64_t adjustRemoteVolume(std::int64_t volume);

  /// Starts or stops the camera.
  /// @return 0
  /// @callback onCameraEnabled, on the main queue; always with code 0 and an empty message
  std::int64_t enableCamera(bool enable);
  /// Starts the camera of the given position, or stops capturing.
  /// @param camera  LMRTCIWCamera; only checked when `enable` is false
  /// @return 0; LMRTCWrapperCodeParameterError, without a log line, for LMRTCIWCameraNone
  /// @callback onCameraEnabled, on the main queue
  std::int64_t enableCamera(bool enable, std::int64_t camera);
  /// From front to back, or the reverse.
  /// @return 0
  /// @callback onCameraSwitched, on the main queue; with the camera that is in use by then
  std::int64_t switchCamera();
  /// @return LMRTCWrapperCodeInterfaceNotSupport, always: use `switchCamera` or `enableCamera`
  std::int64_t switchToCamera(std::int64_t camera);
  /// @return LMRTCIWCamera
  std::int64_t whichCamera();

  bool isCameraFocusSupported() const;
  bool isCameraExposurePositionSupported() const;
  /// @param point  in the coordinates of the preview
  /// @return 0
  std::int64_t setCameraFocusPositionInPreview(const UIPoint& point);
  std::int64_t setCameraExposurePositionInPreview(const UIPoint& point);
  /// @param orientation  the SDK's number of the orientation, passed on unchanged
  /// @return 0
  std::int64_t setCameraCaptureOrientation(std::int64_t orientation);

  /// Mutes what is sent.
  /// @param mediaType  0 microphone, 1 camera, any other number both
  /// @return 0
  std::int64_t muteLocalStream(std::int64_t mediaType, bool mute);

  /// Mutes microphone and camera streams of a user.
  /// @param mediaType  LMRTCIWMediaType; any other number selects nothing
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  ///         LMRTCWrapperCodeRemoteUserNotJoined; LMRTCWrapperCodeStreamNotExist, without a log line, when
  ///         the user publishes no such stream
  std::int64_t muteRemoteStream(const std::string& userId, std::int64_t mediaType, bool mute);

  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined
  std::int64_t muteAllRemoteAudioStreams(bool mute);

  /// Mutes the live mix.
  /// @param mediaType  LMRTCIWMediaType; any other number selects nothing
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeStreamNotExist,
  ///         without a log line, when the room has no such live stream
  std::int64_t muteLiveMixStream(std::int64_t mediaType, bool mute);

  /// @}
  /// @name Live mix
  /// For the broadcaster of a live publication. Each call changes only what it names. All return 0;
  /// LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeParameterError when there is
  /// no live publication, and where the operation names a further reason.
  /// @{

  /// @param mode  1 custom, 2 one large picture with the others over it, 3 even grid; any other number acts
  /// as 2
  /// @callback onLiveMixLayoutModeSet
  std::int64_t setLiveMixLayoutMode(std::int64_t mode);
  /// @param mode  2 shows whole pictures; any other number crops them to their places
  /// @callback onLiveMixRenderModeSet
  std::int64_t setLiveMixRenderMode(std::int64_t mode);

  /// @param color  0xRRGGBB; LMRTCWrapperCodeParameterError when the SDK refuses it
  /// @callback onLiveMixBackgroundColorSet
  std::int64_t setLiveMixBackgroundColor(std::uint64_t color);
  /// @param red,green,blue  0 to 255; LMRTCWrapperCodeParameterError when the SDK refuses them
  /// @callback onLiveMixBackgroundColorSet
  std::int64_t setLiveMixBackgroundColorWithRed(std::uint64_t red, std::uint64_t green, std::uint64_t blue);

  /// Places streams by hand and switches to the custom layout. Layouts of users or streams that are not there
  /// are left out.
  /// @param layouts  LMRTCWrapperCodeParameterError when empty
  /// @callback onLiveMixCustomLayoutsSet
  std::int64_t setLiveMixCustomLayouts(const std::vector<LMRTCIWCustomLayout>& layouts);
  /// Chooses whose sound is mixed: the first audio stream of each user. Users without one are left out.
  /// @param userIds  LMRTCWrapperCodeParameterError when empty
  /// @callback onLiveMixCustomAudiosSet
  std::int64_t setLiveMixCustomAudios(const UserIds& userIds);

  /// @param bitrate  kilobits per second
  /// @callback onLiveMixAudioBitrateSet
  std::int64_t setLiveMixAudioBitrate(std::int64_t bitrate);
  /// @param bitrate  kilobits per second, of the normal mixed stream
  /// @callback onLiveMixVideoBitrateSet
  std::int64_t setLiveMixVideoBitrate(std::int64_t bitrate);
  /// @param tiny  true: the small mixed stream; the forms without it mean the normal one
  std::int64_t setLiveMixVideoBitrate(std::int64_t bitrate, bool tiny);
  /// @param width,height  pixels; passed on unchecked
  /// @callback onLiveMixVideoResolutionSet
  std::int64_t setLiveMixVideoResolution(std::int64_t width, std::int64_t height);
  std::int64_t setLiveMixVideoResolution(std::int64_t width, std::int64_t height, bool tiny);
  /// @param fps  LMRTCIWVideoFps; any other number changes nothing
  /// @callback onLiveMixVideoFpsSet
  std::int64_t setLiveMixVideoFps(std::int64_t fps);
  std::int64_t setLiveMixVideoFps(std::int64_t fps, bool tiny);

  /// @}
  /// @name CDN
  /// @{

  /// Starts, or ends, pushing the live mix to an address.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeParameterError
  ///         when there is no live publication
  /// @callback onLiveCdnAdded, onLiveCdnRemoved
  std::int64_t addLiveCdn(const std::string& url);
  std::int64_t removeLiveCdn(const std::string& url);

  /// Switches the inner CDN stream of the room on or off. Codes as for `addLiveCdn`.
  /// @callback onLiveMixInnerCdnStreamEnabled, with the state that the server last confirmed
  std::int64_t enableLiveMixInnerCdnStream(bool enable);

  /// Receives the inner CDN stream, or stops receiving it.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeStreamNotExist
  ///         when the room has none
  /// @callback onLiveMixInnerCdnStreamSubscribed, onLiveMixInnerCdnStreamUnsubscribed
  std::int64_t subscribeLiveMixInnerCdnStream();
  std::int64_t unsubscribeLiveMixInnerCdnStream();

  /// Shows the inner CDN stream; the view is told of an absent stream when the room has none. The engine
  /// holds the view weakly.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeParameterError when `view` is null
  std::int64_t setLiveMixInnerCdnStreamView(const std::shared_ptr<LMRTCIWView>& view);
  std::int64_t setLiveMixInnerCdnStreamViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view);
  /// Asks the inner CDN stream's view to let go, if it still exists.
  /// @return 0
  std::int64_t removeLiveMixInnerCdnStreamView();

  /// Sets the size of the inner CDN stream; its frame rate is sent along as last confirmed, or -1.
  /// @param width,height  exactly one of the portrait presets of LMRTCIWConfigUtility
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  ///         LMRTCWrapperCodeStreamNotExist when the room has no such stream; LMRTCWrapperCodeParameterError
  ///         when the size is no preset
  /// @callback onLocalLiveMixInnerCdnVideoResolutionSet
  std::int64_t setLocalLiveMixInnerCdnVideoResolution(std::int64_t width, std::int64_t height);
  /// Sets the frame rate of the inner CDN stream; its size is sent along as last confirmed, or -1.
  /// @param fps  LMRTCIWVideoFps; any other number is sent as -1
  /// @return as setLocalLiveMixInnerCdnVideoResolution, but for the size
  /// @callback onLocalLiveMixInnerCdnVideoFpsSet
  std::int64_t setLocalLiveMixInnerCdnVideoFps(std::int64_t fps);

  /// Mutes the inner CDN stream here. Codes as above.
  std::int64_t muteLiveMixInnerCdnStream(bool mute);

  /// @}
  /// @name Live role
  /// @{

  /// Moves the local user between broadcaster and audience of the live room.
  /// @param role  LMRTCIWRoleLiveBroadcaster or LMRTCIWRoleLiveAudience
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  ///         -21 in a meeting room; LMRTCWrapperCodeParameterError for the role held already and for any
  ///         other number. The last three write a console line only.
  /// @callback onLiveRoleSwitched, with the role held by then, and on success as audience
  ///         onRemoteLiveMixPublished; onKicked when the server removes the local user instead
  std::int64_t switchLiveRole(std::int64_t role);

  /// @}
  /// @name Audio effects
  /// Short sounds from files, played into the room, by an id of the host's choice. All check first that a
  /// room is joined (LMRTCWrapperCodeLocalUserNotJoined); those that name an effect then return
  /// LMRTCWrapperCodeParameterError for an id that was not created.
  /// @{

  /// Registers a file under an id.
  /// @param url  path or file URL
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeParameterError when `url` is absent or
  ///         (without a log line) when the id is taken
  /// @callback onAudioEffectCreated, on the main queue
  std::int64_t createAudioEffect(const OptionalText& url, std::int64_t effectId);
  /// Frees the id; an effect that plays keeps playing.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeParameterError, without a log line
  std::int64_t releaseAudioEffect(std::int64_t effectId);
  /// Plays an effect, here and in the room.
  /// @param volume  percent of the file's level; not range-checked
  /// @param loop    how many times; the SDK's count
  std::int64_t playAudioEffect(std::int64_t effectId, std::uint64_t volume, std::int64_t loop);
  std::int64_t pauseAudioEffect(std::int64_t effectId);
  std::int64_t resumeAudioEffect(std::int64_t effectId);
  /// Stops an effect; its id stays.
  std::int64_t stopAudioEffect(std::int64_t effectId);
  /// @param volume  percent of the file's level; not range-checked
  std::int64_t adjustAudioEffect(std::int64_t effectId, std::uint64_t volume);
  /// @return the volume, or a negative code
  std::int64_t getAudioEffectVolume(std::int64_t effectId);

  std::int64_t pauseAllAudioEffects();
  std::int64_t resumeAllAudioEffects();
  std::int64_t stopAllAudioEffects();
  /// @param volume  percent, on top of each effect's own; not range-checked
  std::int64_t adjustAllAudioEffectsVolume(std::uint64_t volume);
  /// @return the volume, or a negative code
  std::int64_t getAllAudioEffectsVolume();

  /// @}
  /// @name Audio mixing
  /// One file, mixed into what the local user sends. Needs no room.
  /// @{

  /// Starts a file, in place of any other.
  /// @param url       path or file URL; kept for `getAudioMixingDuration`, even if the SDK refuses it
  /// @param mode      the SDK's number of how file and microphone go together, 0 to 2; any other number acts
  /// as 1
  /// @param playback  whether the file is played locally too
  /// @param loop      how many times it plays
  /// @return 0; LMRTCWrapperCodeParameterError when the SDK refuses the file
  /// @callback onAudioMixingStarted, on the main queue
  std::int64_t startAudioMixing(const OptionalText& url, std::int64_t mode, bool playback,
                                std::uint64_t loop);
  /// @param position  where to start, in the SDK's unit of progress
  std::int64_t startAudioMixing(const OptionalText& url, std::int64_t mode, bool playback, std::uint64_t loop,
                                double position);
  /// @return 0, whether a file plays or not
  /// @callback onAudioMixingPaused, onAudioMixingResume, onAudioMixingStopped, on the main queue
  std::int64_t pauseAudioMixing();
  std::int64_t resumeAudioMixing();
  std::int64_t stopAudioMixing();

  /// What remote users hear (publish volume) and what is played locally (playback volume), or both.
  /// @param volume  percent of the file's level, 0 to 100
  /// @return 0; LMRTCWrapperCodeParameterError when `volume` is over 100
  std::int64_t adjustAudioMixingVolume(std::uint64_t volume);
  std::int64_t adjustAudioMixingPlaybackVolume(std::uint64_t volume);
  std::int64_t getAudioMixingPlaybackVolume();
  std::int64_t adjustAudioMixingPublishVolume(std::uint64_t volume);
  std::int64_t getAudioMixingPublishVolume();

  /// @param position  in the SDK's unit of progress
  /// @return 0
  std::int64_t setAudioMixingPosition(double position);
  /// The progress that the SDK reported last, not the position set last.
  double getAudioMixingPosition();
  /// Length of the file that was started last.
  /// @return whole seconds; LMRTCWrapperCodeParameterError when none was started
  std::int64_t getAudioMixingDuration();

  /// @}
  /// @name Custom streams of the local user
  /// Media files as extra streams, each under a tag of the host's choice. Except for the views, all check
  /// first that a room is joined (LMRTCWrapperCodeLocalUserNotJoined).
  /// @{

  /// Makes a stream of a file and keeps it under `tag`, in place of any earlier one, until `destroy`.
  /// @param url       path or file URL
  /// @param replace   whether the file's sound replaces the microphone
  /// @param playback  whether the file's sound is played locally
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeParameterError when `url` is absent;
  ///         LMRTCWrapperCodeCreateCustomStreamError when the SDK makes none
  std::int64_t createCustomStreamFromFile(const OptionalText& url, const std::string& tag, bool replace,
                                          bool playback);
  /// @param config  only read during the call; `mirror` is ignored
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeParameterError when `config` is null;
  ///         LMRTCWrapperCodeStreamNotExist
  std::int64_t setCustomStreamVideoConfig(const LMRTCIWVideoConfig* config, const std::string& tag);
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeStreamNotExist
  std::int64_t muteLocalCustomStream(const std::string& tag, bool mute);

  /// Shows the stream. The engine keeps the view until `destroy`, or until another replaces it.
  /// @return 0; LMRTCWrapperCodeParameterError when `view` is null; LMRTCWrapperCodeStreamNotExist
  std::int64_t setLocalCustomStreamView(const std::shared_ptr<LMRTCIWView>& view, const std::string& tag);
  std::int64_t setLocalCustomStreamViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view,
                                                        const std::string& tag);
  /// @return 0; LMRTCWrapperCodeParameterError, without a log line, when the tag has no view
  std::int64_t removeLocalCustomStreamView(const std::string& tag);

  /// Publishes the stream. At the end of the file the engine unpublishes it by itself.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeStreamNotExist;
  ///         LMRTCWrapperCodeParameterError, without a log line, for any other role than member and
  ///         broadcaster
  /// @callback onCustomStreamPublished when reading starts or fails; onCustomStreamPublishFinished at the end
  std::int64_t publishCustomStream(const std::string& tag);
  /// Codes as for `publishCustomStream`.
  /// @callback onCustomStreamUnpublished
  std::int64_t unpublishCustomStream(const std::string& tag);

  /// @}
  /// @name Custom streams of remote users
  /// Named by user id and tag. Except for `getCustomStreams`, all return 0;
  /// LMRTCWrapperCodeLocalUserNotJoined when no room is joined; LMRTCWrapperCodeRemoteUserNotJoined;
  /// LMRTCWrapperCodeStreamNotExist when the user has no such stream.
  /// @{

  /// The SDK's streams of that tag.
  /// @param mediaType  LMRTCIWMediaType; any other number selects nothing
  std::vector<std::shared_ptr<LMRTCInputStream>> getCustomStreams(
      const std::shared_ptr<LMRTCRemoteUser>& user, const std::string& tag, std::int64_t mediaType);
  std::int64_t muteRemoteCustomStream(const std::string& userId, const std::string& tag,
                                      std::int64_t mediaType, bool mute);

  /// Shows the stream. The engine keeps the view until `destroy`, or until another replaces it.
  /// @return also LMRTCWrapperCodeParameterError, before the user is looked up, when `view` is null
  std::int64_t setRemoteCustomStreamView(const std::shared_ptr<LMRTCIWView>& view, const std::string& userId,
                                         const std::string& tag);
  std::int64_t setRemoteCustomStreamViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view,
                                                         const std::string& userId, const std::string& tag);
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined; LMRTCWrapperCodeParameterError, without a log line, when
  ///         there is no view
  std::int64_t removeRemoteCustomStreamView(const std::string& userId, const std::string& tag);

  /// @param tiny  true: the small video stream
  /// @callback onCustomStreamSubscribed
  std::int64_t subscribeCustomStream(const std::string& userId, const std::string& tag,
                                     std::int64_t mediaType, bool tiny);
  /// @callback onCustomStreamUnsubscribed
  std::int64_t unsubscribeCustomStream(const std::string& userId, const std::string& tag,
                                       std::int64_t mediaType);

  /// @}
  /// @name Sub-rooms
  /// Links between rooms: a user invites one of another room; when that one agrees, each side joins the
  /// other's room.
  /// @{

  /// Invites a user of another room.
  /// @param autoLayout  whether the users of the other room join the live mix of this room by themselves,
  ///                    once the rooms are linked; the one who answers decides the same for his room
  /// @param extra       a text for the other end
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined
  /// @callback onJoinSubRoomRequested
  std::int64_t requestJoinSubRoom(const std::string& roomId, const std::string& userId, bool autoLayout,
                                  const std::string& extra);
  /// Takes an invitation back. Codes as above.
  /// @callback onJoinSubRoomRequestCanceled
  std::int64_t cancelJoinSubRoomRequest(const std::string& roomId, const std::string& userId,
                                        const std::string& extra);
  /// Answers an invitation. Codes as above.
  /// @param roomId,userId  of the inviter
  /// @param autoLayout     as above; without effect unless `agree`
  /// @callback onJoinSubRoomRequestResponded
  std::int64_t responseJoinSubRoomRequest(const std::string& roomId, const std::string& userId, bool agree,
                                          bool autoLayout, const std::string& extra);

  /// Joins another room beside the main one. On success `onSubRoomJoined` is followed by `onSubRoomBanded`
  /// and by the users and streams that the room already holds.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  /// @callback onSubRoomJoined
  std::int64_t joinSubRoom(const std::string& roomId);
  /// @param disband  whether the link ends for everybody
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  /// @callback onSubRoomLeft
  std::int64_t leaveSubRoom(const std::string& roomId, bool disband);

  /// @}
  /// @name Diagnostics and extras
  /// @{

  /// Draws a picture over the camera's.
  /// @param x,y   place of the watermark's top left corner, as the SDK counts it
  /// @param zoom  size of the watermark, as the SDK counts it
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeParameterError when `image` is null
  /// @callback onWatermarkSet, on the main queue, with 0 or LMRTCWrapperCodeWaterMarkError
  std::int64_t setWatermark(const std::shared_ptr<const UIImage>& image, double x, double y, double zoom);
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  /// @callback onWatermarkRemoved, on the main queue, with 0 or LMRTCWrapperCodeWaterMarkError
  std::int64_t removeWatermark();

  /// Plays back what the microphone heard, `timeInterval` seconds later.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t startEchoTest(std::int64_t timeInterval);
  std::int64_t stopEchoTest();

  /// Measures the network up and down; results come to `observer`, which is held weakly.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeParameterError when `observer` is null
  /// @callback onNetworkProbeStarted
  std::int64_t startNetworkProbe(const std::shared_ptr<LMRTCIWNetworkProbeDelegate>& observer);
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  /// @callback onNetworkProbeStopped
  std::int64_t stopNetworkProbe();

  /// Switches texts in the video stream on or off.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeLocalUserNotJoined when no room is joined
  /// @callback onSeiEnabled, with the state that is in force now
  std::int64_t enableSei(bool enable);
  /// Sends a text with the next picture.
  /// @return the SDK's code; LMRTCWrapperCodeEngineDestroyed; LMRTCWrapperCodeLocalUserNotJoined when no room
  /// is joined
  std::int64_t sendSei(const std::string& sei);

  /// Connects to the media server ahead of the next join, which then takes less time.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t preconnectToMediaServer();

  /// @}
  /// @name Raw media observers
  /// Each installs one observer and hooks the SDK, or, with a null observer, removes it and the hook.
  /// Observers are called on the SDK's media threads (LMRTCIWMediaObservers.h). They may come and go while
  /// media flows: after the removing call has returned, at most a call in progress still runs. Single
  /// observers are held weakly, those of a user or tag until they are removed or the engine is destroyed.
  /// @{

  using AudioObserver = std::shared_ptr<LMRTCIWAudioFrameDelegate>;
  using SampleObserver = std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate>;
  using PixelObserver = std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate>;

  /// Watches what the microphone captures.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t setLocalAudioCapturedDelegate(const AudioObserver& observer);

  /// Watches the sound that is sent; `renderTimeMs` is 0.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t setLocalAudioMixedDelegate(const AudioObserver& observer);

  /// Watches the mix of everything that is received; `renderTimeMs` is 0.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined
  std::int64_t setRemoteAudioMixedDelegate(const AudioObserver& observer);

  /// Watches the microphone of a user of the main room. Does nothing, and does not keep the observer, while
  /// the user publishes none.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  /// LMRTCWrapperCodeRemoteUserNotJoined
  std::int64_t setRemoteAudioReceivedDelegate(const AudioObserver& observer, const std::string& userId);

  /// Watches, and may replace, the pictures of the camera before they are sent.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t setLocalVideoProcessedDelegate(const SampleObserver& observer);

  /// Watches the decoded camera pictures of a user of the main room. Does nothing, and does not keep the
  /// observer, while the user publishes none.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  /// LMRTCWrapperCodeRemoteUserNotJoined
  std::int64_t setRemoteVideoProcessedDelegate(const PixelObserver& observer, const std::string& userId);

  /// Watches, and may replace, the pictures of a custom stream of the local user.
  /// @return 0; LMRTCWrapperCodeStreamNotExist when there is none of that tag;
  ///         LMRTCWrapperCodeInterfaceNotSupport, without a log line, when it is not a file
  std::int64_t setLocalCustomVideoProcessedDelegate(const SampleObserver& observer, const std::string& tag);

  /// Watches the decoded pictures of a remote custom stream. The observer is kept, or removed, even if user
  /// or stream are then not found.
  /// @return 0; LMRTCWrapperCodeLocalUserNotJoined when no room is joined;
  ///         LMRTCWrapperCodeRemoteUserNotJoined; LMRTCWrapperCodeStreamNotExist
  std::int64_t setRemoteCustomVideoProcessedDelegate(const PixelObserver& observer, const std::string& userId,
                                                     const std::string& tag);

  /// Watches the sound of a remote custom stream. Arguments and codes as for the pictures.
  std::int64_t setRemoteCustomAudioReceivedDelegate(const AudioObserver& observer, const std::string& userId,
                                                    const std::string& tag);

  /// @}
  /// @name Statistics
  /// @{

  /// Installs or, with null, removes the listener for statistics (LMRTCIWStatsDelegate); held weakly.
  /// @return 0; LMRTCWrapperCodeEngineDestroyed
  std::int64_t setStatsDelegate(const std::shared_ptr<LMRTCIWStatsDelegate>& observer);

  /// @}

 private:
  // LMRTCEngineEventDelegate
  void didKicked(const std::string& roomId, std::int64_t reason) override;
  void didRequestJoinOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                               const std::string& extra) override;
  void didCancelRequestOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                                 const std::string& extra) override;
  void didResponseJoinOtherRoom(const std::string& inviterRoomId, const std::string& inviterUserId,
                                const std::string& inviteeRoomId, const std::string& inviteeUserId,
                                bool agree, const std::string& extra) override;
  void didFinishOtherRoom(const std::string& roomId, const std::string& userId) override;

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

  // LMRTCVideoInputStreamDelegate
  void willRenderCVPixelBufferRef(const CVPixelBufferRef& pixelBuffer,
                                  const std::shared_ptr<LMRTCVideoInputStream>& stream) override;

  // LMRTCStatusReportDelegate
  void didReportStatusForm(const LMRTCStatusForm& form) override;
  void didReportLiveAudioStatus(const std::vector<LMRTCLiveAudioStatus>& statuses) override;

  // LMRTCAudioMixerAudioPlayDelegate
  void didReportPlayingProgress(float progress) override;
  void didAudioMixingStateChanged(std::uint64_t state, std::uint64_t reason) override;

  // LMRTCFileVideoOutputStreamDelegate
  using FileStreamPtr = std::shared_ptr<LMRTCFileVideoOutputStream>;
  void fileVideoOutputStreamDidStartRead(const FileStreamPtr& stream) override;
  void fileVideoOutputStreamDidReadCompleted(const FileStreamPtr& stream) override;
  void fileVideoOutputStreamDidFailed(const FileStreamPtr& stream) override;

  // LMRTCProbeTestDelegate
  void didReportProbeForms(const std::vector<LMRTCProbeForm>& forms) override;
  void didRTCProbeComplete() override;
  void didRTCProbeInterrput(std::int64_t code) override;

  void init(const std::shared_ptr<LMRTCIWEngineSetup>& setup);
  void emptyCaches();

  /// This engine as one of the SDK's listeners.
  template <class Delegate>
  std::weak_ptr<Delegate> asDelegate() {
    return std::shared_ptr<Delegate>(shared_from_this(), this);
  }

  /// `notify`, if the engine still exists.
  template <class Callback, class... Arguments>
  static void notifyOf(const std::weak_ptr<LMRTCIWEngine>& weak, Callback LMRTCIWEngineDelegate::*field,
                       const Arguments&... arguments);

  /// The first stream of a user, the local one included, that `fits`; null when there is none.
  template <class Fits>
  std::shared_ptr<LMRTCStream> findStream(const LMRTCLocalUser& localUser, const std::string& userId,
                                          const Fits& fits);

  bool startMixer(const OptionalText& url, std::int64_t mode, bool playback, std::uint64_t loop,
                  std::optional<double> position);
  void postMixingResult(const CallFrame& frame, const char* name,
                        std::function<void()> LMRTCIWEngineDelegate::*field);

  static void unpublishCustom(LMRTCLocalUser& localUser, const std::shared_ptr<LMRTCOutputStream>& stream,
                              std::int64_t role, std::function<void(bool success, std::int64_t code)> done);
  /// A remote user's streams of one tag, or the code of the check that failed.
  struct CustomSelection {
    std::int64_t code;
    std::shared_ptr<LMRTCLocalUser> localUser;
    InputStreams streams;
  };
  CustomSelection selectCustomStreams(const CallFrame& frame, const std::string& userId,
                                      const std::string& tag, std::int64_t mediaType);

  using CodeCallback = std::function<void(std::int64_t code, const std::string& errMsg)>;
  void postWatermarkResult(const CallFrame& frame, bool accepted, const char* name,
                           CodeCallback LMRTCIWEngineDelegate::*field);

  void switchToBroadcaster(LMRTCLocalUser& localUser);
  void switchToAudience(LMRTCLocalUser& localUser);
  void handleKickedWhileSwitching(const char* message);

  void handleJoined(std::int64_t code, const std::shared_ptr<LMRTCRoom>& room, const LMRTCIWRoomSetup& setup);

  std::int64_t publishLive(const CallFrame& frame, LMRTCLocalUser& localUser, std::int64_t mediaType,
                           const OutputStreams& streams);
  std::int64_t unpublishLive(const CallFrame& frame, LMRTCLocalUser& localUser, std::int64_t mediaType,
                             const OutputStreams& streams);
  InputStreams ordinaryStreams(const UserIds& userIds, std::int64_t mediaType);

  /// SDK hooks for observers, empty when not `wanted`. They hold the engine weakly and look the observer up
  /// anew for each block or picture: `deliverTo` takes the engine and the block, `find` returns the observer.
  template <class Deliver>
  std::function<void(const LMRTCAudioData&)> audioHook(bool wanted, Deliver deliverTo);
  template <class Find>
  std::function<std::shared_ptr<CMSampleBuffer>(const std::shared_ptr<CMSampleBuffer>&)> sampleHook(
      bool wanted, Find find);
  void watchPictures(LMRTCVideoInputStream& stream, bool wanted);
};
