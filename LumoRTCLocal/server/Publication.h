#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/MediaMeter.h"

namespace lumo {

struct NetworkConnection;
struct ServerMember;

/// Takes the media of a stream that a member has subscribed to. Pictures come on the publisher's media
/// thread, or, over a network, on the network's; sound comes on the audio runner. It returns quickly.
class MediaReceiver {
 public:
  virtual ~MediaReceiver() = default;

  virtual void receiveVideo(const LMRTCVideoFrame& /*frame*/) {}
  /// The time is that of the 10 ms in which the block comes, on the timeline.
  virtual void receiveAudio(const AudioBlock& /*block*/, Microseconds /*time*/) {}
  /// A text that came with a picture, right after that.
  virtual void receiveSei(const std::string& /*text*/) {}
  /// A picture or a block was lost on its way. Any thread.
  virtual void mediaLost() {}
};

/// One picture on its way, and the texts that go with it.
struct SentPicture {
  using Texts = std::vector<std::string>;

  LMRTCVideoFrame frame;
  std::shared_ptr<const Texts> texts;  ///< null: none
  bool tiny = false;                   ///< for those who want the small size
};

inline std::size_t sizeOf(const SentPicture& picture) { return sizeOf(picture.frame); }

/// What a published stream is called.
struct StreamName {
  std::string userId;
  std::string tag;                   ///< kLMRTCDefaultStreamTag for microphone and camera
  std::int64_t mediaType = 0;        ///< LMRTCMediaType
  std::int64_t mediaStreamType = 0;  ///< LMRTCMediaStreamType
};

/// One stream that a member publishes, and the way of its media to those who have subscribed to it. The
/// publisher makes it, the server opens it in a room and closes it; media sent while it is not open reaches
/// nobody. Every operation may be called on any thread; nothing is locked while receivers run.
class Publication : public std::enable_shared_from_this<Publication> {
 public:
  /// Told when what the receivers want has changed, on any thread, without a lock; it reads the demand
  /// itself, as a later change may have overtaken it.
  using DemandChanged = std::function<void(const std::shared_ptr<Publication>& publication)>;

  static constexpr std::size_t kLongestSei = 4096;  ///< bytes
  static constexpr std::size_t kMostSei = 16;

  /// @param audio          what an audio publication sends; null for video
  /// @param demandChanged  may be empty
  static std::shared_ptr<Publication> create(StreamName name, bool enabled,
                                             std::shared_ptr<AudioSource> audio, DemandChanged demandChanged);

  const StreamName& name() const { return name_; }
  const std::shared_ptr<AudioSource>& audio() const { return audio_; }

  /// Whether the stream is switched on at its source. One that is off sends nothing and wants no media.
  bool isEnabled() const { return enabled_.load(std::memory_order_relaxed); }

  /// Whether anybody wants media at all, in normal size, or in small size.
  bool isWanted() const { return isEnabled() && receiverCount_.load(std::memory_order_relaxed) > 0; }
  bool isNormalWanted() const {
    return isEnabled() &&
           receiverCount_.load(std::memory_order_relaxed) > tinyCount_.load(std::memory_order_relaxed);
  }
  bool isTinyWanted() const { return isEnabled() && tinyCount_.load(std::memory_order_relaxed) > 0; }

  /// Measures what leaves the publisher's connection, and what is lost on it.
  /// @param tiny  the pictures of the small size; false also for sound
  const std::shared_ptr<MediaMeter>& meter(bool tiny) const { return tiny ? tinyMeter_ : meter_; }

  /// Sends `text` with the next picture of each size that is wanted now.
  /// @return false: kMostSei texts wait for a picture already
  bool addSei(const std::string& text);
  /// Sends one captured picture to those who want the normal size, or the small one.
  void sendVideo(const LMRTCVideoFrame& frame, bool toTiny);
  /// On the audio runner.
  void sendAudio(const AudioBlock& block, Microseconds time);

  // For the network.

  /// Media has come from the publisher, or to one receiver. It goes on to those who still want it; what is
  /// under way when the stream is switched off is dropped.
  /// @param receiver  null: it has gone
  template <class Media>
  void arrived(const Media& media, bool isDown, const std::shared_ptr<MediaReceiver>& receiver);
  /// Whether `receiver` has subscribed.
  bool reaches(const MediaReceiver& receiver) const;

 private:
  friend class MediaServer;

  struct Subscriber {
    ServerMember* member = nullptr;
    std::shared_ptr<MediaReceiver> receiver;
    bool tiny = false;
    std::shared_ptr<NetworkConnection> connection;  ///< of the member; null: perfect
  };
  using Subscribers = std::vector<Subscriber>;

  Publication(StreamName name, bool enabled, std::shared_ptr<AudioSource> audio, DemandChanged demandChanged);

  std::shared_ptr<const SentPicture::Texts> takeSei(bool tiny);
  void dropUnwantedSei();
  static bool isFor(const Subscriber& subscriber, const SentPicture& picture);
  static bool isFor(const Subscriber& /*subscriber*/, const AudioBlock& /*block*/) { return true; }
  MediaMeter& meterOf(const SentPicture& picture) const { return *meter(picture.tiny); }
  MediaMeter& meterOf(const AudioBlock& /*block*/) const { return *meter_; }
  template <class Media>
  void send(const Media& media, std::optional<Microseconds> tick);
  template <class Media>
  void spread(const Media& media, const Subscribers& subscribers, std::optional<Microseconds> tick);
  void deliver(const SentPicture& picture, const Subscriber& subscriber, std::optional<Microseconds> tick);
  void deliver(const AudioBlock& block, const Subscriber& subscriber, std::optional<Microseconds> tick);

  // For the server, under its lock: who publishes this, and to whom it goes.
  std::shared_ptr<const Subscribers> setSubscribers(Subscribers subscribers);  ///< returns the former ones
  std::shared_ptr<const Subscribers> subscribers() const { return subscribers_.get(); }
  /// Before anybody subscribes; null: perfect.
  void setConnection(std::shared_ptr<NetworkConnection> connection) { connection_ = std::move(connection); }
  void setEnabled(bool enabled) { enabled_.store(enabled, std::memory_order_relaxed); }

  // For the server, without its lock.
  void tellDemand();

  const StreamName name_;
  const std::shared_ptr<AudioSource> audio_;
  const DemandChanged demandChanged_;
  const std::shared_ptr<MediaMeter> meter_ = std::make_shared<MediaMeter>();
  const std::shared_ptr<MediaMeter> tinyMeter_ = std::make_shared<MediaMeter>();
  std::shared_ptr<NetworkConnection> connection_;  ///< of the publisher
  std::atomic<bool> enabled_;
  std::atomic<std::size_t> receiverCount_{0};
  std::atomic<std::size_t> tinyCount_{0};
  Cell<std::shared_ptr<const Subscribers>>
      subscribers_;  ///< replaced as a whole, so that sending copies a pointer
  std::atomic<bool> hasSei_{false};
  std::mutex seiMutex_;                    ///< guards the texts
  std::array<SentPicture::Texts, 2> sei_;  ///< that wait for a picture: of the normal size, of the small one
  ServerMember* publisher_ = nullptr;      ///< null: not open; guarded by the server's lock
};

using Publications = std::vector<std::shared_ptr<Publication>>;

}  // namespace lumo
