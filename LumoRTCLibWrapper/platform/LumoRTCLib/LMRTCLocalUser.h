#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class LMRTCInputStream;
class LMRTCLiveInfo;
class LMRTCMixConfig;
class LMRTCOutputStream;

/// The local member of a room. Operations may be called on any thread; each completion is called once, later,
/// on the SDK's thread, with the SDK's code (0 for success).
class LMRTCLocalUser {
 public:
  using OutputStreams = std::vector<std::shared_ptr<LMRTCOutputStream>>;
  using InputStreams = std::vector<std::shared_ptr<LMRTCInputStream>>;
  using Completion = std::function<void(bool success, std::int64_t code)>;
  using LiveCompletion =
      std::function<void(bool success, std::int64_t code, const std::shared_ptr<LMRTCLiveInfo>& liveInfo)>;

  virtual ~LMRTCLocalUser() = default;

  virtual const std::string& userId() const = 0;
  /// What the local user publishes at the moment.
  virtual OutputStreams streams() const = 0;

  /// Publishes to a normal room.
  virtual void publishStreams(const OutputStreams& streams, Completion completion) = 0;
  virtual void unpublishStreams(const OutputStreams& streams, Completion completion) = 0;

  virtual void publishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) = 0;
  virtual void unpublishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) = 0;

  /// Publishes to a live room; the completion gets the control handle of the live mix.
  virtual void publishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                                 LiveCompletion completion) = 0;
  /// Publishes microphone and camera to a live room.
  virtual void publishDefaultLiveStreams(LiveCompletion completion) = 0;
  virtual void unpublishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                                   Completion completion) = 0;
  virtual void unpublishDefaultLiveStreams(Completion completion) = 0;

  using Kicked = std::function<void()>;
  using Failed = std::function<void(std::int64_t code)>;
  using BecameBroadcaster = std::function<void(const std::shared_ptr<LMRTCLiveInfo>& liveInfo)>;

  /// Changes the role in a live room. Exactly one of the three is called; `onKicked` tells that the server
  /// has removed the local user from the room.
  /// @param config  the first configuration of the live mix; null: none
  virtual void switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster onSucceed, Failed onFailed,
                                   Kicked onKicked) = 0;
  virtual void switchToAudienceOnSucceed(std::function<void()> onSucceed, Failed onFailed,
                                         Kicked onKicked) = 0;

  /// Receives `streams` in normal size and `tinyStreams` in small size; each list may be absent.
  virtual void subscribeStream(const std::optional<InputStreams>& streams,
                               const std::optional<InputStreams>& tinyStreams, Completion completion) = 0;
  virtual void unsubscribeStreams(const InputStreams& streams, Completion completion) = 0;

  using CodeCompletion = std::function<void(std::int64_t code)>;

  /// Invites a user of another room to link the two rooms, takes the invitation back, or answers one.
  /// @param roomId,userId  of the user at the other end
  /// @param autoMix        whether what the other room's users publish joins the live mix of this user's room
  ///                       by itself, as long as the link lasts; each end decides for its own room
  /// @param extra          a text for the other end
  virtual void requestJoinOtherRoom(const std::string& roomId, const std::string& userId, bool autoMix,
                                    const std::string& extra, CodeCompletion completion) = 0;
  virtual void cancelRequestJoinOtherRoom(const std::string& roomId, const std::string& userId,
                                          const std::string& extra, CodeCompletion completion) = 0;
  virtual void responseJoinOtherRoom(const std::string& roomId, const std::string& userId, bool agree,
                                     bool autoMix, const std::string& extra, CodeCompletion completion) = 0;

  /// Switches texts in the video stream (supplemental enhancement information) on or off.
  virtual void setEnableSEI(bool enabled, CodeCompletion completion) = 0;
  /// Sends a text with the next picture.
  /// @return 0 or the code of the SDK that failed
  virtual std::int64_t sendSEI(const std::string& sei) = 0;
};
