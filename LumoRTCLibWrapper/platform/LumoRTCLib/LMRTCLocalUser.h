#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class LMRTCInputStream;
class LMRTCLiveInfo;
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

  /// Publishes to a live room; the completion gets the control handle of the live mix.
  virtual void publishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                                 LiveCompletion completion) = 0;
  /// Publishes microphone and camera to a live room.
  virtual void publishDefaultLiveStreams(LiveCompletion completion) = 0;
  virtual void unpublishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                                   Completion completion) = 0;
  virtual void unpublishDefaultLiveStreams(Completion completion) = 0;

  /// Receives `streams` in normal size and `tinyStreams` in small size; each list may be absent.
  virtual void subscribeStream(const std::optional<InputStreams>& streams,
                               const std::optional<InputStreams>& tinyStreams, Completion completion) = 0;
  virtual void unsubscribeStreams(const InputStreams& streams, Completion completion) = 0;
};
