#include "LumoRTCLocal/media/FrameDelivery.h"

#include <cstdint>
#include <mutex>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"

namespace lumo {
namespace {

struct FrameSize {
  std::int32_t width = 0;
  std::int32_t height = 0;

  bool operator==(const FrameSize&) const = default;
};

FrameSize uprightSize(const LMRTCVideoFrame& frame) {
  return swapsSides(frame.rotation) ? FrameSize{frame.height, frame.width}
                                    : FrameSize{frame.width, frame.height};
}

}  // namespace

struct FrameDelivery::State {
  explicit State(std::shared_ptr<const CallbackGate> frameGate) : gate(std::move(frameGate)) {}

  const std::shared_ptr<const CallbackGate> gate;
  mutable std::mutex mutex;  // guards the rest
  std::weak_ptr<LMRTCVideoRenderer> renderer;
  LMRTCVideoFrame waiting;  // without pixels when none waits
  FrameSize announced;      // to the present renderer
  bool isScheduled = false;
};

FrameDelivery::FrameDelivery(Timeline& timeline, std::string name, std::shared_ptr<const CallbackGate> gate)
    : state_(std::make_shared<State>(std::move(gate))), runner_(timeline.makeRunner(std::move(name))) {}

FrameDelivery::~FrameDelivery() = default;

void FrameDelivery::setRenderer(std::weak_ptr<LMRTCVideoRenderer> renderer) {
  LMRTCVideoFrame dropped;  // destroyed after the lock is released
  const std::lock_guard lock(state_->mutex);
  state_->renderer.swap(renderer);
  state_->announced = {};
  if (state_->renderer.expired()) dropped = std::exchange(state_->waiting, {});
}

void FrameDelivery::offer(const LMRTCVideoFrame& frame) {
  if (!frame.rtcVideoFrame) return;
  LMRTCVideoFrame replaced = frame;
  {
    const std::lock_guard lock(state_->mutex);
    if (state_->renderer.expired()) return;
    std::swap(state_->waiting, replaced);
    if (std::exchange(state_->isScheduled, true)) return;
  }
  // The task holds nothing that would have to be allocated; `this` is alive whenever a task starts.
  runner_->post([this] { deliver(std::shared_ptr(state_)); });
}

void FrameDelivery::deliver(const std::shared_ptr<State>& state) {
  LMRTCVideoFrame frame;
  std::shared_ptr<LMRTCVideoRenderer> renderer;
  bool isNewSize = false;
  {
    const std::lock_guard lock(state->mutex);
    state->isScheduled = false;
    std::swap(frame, state->waiting);
    renderer = state->renderer.lock();
    if (!frame.rtcVideoFrame || !renderer) return;
    isNewSize = std::exchange(state->announced, uprightSize(frame)) != uprightSize(frame);
  }
  const auto pass = state->gate ? state->gate->enter() : CallbackGate::Pass();
  if (state->gate && !pass) return;
  const FrameSize size = uprightSize(frame);
  if (isNewSize) renderer->setSize(size.width, size.height);
  renderer->renderFrame(frame);
}

}  // namespace lumo
