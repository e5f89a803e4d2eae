#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/FrameGrid.h"
#include "LumoRTCLocal/media/FrameWrapper.h"
#include "LumoRTCLocal/media/PictureMixer.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/MixPushes.h"
#include "LumoRTCLocal/server/MixSettings.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// One publication on its way into the mix: its newest picture, or its sound.
class MixInput : public MediaReceiver {
 public:
  /// @param isGuest  it is published in a linked room
  /// @param sum      what is mixed in the present 10 ms; audio runner only
  MixInput(std::shared_ptr<Publication> publication, bool isGuest, std::shared_ptr<AudioMix> sum);

  const std::shared_ptr<Publication>& publication() const { return publication_; }
  bool isGuest() const { return isGuest_; }
  bool isVideo() const;
  const MixStream& stream() const { return stream_; }
  void setHeard(bool heard) { heard_.store(heard, std::memory_order_relaxed); }

  /// The newest picture; without pixels before the first one and while the camera is off.
  LMRTCVideoFrame newest();
  /// Forgets the newest picture.
  void clear() { newest_.set({}); }

  void receiveVideo(const LMRTCVideoFrame& frame) override { newest_.set(frame); }
  void receiveAudio(const AudioBlock& block, Microseconds time) override;

 private:
  const std::shared_ptr<Publication> publication_;
  const bool isGuest_;
  const MixStream stream_;
  const std::shared_ptr<AudioMix> sum_;
  std::atomic<bool> heard_{true};
  Cell<LMRTCVideoFrame> newest_;
};

/// The live mix of one room: all video streams in one picture, in the sizes of the normal stream, the small
/// one and the inner CDN stream, and all sound in one block. Pictures are composed on a media runner of the
/// mix, sound on the audio runner, and only what somebody wants. Whose media comes in, and to whom the mixed
/// streams go, is up to the server.
class LiveMix : public AudioTickListener, public std::enable_shared_from_this<LiveMix> {
 public:
  /// @param hasPicture  false: the room carries sound only
  static std::shared_ptr<LiveMix> create(const std::string& roomId, bool hasPicture,
                                         std::shared_ptr<Timeline> timeline,
                                         std::shared_ptr<AudioExchange> exchange,
                                         MixPushes::Failed pushFailed);

  // For the server, under its lock.

  /// Takes a stream in, after those that are there, but the room's own ones before those of linked rooms;
  /// the first video stream is the large one.
  void add(const std::shared_ptr<Publication>& publication, bool isGuest = false);
  void remove(const Publication& publication);
  using Inputs = std::vector<std::shared_ptr<MixInput>>;
  std::shared_ptr<const Inputs> inputs() const { return inputs_.get(); }
  /// Whether anybody wants the mix of a media type.
  bool wants(std::int64_t mediaType) const;

  // Any thread.

  /// The mixed streams: sound, and picture unless the room has none.
  const Publications& streams() const { return streams_; }
  const std::shared_ptr<Publication>& cdnStream() const { return cdn_; }
  MixPushes& pushes() { return *pushes_; }

  std::int64_t configure(const LMRTCMixConfig& config);
  std::int64_t configureCdn(std::int64_t preset, std::int64_t fpsValue);
  /// How the mix is encoded for an address that is added now.
  StreamFormat pushFormat() const;

  /// Starts what is wanted, and stops listening to sound that is not: to be called when the demand changes.
  void update();

 private:
  enum Size : std::size_t { kNormal, kTiny, kCdn, kSizes };

  /// The clock and the composer of one size.
  struct Output {
    bool running = false;
    std::uint64_t run = 0;  ///< counts the starts; a picture that belongs to an earlier one is not made
    FrameGrid grid;
    PictureMixer mixer;
  };

  LiveMix(const std::string& roomId, bool hasPicture, std::shared_ptr<Timeline> timeline,
          std::shared_ptr<AudioExchange> exchange, MixPushes::Failed pushFailed);
  void makeStreams(const std::string& roomId);

  bool isWanted(std::size_t size) const;
  bool isSoundWanted() const;
  template <class Change>
  std::int64_t change(Change apply);
  void startLocked(std::size_t size);
  void schedule(std::size_t size, std::uint64_t run, Microseconds time);
  void tick(std::size_t size, std::uint64_t run);
  std::shared_ptr<const LumoRTCI420Buffer> compose(std::size_t size, const MixSettings& settings);
  void placeTiles(const MixSettings& settings, const VideoFormat& format);
  void placeCustom(const MixSettings& settings, const VideoFormat& format);
  void send(std::size_t size, const std::shared_ptr<const LumoRTCI420Buffer>& picture, Microseconds time);
  void audioTickBegins(Microseconds time) override;
  void audioTick(Microseconds time) override;

  static const VideoFormat& formatOf(std::size_t size, const MixSettings& settings);

  const bool hasPicture_;
  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<AudioExchange> exchange_;
  const std::shared_ptr<AudioMix> sum_ = std::make_shared<AudioMix>();
  const std::shared_ptr<MixPushes> pushes_;
  const FrameWrapper wrapper_;
  std::shared_ptr<Publication> audio_;  // these four are set once, by makeStreams
  std::shared_ptr<Publication> video_;
  std::shared_ptr<Publication> cdn_;
  Publications streams_;

  Cell<std::shared_ptr<const Inputs>> inputs_;  ///< replaced as a whole, as the settings
  Cell<std::shared_ptr<const MixSettings>> settings_;

  mutable std::mutex mutex_;  ///< guards the outputs' clocks, what follows, and changes of the two cells
  std::array<Output, kSizes> outputs_;
  bool listening_ = false;

  // Used by the pictures' runner alone; they keep their memory from one picture to the next.
  std::vector<std::shared_ptr<const LumoRTCI420Buffer>> pictures_;
  std::vector<const MixInput*> shown_;
  std::vector<MixTile> tiles_;
  std::vector<PixelRect> places_;

  AudioBlock block_;  // audio runner only

  const std::unique_ptr<Runner> runner_;  // last: goes first, while its tasks can still reach the rest
};

}  // namespace lumo
