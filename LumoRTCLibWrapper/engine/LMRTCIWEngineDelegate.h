#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Receives operation results and room events. Every field is optional: an empty one is never called. The
/// engine holds the listener weakly. Fill it before installing it and replace it as a whole: while it is
/// installed its fields are only read. Callbacks come on the SDK's thread unless an operation names another;
/// a callback may call back into the engine, replace the listener or destroy the engine.
///
/// In results, `code` is 0 for success or else the code that failed, and `message` is the text of that code.
/// `mediaType` and `type` are LMRTCIWMediaType; `disabled` tells that a stream is switched off at its source.
struct LMRTCIWEngineDelegate {
  // Room

  std::function<void(std::int64_t code, const std::string& message)> onRoomJoined;
  std::function<void(std::int64_t code, const std::string& message)> onRoomLeft;
  /// The local user was removed from a room; `message` is the server's reason, a number as text.
  std::function<void(const std::string& roomId, const std::string& message)> onKicked;
  /// Another room is linked with the joined one.
  std::function<void(const std::string& roomId)> onSubRoomBanded;

  // Remote users

  std::function<void(const std::string& roomId, const std::string& userId)> onUserJoined;
  std::function<void(const std::string& roomId, const std::string& userId)> onUserLeft;
  /// The user's connection was lost.
  std::function<void(const std::string& roomId, const std::string& userId)> onUserOffline;
  /// `role` is LMRTCIWRole.
  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t role)>
      onRemoteLiveRoleSwitched;

  // Microphone and camera streams of remote users

  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t mediaType)>
      onRemotePublished;
  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t mediaType)>
      onRemoteUnpublished;
  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t type, bool disabled)>
      onRemoteStateChanged;
  /// The first media of a subscribed stream has arrived.
  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t type)>
      onRemoteFirstFrame;

  // Custom streams of remote users

  std::function<void(const std::string& roomId, const std::string& userId, const std::string& tag,
                     std::int64_t type)>
      onRemoteCustomStreamPublished;
  std::function<void(const std::string& roomId, const std::string& userId, const std::string& tag,
                     std::int64_t type)>
      onRemoteCustomStreamUnpublished;
  std::function<void(const std::string& roomId, const std::string& userId, const std::string& tag,
                     std::int64_t type, bool disabled)>
      onRemoteCustomStreamStateChanged;
  std::function<void(const std::string& roomId, const std::string& userId, const std::string& tag,
                     std::int64_t type)>
      onRemoteCustomStreamFirstFrame;

  // Live mix

  std::function<void(std::int64_t mediaType)> onRemoteLiveMixPublished;
  std::function<void(std::int64_t mediaType)> onRemoteLiveMixUnpublished;
  std::function<void(std::int64_t mediaType)> onRemoteLiveMixFirstFrame;
  std::function<void()> onRemoteLiveMixInnerCdnStreamPublished;
  std::function<void()> onRemoteLiveMixInnerCdnStreamUnpublished;

  // Publishing; `mediaType` is what the operation was called with

  std::function<void(std::int64_t mediaType, std::int64_t code, const std::string& message)> onPublished;
  std::function<void(std::int64_t mediaType, std::int64_t code, const std::string& message)> onUnpublished;

  // Subscribing; once for each user id that the operation was called with

  std::function<void(const std::string& userId, std::int64_t mediaType, std::int64_t code,
                     const std::string& message)>
      onSubscribed;
  std::function<void(const std::string& userId, std::int64_t mediaType, std::int64_t code,
                     const std::string& message)>
      onUnsubscribed;
  std::function<void(std::int64_t mediaType, std::int64_t code, const std::string& message)>
      onLiveMixSubscribed;
  std::function<void(std::int64_t mediaType, std::int64_t code, const std::string& message)>
      onLiveMixUnsubscribed;

  // Devices; on the main queue, always with code 0 and an empty message

  std::function<void(bool enabled, std::int64_t code, const std::string& message)> onCameraEnabled;
  /// `camera` is LMRTCIWCamera: the one in use now.
  std::function<void(std::int64_t camera, std::int64_t code, const std::string& message)> onCameraSwitched;

  // Live mix of the local user's room

  std::function<void(std::int64_t code, const std::string& message)> onLiveMixLayoutModeSet;
  std::function<void(std::int64_t code, const std::string& message)> onLiveMixRenderModeSet;
  std::function<void(std::int64_t code, const std::string& message)> onLiveMixBackgroundColorSet;
  std::function<void(std::int64_t code, const std::string& message)> onLiveMixCustomLayoutsSet;
  std::function<void(std::int64_t code, const std::string& message)> onLiveMixCustomAudiosSet;
  std::function<void(std::int64_t code, const std::string& message)> onLiveMixAudioBitrateSet;
  std::function<void(bool tiny, std::int64_t code, const std::string& message)> onLiveMixVideoBitrateSet;
  std::function<void(bool tiny, std::int64_t code, const std::string& message)> onLiveMixVideoResolutionSet;
  std::function<void(bool tiny, std::int64_t code, const std::string& message)> onLiveMixVideoFpsSet;

  // CDN

  std::function<void(const std::string& url, std::int64_t code, const std::string& message)> onLiveCdnAdded;
  std::function<void(const std::string& url, std::int64_t code, const std::string& message)> onLiveCdnRemoved;
  /// `enabled` is the state that the server last confirmed.
  std::function<void(bool enabled, std::int64_t code, const std::string& errMsg)>
      onLiveMixInnerCdnStreamEnabled;
  std::function<void(std::int64_t code, const std::string& errMsg)> onLiveMixInnerCdnStreamSubscribed;
  std::function<void(std::int64_t code, const std::string& errMsg)> onLiveMixInnerCdnStreamUnsubscribed;
  std::function<void(std::int64_t code, const std::string& errMsg)> onLocalLiveMixInnerCdnVideoResolutionSet;
  std::function<void(std::int64_t code, const std::string& errMsg)> onLocalLiveMixInnerCdnVideoFpsSet;

  // Live role; `role` is LMRTCIWRole, the one held now

  std::function<void(std::int64_t role, std::int64_t code, const std::string& message)> onLiveRoleSwitched;

  // Audio effects and audio mixing; on the main queue, except for progress and end, which come on the mixer's
  // thread

  std::function<void(std::int64_t effectId, std::int64_t code, const std::string& message)>
      onAudioEffectCreated;
  std::function<void()> onAudioMixingStarted;
  std::function<void()> onAudioMixingPaused;
  std::function<void()> onAudioMixingResume;
  std::function<void()> onAudioMixingStopped;
  /// `progress` is in the SDK's unit.
  std::function<void(float progress)> onAudioMixingProgressReported;
  /// The file has been played to its end.
  std::function<void()> onAudioMixingFinished;

  // Custom streams of the local user

  /// Reading has started (code 0) or could not start.
  std::function<void(const std::string& tag, std::int64_t code, const std::string& message)>
      onCustomStreamPublished;
  std::function<void(const std::string& tag, std::int64_t code, const std::string& message)>
      onCustomStreamUnpublished;
  /// The file has been read to its end, and the stream was unpublished.
  std::function<void(const std::string& tag)> onCustomStreamPublishFinished;

  // Subscribing to custom streams; once per user and tag, `type` is what was subscribed

  std::function<void(const std::string& userId, const std::string& tag, std::int64_t type, std::int64_t code,
                     const std::string& message)>
      onCustomStreamSubscribed;
  std::function<void(const std::string& userId, const std::string& tag, std::int64_t type, std::int64_t code,
                     const std::string& message)>
      onCustomStreamUnsubscribed;

  // Sub-rooms; `roomId` and `userId` name the other end

  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t code,
                     const std::string& message)>
      onJoinSubRoomRequested;
  std::function<void(const std::string& roomId, const std::string& userId, std::int64_t code,
                     const std::string& message)>
      onJoinSubRoomRequestCanceled;
  std::function<void(const std::string& roomId, const std::string& userId, bool agree, std::int64_t code,
                     const std::string& message)>
      onJoinSubRoomRequestResponded;
  std::function<void(const std::string& roomId, const std::string& userId, const std::string& extra)>
      onJoinSubRoomRequestReceived;
  std::function<void(const std::string& roomId, const std::string& userId, const std::string& extra)>
      onCancelJoinSubRoomRequestReceived;
  std::function<void(const std::string& roomId, const std::string& userId, bool agree,
                     const std::string& extra)>
      onJoinSubRoomRequestResponseReceived;
  std::function<void(const std::string& roomId, std::int64_t code, const std::string& message)>
      onSubRoomJoined;
  std::function<void(const std::string& roomId, std::int64_t code, const std::string& message)> onSubRoomLeft;
  /// `userId` has ended the link with the room.
  std::function<void(const std::string& roomId, const std::string& userId)> onSubRoomDisband;

  // Diagnostics

  /// On the main queue.
  std::function<void(std::int64_t code, const std::string& errMsg)> onWatermarkSet;
  std::function<void(std::int64_t code, const std::string& errMsg)> onWatermarkRemoved;
  std::function<void(std::int64_t code, const std::string& errMsg)> onNetworkProbeStarted;
  std::function<void(std::int64_t code, const std::string& errMsg)> onNetworkProbeStopped;

  // Texts that travel with video (supplemental enhancement information)

  /// `enabled` is the state that is in force now.
  std::function<void(bool enabled, std::int64_t code, const std::string& errMsg)> onSeiEnabled;

  std::function<void(const std::string& roomId, const std::string& userId, const std::string& sei)>
      onSeiReceived;
  std::function<void(const std::string& sei)> onLiveMixSeiReceived;
};
