#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/JitterBuffer.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// Told of every 10 ms in which sound moves, on the audio runner.
class AudioTickListener {
 public:
  virtual ~AudioTickListener() = default;
  /// Before the blocks of the publications are taken.
  virtual void audioTickBegins(Microseconds /*time*/) {}
  /// After they have been sent.
  virtual void audioTick(Microseconds /*time*/) {}
};

/// The clock of all sound: every 10 ms, on one audio runner, it takes a block from each publication that
/// somebody wants and sends it on, and hands out what came over a network; the listeners are told before and
/// after. It rests while there is neither. Every operation may be called on any thread.
class AudioExchange : public std::enable_shared_from_this<AudioExchange> {
 public:
  static constexpr Microseconds kBlock{10000};

  explicit AudioExchange(std::shared_ptr<Timeline> timeline);

  /// Reads the demand of `publication`: takes it in, or drops it.
  void update(const std::shared_ptr<Publication>& publication);

  /// When a listener is told.
  enum class Place {
    ahead,   ///< of those that are there
    behind,  ///< them
  };
  void addListener(const std::shared_ptr<AudioTickListener>& listener, Place place = Place::behind);
  void removeListener(const std::shared_ptr<AudioTickListener>& listener);

  /// Whether sound for `receiver` has to go through `hold` at present, as some of it came late.
  bool holds(const MediaReceiver& receiver) const { return jitterBuffer_.holds(receiver); }
  /// Hands `block` out in one of the next ticks; as JitterBuffer::push.
  void hold(const std::shared_ptr<Publication>& publication, const std::shared_ptr<MediaReceiver>& receiver,
            const AudioBlock& block, bool overNetwork);

 private:
  void startLocked();
  void schedule(Microseconds time);
  void tick(Microseconds time);

  const std::shared_ptr<Timeline> timeline_;
  JitterBuffer jitterBuffer_;
  std::mutex mutex_;  ///< guards what follows, up to the scratch fields
  bool running_ = false;
  std::vector<std::shared_ptr<Publication>> publications_;
  std::vector<std::shared_ptr<AudioTickListener>> listeners_;

  // Used by the tick alone; they keep their memory from one to the next.
  std::vector<std::shared_ptr<Publication>> currentPublications_;
  std::vector<std::shared_ptr<AudioTickListener>> currentListeners_;
  AudioBlock block_;

  const std::unique_ptr<Runner> runner_;  // last: goes first, while its tasks can still reach the rest
};

/// For a publication of sound: tells `exchange`, while it is there, of the demand.
Publication::DemandChanged demandOf(std::weak_ptr<AudioExchange> exchange);

}  // namespace lumo
