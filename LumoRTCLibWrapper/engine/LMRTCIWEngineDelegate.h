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

  // Texts that travel with video (supplemental enhancement information)

  std::function<void(const std::string& roomId, const std::string& userId, const std::string& sei)>
      onSeiReceived;
  std::function<void(const std::string& sei)> onLiveMixSeiReceived;
};
