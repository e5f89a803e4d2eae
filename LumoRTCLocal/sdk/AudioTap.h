#pragma once

#include <functional>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioData.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// The place where a host listens to a flow of sound. Once a callback has been replaced, at most the call
/// that was under way still reaches it. Any thread.
class AudioTap {
 public:
  /// An empty callback ends it.
  void set(LMRTCAudioDataCallback callback);
  bool isSet() const { return callback_.get() != nullptr; }

  /// Lends `block` to the callback, without a copy.
  /// @param time  of the block, on the timeline
  void deliver(const AudioBlock& block, Microseconds time) const;

 private:
  Cell<std::shared_ptr<const LMRTCAudioDataCallback>> callback_;
};

}  // namespace lumo
