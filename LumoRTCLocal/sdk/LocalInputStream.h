#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLocal/media/FrameDelivery.h"
#include "LumoRTCLocal/sdk/AudioTap.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalStream.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

class RemoteStream;

/// Hears what comes beside the media of a subscription, on a media thread.
class RemoteStreamListener {
 public:
  virtual ~RemoteStreamListener() = default;
  /// The first media has come.
  virtual void firstMediaArrived(const std::shared_ptr<RemoteStream>& stream) = 0;
  /// A text has come with a picture.
  virtual void seiArrived(const std::shared_ptr<RemoteStream>& stream, const std::string& text) = 0;
};

/// A remote publication as the room's mirror keeps it: the same object for as long as the publication lives.
/// Any thread.
class RemoteStream : public MediaReceiver, public std::enable_shared_from_this<RemoteStream> {
 public:
  RemoteStream(const PublicationState& state, std::weak_ptr<RemoteStreamListener> listener);

  /// A stream of the publication's media type.
  static std::shared_ptr<RemoteStream> create(const std::shared_ptr<const LocalContext>& context,
                                              const PublicationState& state,
                                              std::weak_ptr<RemoteStreamListener> listener);

  /// The same object, as the SDK's users see it.
  virtual std::shared_ptr<LMRTCInputStream> input() = 0;

  const std::shared_ptr<Publication>& publication() const { return publication_; }
  /// Begins a subscription, whose first media is told, or ends it. Beginning a running one does nothing.
  void setSubscribed(bool subscribed);
  void receiveSei(const std::string& text) override;
  void mediaLost() override { meter_->addLost(); }
  /// Measures what arrives, and what is lost on the way.
  const std::shared_ptr<MediaMeter>& meter() const { return meter_; }
  bool isSubscribed() const { return subscribed_.load(std::memory_order_relaxed); }
  /// What the room's members have been told of the state at the source.
  void setEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }

 protected:
  bool isEnabled() const { return enabled_.load(std::memory_order_relaxed); }
  /// Measures a picture or a block that has come, and tells the first one.
  template <class Media>
  void noteMedia(const Media& media) {
    meter_->add(media);
    if (firstMediaDue_.load(std::memory_order_relaxed)) tellFirstMedia();
  }

 private:
  void tellFirstMedia();

  const std::shared_ptr<MediaMeter> meter_ = std::make_shared<MediaMeter>();
  const std::shared_ptr<Publication> publication_;
  const std::weak_ptr<RemoteStreamListener> listener_;
  std::atomic<bool> enabled_;
  std::atomic<bool> subscribed_{false};
  std::atomic<bool> firstMediaDue_{false};
};

/// The way of received sound to whoever listens to the stream, then to the speaker.
class ReceivedSound {
 public:
  explicit ReceivedSound(std::shared_ptr<Speaker> speaker) : speaker_(std::move(speaker)) {}

  AudioTap& tap() { return tap_; }
  /// Audio runner only. Drops the block while all received sound is muted.
  void receive(const AudioBlock& block, Microseconds time) const;

 private:
  const std::shared_ptr<Speaker> speaker_;
  AudioTap tap_;
};

/// The sound of a remote user, played on the speaker.
class LocalAudioInput : public LocalStream<LMRTCAudioInputStream>, public RemoteStream {
 public:
  LocalAudioInput(std::shared_ptr<Speaker> speaker, const PublicationState& state,
                  std::weak_ptr<RemoteStreamListener> listener);

  std::shared_ptr<LMRTCInputStream> input() override;
  std::int64_t resourceState() const override;
  void setAudioDataCallback(LMRTCAudioDataCallback callback) override;
  void receiveAudio(const AudioBlock& block, Microseconds time) override;

 private:
  ReceivedSound sound_;
};

/// The pictures of a remote user, brought to the delegate and to the bound renderer; or the sound of a custom
/// stream, which is of the same class.
class LocalVideoInput : public LocalStream<LMRTCVideoInputStream>, public RemoteStream {
 public:
  LocalVideoInput(const std::shared_ptr<const LocalContext>& context, const PublicationState& state,
                  std::weak_ptr<RemoteStreamListener> listener);

  std::shared_ptr<LMRTCInputStream> input() override;
  std::int64_t resourceState() const override;
  void setAudioDataCallback(LMRTCAudioDataCallback callback) override;
  void setDelegate(std::weak_ptr<LMRTCVideoInputStreamDelegate> delegate) override;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override;
  void receiveAudio(const AudioBlock& block, Microseconds time) override;
  void receiveVideo(const LMRTCVideoFrame& frame) override;

 private:
  void showDelegate(const LMRTCVideoFrame& frame);
  std::shared_ptr<FrameDelivery> delivery() const;

  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<const CallbackGate> renderGate_;
  ReceivedSound sound_;
  WeakCell<LMRTCVideoInputStreamDelegate> delegate_;
  mutable std::mutex mutex_;                 ///< guards the pointer
  std::shared_ptr<FrameDelivery> delivery_;  ///< made when the first view is bound
};

}  // namespace lumo
