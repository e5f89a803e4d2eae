#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/StreamWriter.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// The addresses outside to which a live mix is pushed. One that fails is dropped; the others go on. Any
/// thread.
class MixPushes : public std::enable_shared_from_this<MixPushes> {
 public:
  using Writers = std::vector<std::shared_ptr<StreamWriter>>;
  using Completion = std::function<void(std::int64_t code)>;
  /// An address has failed, at once or later; without a lock, on the address's own thread.
  using Failed = std::function<void(const std::string& address, const std::string& error)>;

  MixPushes(std::shared_ptr<Timeline> timeline, Failed failed);

  /// @param completion  called once, on another thread, when the address is open or has failed; not called
  ///                    when the answer is not 0
  std::int64_t add(const std::string& address, const StreamFormat& format, Completion completion);
  /// @param completion  called when the address has been closed, with an error when the stream did not reach
  ///                    it whole; not called when the answer is not 0
  std::int64_t remove(const std::string& address, Completion completion);
  /// Ends all of them when the last holder of the result lets go, which may take a second.
  Writers takeAll();

  bool isEmpty() const { return count_.load(std::memory_order_relaxed) == 0; }
  void writePicture(const std::shared_ptr<const LumoRTCI420Buffer>& picture, Microseconds time) const;
  void writeSound(const AudioBlock& block, Microseconds time) const;
  void setVideoBitrate(std::int32_t kilobitsPerSecond) const;

 private:
  struct Push {
    std::uint64_t number = 0;
    std::shared_ptr<StreamWriter> writer;
  };

  void drop(const std::string& address, std::uint64_t number, const std::string& error);
  void publishLocked();

  const std::shared_ptr<Timeline> timeline_;
  const Failed failed_;
  std::mutex mutex_;  ///< guards the next two
  std::map<std::string, Push> pushes_;
  std::uint64_t lastNumber_ = 0;
  std::atomic<std::size_t> count_{0};
  Cell<std::shared_ptr<const Writers>> writers_;  ///< replaced as a whole, so that writing copies a pointer
};

}  // namespace lumo
