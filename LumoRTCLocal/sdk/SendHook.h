#pragma once

#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWRecycler.h"
#include "LumoRTCLocal/media/FramePool.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// The place where a host sees the pictures that are about to be sent, and may replace them. Once a callback
/// has been replaced, at most the call that was under way still reaches it.
class SendHook {
 public:
  using Callback = LMRTCVideoOutputStream::SendBufferCallback;
  using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

  /// An empty callback ends it. Any thread.
  void set(Callback callback);
  bool isSet() const { return callback_.get() != nullptr; }

  /// Asks the callback what to send in place of `picture`. One thread at a time.
  /// @param time  when it was captured, on the timeline
  /// @return `picture` itself where the callback gave its pixels back, or is not set; null for nothing, and
  ///         also for pixels of another size or of an unknown format
  Picture process(const Picture& picture, Microseconds time, FramePool& pool) const;

 private:
  Cell<std::shared_ptr<const Callback>> callback_;
  const std::shared_ptr<Recycler> recycler_ = std::make_shared<Recycler>();
};

}  // namespace lumo
