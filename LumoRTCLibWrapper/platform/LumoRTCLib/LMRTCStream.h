#pragma once

#include <cstdint>
#include <string>

/// One audio or video stream, published by the local user (output) or by a remote one (input). What
/// identifies a stream never changes, and every operation may be called on any thread, unless its own comment
/// says otherwise.
class LMRTCStream {
 public:
  virtual ~LMRTCStream() = default;

  /// The user id, "_", the tag; unique within a room for streams of one media type.
  virtual const std::string& streamId() const = 0;
  virtual const std::string& userId() const = 0;
  /// The name of a custom stream; kLMRTCDefaultStreamTag for microphone and camera.
  virtual const std::string& tag() const = 0;
  /// LMRTCMediaType
  virtual std::int64_t mediaType() const = 0;
  /// LMRTCMediaStreamType
  virtual std::int64_t mediaStreamType() const = 0;

  /// A muted output stream sends nothing; a muted input stream is not played or shown.
  virtual void setIsMute(bool mute) = 0;
  virtual bool isMute() const = 0;
};
