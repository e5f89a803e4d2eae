#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWRing.h"
#include "LumoRTCLibWrapper/views/FrameSurface.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityVideoFrame.h"
#include "LumoRTCLibWrapper/views/MetalContext.h"

/// The Unity surface: a queue of frames that the host's render loop polls. The SDK appends on its render
/// thread; the host takes, oldest first, on its own. Without a limit the queue has no bound: drain it in
/// every tick. It keeps its streams.
class LMRTCIWUnityView : public lumo::FrameSurface<std::shared_ptr>,
                         public std::enable_shared_from_this<LMRTCIWUnityView> {
  struct PrivateKey {};

 public:
  static std::shared_ptr<LMRTCIWUnityView> create();
  explicit LMRTCIWUnityView(PrivateKey) {}

  /// LMRTCIWViewTypeUnity
  std::int64_t getViewType() const override;

  /// Number of waiting frames; may be stale by a frame.
  std::size_t getBufferLength() const { return length_; }
  /// Removes and returns the oldest waiting frame; null when none waits. Takes no lock in that case.
  std::shared_ptr<LMRTCIWUnityVideoFrame> getCurrentFrame();

  /// Lets at most `frames` wait: a new frame then drops the oldest. 0, the default, sets no limit. Frames
  /// that already wait beyond the limit go with the next frame. Any thread.
  void setFrameLimit(std::size_t frames) { frameLimit_ = frames; }
  std::size_t frameLimit() const { return frameLimit_; }
  /// How many frames the limit has dropped since the view was made.
  std::uint64_t droppedFrames() const { return droppedFrames_; }

  /// Kept for the host; nothing here reads it.
  std::shared_ptr<MetalContext> metalContext() const { return metalContext_.get(); }
  void setMetalContext(std::shared_ptr<MetalContext> context) { metalContext_.set(std::move(context)); }

  /// Does nothing: frames carry their own size.
  void setSize(double width, double height) override;

  /// Queues one frame: the SDK's own planes when their rows are tight, a tight copy otherwise. A frame
  /// without pixels is ignored. Render thread.
  void renderFrame(const LMRTCVideoFrame& frame) override;

  /// A new frame with a copy of `picture`, turned clockwise by 90, 180 or 270 degrees; any other number
  /// leaves it as it is. Its own rotation is 0.
  static std::shared_ptr<LMRTCIWUnityVideoFrame> correctRotation(const LumoRTCI420Buffer& picture,
                                                                 std::int32_t rotation);

 private:
  std::shared_ptr<LMRTCVideoRenderer> renderer() override { return shared_from_this(); }
  void append(std::shared_ptr<LMRTCIWUnityVideoFrame> frame);
  std::shared_ptr<LMRTCIWUnityVideoFrame> takeOldestBeyond(std::size_t limit);

  static constexpr std::size_t kInitialCapacity = 10;

  lumo::Cell<std::shared_ptr<MetalContext>> metalContext_;

  std::mutex lock_;  ///< guards frameBuffer_
  lumo::Ring<std::shared_ptr<LMRTCIWUnityVideoFrame>> frameBuffer_{kInitialCapacity};
  std::atomic<std::size_t> length_ = 0;  ///< frameBuffer_'s size, for reading without the lock
  std::atomic<std::size_t> frameLimit_ = 0;
  std::atomic<std::uint64_t> droppedFrames_ = 0;
};
