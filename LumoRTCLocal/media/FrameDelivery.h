#pragma once

#include <memory>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLibWrapper/util/LMIWCallbackGate.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Brings frames to one renderer, on a runner of its own. One frame at most waits: a newer one takes its
/// place, so a slow renderer skips frames instead of falling behind. Every operation may be called on any
/// thread; the delivery may be destroyed from within the renderer that it calls.
class FrameDelivery {
 public:
  /// @param name  of the runner
  /// @param gate  that every frame has to pass, for it stays away while that is closed; null: none
  FrameDelivery(Timeline& timeline, std::string name, std::shared_ptr<const CallbackGate> gate = nullptr);
  ~FrameDelivery();
  FrameDelivery(const FrameDelivery&) = delete;
  FrameDelivery& operator=(const FrameDelivery&) = delete;

  /// Sends the frames to `renderer` from now on; null detaches and drops the frame that waits. A renderer
  /// that has just been set gets `setSize` before its first frame, and again whenever the size of the upright
  /// picture changes. A call to the former renderer that has begun is not waited for.
  void setRenderer(std::weak_ptr<LMRTCVideoRenderer> renderer);

  /// Hands `frame` over. Without a renderer, or without pixels, it is dropped.
  void offer(const LMRTCVideoFrame& frame);

 private:
  struct State;
  static void deliver(const std::shared_ptr<State>& state);

  const std::shared_ptr<State> state_;
  const std::unique_ptr<Runner> runner_;  // last: goes first, while its tasks can still reach the state
};

}  // namespace lumo
