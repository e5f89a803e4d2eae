#include "LumoRTCLocal/sdk/CameraPipeline.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/VideoPresets.h"

namespace lumo {
namespace {

/// `picture`, mirrored left to right as it looks when it stands upright.
std::shared_ptr<const LumoRTCI420Buffer> mirroredUpright(const LumoRTCI420Buffer& picture,
                                                         std::int32_t rotation, FramePool& pool) {
  return swapsSides(rotation) ? flipped(picture, pool) : mirrored(picture, pool);
}

}  // namespace

/// What one capture works with: a copy, so that no lock is held meanwhile.
struct CameraPipeline::Step {
  Settings settings;
  std::shared_ptr<FrameDelivery> delivery;
  Microseconds time{0};
};

CameraPipeline::CameraPipeline(std::shared_ptr<Timeline> timeline, std::string name,
                               std::shared_ptr<VideoSource> source, const VideoFormat& format,
                               std::shared_ptr<const CallbackGate> renderGate)
    : timeline_(std::move(timeline)), renderGate_(std::move(renderGate)), name_(std::move(name)) {
  settings_.source = std::move(source);
  settings_.format = format;
}

template <class Change>
void CameraPipeline::change(Change apply) {
  const std::lock_guard lock(mutex_);
  apply(settings_);
  if (!running_ && isWantedLocked()) startLocked();
}

void CameraPipeline::setSource(std::shared_ptr<VideoSource> source) {
  change([this, &source](Settings& settings) {
    if (!settings.source) running_ = false;  // what begins captures at once
    std::swap(settings.source, source);      // the former one goes after the lock
    settings.sourceStart = Microseconds(-1);
  });
}

void CameraPipeline::setFormat(const VideoFormat& format) {
  change([this, &format](Settings& settings) {
    if (format.framesPerSecond != settings.format.framesPerSecond) running_ = false;  // onto another grid
    settings.format = format;
  });
}

VideoFormat CameraPipeline::format() const {
  const std::lock_guard lock(mutex_);
  return settings_.format;
}

void CameraPipeline::setRotation(std::int32_t degrees) {
  change([degrees](Settings& settings) { settings.rotation = degrees; });
}

void CameraPipeline::setSendCallback(SendHook::Callback callback) {
  sendHook_.set(std::move(callback));
  update();
}

void CameraPipeline::setMirror(bool mirror) {
  change([mirror](Settings& settings) { settings.mirror = mirror; });
}

void CameraPipeline::setWatermark(std::shared_ptr<Watermark> watermark) {
  change([&watermark](Settings& settings) { std::swap(settings.watermark, watermark); });
}

void CameraPipeline::setTinyEnabled(bool enabled) {
  change([enabled](Settings& settings) { settings.tinyEnabled = enabled; });
}

void CameraPipeline::setTinyFormat(std::optional<VideoFormat> format) {
  change([&format](Settings& settings) { settings.tinyFormat = format; });
}

VideoFormat CameraPipeline::tinyFormat() const {
  const std::lock_guard lock(mutex_);
  return settings_.tinyFormat.value_or(defaultTinyFormat(settings_.format));
}

void CameraPipeline::setActive(bool active) {
  change([active](Settings& settings) { settings.active = active; });
}

void CameraPipeline::setContinuous(bool continuous) {
  change([continuous](Settings& settings) { settings.continuous = continuous; });
}

void CameraPipeline::setCapturing(bool capturing) {
  change([capturing](Settings& settings) { settings.capturing = capturing; });
}

void CameraPipeline::setPreview(const std::shared_ptr<LMRTCVideoRenderer>& renderer) {
  std::shared_ptr<FrameDelivery> delivery;
  change([&](Settings& settings) {
    settings.preview = renderer;
    if (renderer && !delivery_)
      delivery_ = std::make_shared<FrameDelivery>(*timeline_, name_ + " preview", renderGate_);
    delivery = delivery_;
  });
  if (delivery) delivery->setRenderer(renderer);
}

void CameraPipeline::setPublication(std::shared_ptr<Publication> publication) {
  change([&publication](Settings& settings) { std::swap(settings.publication, publication); });
}

void CameraPipeline::update() {
  change([](Settings&) {});
}

bool CameraPipeline::isWantedLocked() const {
  if (!settings_.source || !settings_.active || !settings_.capturing) return false;
  return settings_.continuous || isSending(settings_) || !settings_.preview.expired();
}

bool CameraPipeline::isSending(const Settings& settings) const {
  const auto& publication = settings.publication;
  return publication && (publication->isWanted() || (publication->isEnabled() && sendHook_.isSet()));
}

void CameraPipeline::startLocked() {
  running_ = true;
  ++run_;
  grid_ = FrameGrid(timeline_->now());
  if (!runner_) runner_ = timeline_->makeRunner(name_);
  schedule(run_, grid_.start());
}

void CameraPipeline::schedule(std::uint64_t run, Microseconds time) {
  // The runner ends before the pipeline does, so that its tasks need no owner; two words also fit into the
  // task without an allocation.
  runner_->postAt(time, [this, run] { capture(run); });
}

void CameraPipeline::capture(std::uint64_t run) {
  const auto self = weak_from_this().lock();
  Step step;
  if (!self || !beginStep(run, step)) return;
  const Settings& settings = step.settings;
  if (auto picture = settings.source->frameAt(step.time - settings.sourceStart, settings.format))
    deliver(step, std::move(picture));
  endStep(run);
}

void CameraPipeline::deliver(const Step& step, std::shared_ptr<const LumoRTCI420Buffer> picture) {
  const Settings& settings = step.settings;
  const bool isSent = isSending(settings);
  std::shared_ptr<const LumoRTCI420Buffer> sent;
  if (const auto& watermark = settings.watermark) {
    // Whatever is mirrored on its way needs a watermark the other way round.
    if (isSent && settings.mirror) sent = watermark->draw(picture, settings.rotation, true, pool_);
    picture = watermark->draw(std::move(picture), settings.rotation, false, pool_);
  }
  const LMRTCVideoFrame frame = wrapper_.wrap(picture, step.time, settings.rotation);
  if (step.delivery) step.delivery->offer(frame);
  if (isSent) send(step, sent ? sent : picture, frame);
}

bool CameraPipeline::beginStep(std::uint64_t run, Step& step) {
  const std::lock_guard lock(mutex_);
  if (run != run_ || !running_) return false;
  running_ = isWantedLocked();
  if (!running_) return false;
  step.time = timeline_->now();
  if (settings_.sourceStart < Microseconds(0)) settings_.sourceStart = step.time;
  step.settings = settings_;
  step.delivery = delivery_;
  return true;
}

void CameraPipeline::endStep(std::uint64_t run) {
  const std::lock_guard lock(mutex_);
  if (run != run_ || !running_) return;
  schedule(run, grid_.next(timeline_->now(), settings_.format.framesPerSecond));
}

void CameraPipeline::send(const Step& step, const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                          const LMRTCVideoFrame& frame) {
  const Settings& settings = step.settings;
  auto sent = sendHook_.process(picture, step.time, pool_);
  if (!sent || !settings.publication->isWanted()) return;
  if (settings.mirror) sent = mirroredUpright(*sent, settings.rotation, pool_);
  const LMRTCVideoFrame normal = sent == picture ? frame : wrapper_.wrap(sent, step.time, settings.rotation);
  settings.publication->sendVideo(normal, false);
  if (!settings.publication->isTinyWanted()) return;
  if (!settings.tinyEnabled) return settings.publication->sendVideo(normal, true);
  const VideoFormat tiny = settings.tinyFormat.value_or(defaultTinyFormat(settings.format));
  if (!isTinyDue(tiny, step.time)) return;
  auto small = scaled(sent, tiny.width, tiny.height, pool_);
  settings.publication->sendVideo(wrapper_.wrap(std::move(small), step.time, settings.rotation), true);
}

bool CameraPipeline::isTinyDue(const VideoFormat& tiny, Microseconds time) {
  const std::int64_t number = FrameGrid::pictureAt(time, tiny.framesPerSecond);
  return std::exchange(lastTiny_, number) != number;
}

Publication::DemandChanged demandOf(std::weak_ptr<CameraPipeline> pipeline) {
  return [weak = std::move(pipeline)](const std::shared_ptr<Publication>&) {
    if (const auto target = weak.lock()) target->update();
  };
}

}  // namespace lumo
