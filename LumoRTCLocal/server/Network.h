#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <variant>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/NetworkLink.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// Keeps the media that is on its way over links which are not direct, and brings it to its publication again
/// when it arrives, on a runner of its own. Any thread.
class Network : public std::enable_shared_from_this<Network> {
 public:
  Network(std::shared_ptr<Timeline> timeline, std::shared_ptr<AudioExchange> sound);

  /// Hands out the sound that arrives.
  AudioExchange& sound() { return *sound_; }

  /// Sends one packet, a SentPicture or an AudioBlock, which is copied. When it arrives the publication gets
  /// it, in `arrived`, unless it has gone.
  /// @param receiver  for whom it is; null on the way to the server
  /// @return false: it is lost
  template <class Media>
  bool send(NetworkLink& link, const Media& media, std::weak_ptr<Publication> publication,
            const std::shared_ptr<MediaReceiver>& receiver);

 private:
  struct Flight {
    std::weak_ptr<Publication> publication;
    std::weak_ptr<MediaReceiver> receiver;
    bool isDown = false;
    std::variant<SentPicture, AudioBlock> media;
  };

  std::size_t takePlaceLocked();
  void arrive(std::size_t place);

  const std::shared_ptr<Timeline> timeline_;
  const std::shared_ptr<AudioExchange> sound_;
  std::mutex mutex_;  ///< guards what follows; both keep their memory
  std::vector<Flight> flights_;
  std::vector<std::size_t> freePlaces_;

  const std::unique_ptr<Runner> runner_;  // last: goes first, while its tasks can still reach the rest
};

/// Both directions of one member's connection.
struct NetworkConnection {
  /// @param seed  a number of its own for each connection
  NetworkConnection(std::shared_ptr<Network> carrier, std::uint64_t seed)
      : network(std::move(carrier)), up(2 * seed), down(2 * seed + 1) {}

  void setModels(const NetworkModel& upModel, const NetworkModel& downModel) {
    up.setModel(upModel);
    down.setModel(downModel);
  }

  const std::shared_ptr<Network> network;
  NetworkLink up;    ///< to the server
  NetworkLink down;  ///< from it
};

}  // namespace lumo
