#include "LumoRTCLocal/sdk/LocalInputStream.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoInputStreamDelegate.h"

namespace lumo {
namespace {

std::int64_t resourceStateOf(bool enabled) {
  return enabled ? LMRTCResourceStateNormal : LMRTCResourceStateDisabled;
}

}  // namespace

RemoteStream::RemoteStream(const PublicationState& state, std::weak_ptr<RemoteStreamListener> listener)
    : publication_(state.publication), listener_(std::move(listener)), enabled_(state.enabled) {}

std::shared_ptr<RemoteStream> RemoteStream::create(const std::shared_ptr<const LocalContext>& context,
                                                   const PublicationState& state,
                                                   std::weak_ptr<RemoteStreamListener> listener) {
  const StreamName& name = state.publication->name();
  if (name.mediaType == LMRTCMediaTypeAudio && name.mediaStreamType != LMRTCMediaStreamTypeCustom) {
    return std::make_shared<LocalAudioInput>(context->speaker, state, std::move(listener));
  }
  return std::make_shared<LocalVideoInput>(context, state, std::move(listener));
}

void RemoteStream::setSubscribed(bool subscribed) {
  if (subscribed_.exchange(subscribed, std::memory_order_relaxed) == subscribed) return;
  firstMediaDue_.store(subscribed, std::memory_order_relaxed);
}

void RemoteStream::receiveSei(const std::string& text) {
  if (const auto listener = listener_.lock()) listener->seiArrived(shared_from_this(), text);
}

void RemoteStream::tellFirstMedia() {
  if (!firstMediaDue_.exchange(false, std::memory_order_relaxed)) return;
  if (const auto listener = listener_.lock()) listener->firstMediaArrived(shared_from_this());
}

void ReceivedSound::receive(const AudioBlock& block, Microseconds time) const {
  if (speaker_->isReceivedMuted()) return;
  tap_.deliver(block, time);
  speaker_->add(block);
}

LocalAudioInput::LocalAudioInput(std::shared_ptr<Speaker> speaker, const PublicationState& state,
                                 std::weak_ptr<RemoteStreamListener> listener)
    : LocalStream(state.publication->name()),
      RemoteStream(state, std::move(listener)),
      sound_(std::move(speaker)) {}

std::shared_ptr<LMRTCInputStream> LocalAudioInput::input() { return {shared_from_this(), this}; }

std::int64_t LocalAudioInput::resourceState() const { return resourceStateOf(isEnabled()); }

void LocalAudioInput::setAudioDataCallback(LMRTCAudioDataCallback callback) {
  sound_.tap().set(std::move(callback));
}

void LocalAudioInput::receiveAudio(const AudioBlock& block, Microseconds time) {
  noteMedia(block);
  if (!isMute()) sound_.receive(block, time);
}

LocalVideoInput::LocalVideoInput(const std::shared_ptr<const LocalContext>& context,
                                 const PublicationState& state, std::weak_ptr<RemoteStreamListener> listener)
    : LocalStream(state.publication->name()),
      RemoteStream(state, std::move(listener)),
      timeline_(context->timeline),
      renderGate_(context->renderGate),
      sound_(context->speaker) {}

std::shared_ptr<LMRTCInputStream> LocalVideoInput::input() { return {shared_from_this(), this}; }

std::int64_t LocalVideoInput::resourceState() const { return resourceStateOf(isEnabled()); }

void LocalVideoInput::setAudioDataCallback(LMRTCAudioDataCallback callback) {
  sound_.tap().set(std::move(callback));
}

void LocalVideoInput::setDelegate(std::weak_ptr<LMRTCVideoInputStreamDelegate> delegate) {
  delegate_.set(std::move(delegate));
}

void LocalVideoInput::setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) {
  std::shared_ptr<FrameDelivery> delivery;
  {
    const std::lock_guard lock(mutex_);
    if (view && !delivery_)
      delivery_ = std::make_shared<FrameDelivery>(*timeline_, "render " + userId(), renderGate_);
    delivery = delivery_;
  }
  if (delivery) delivery->setRenderer(view);
}

void LocalVideoInput::receiveVideo(const LMRTCVideoFrame& frame) {
  noteMedia(frame);
  if (isMute()) return;
  showDelegate(frame);
  if (const auto target = delivery()) target->offer(frame);
}

void LocalVideoInput::receiveAudio(const AudioBlock& block, Microseconds time) {
  noteMedia(block);
  if (!isMute()) sound_.receive(block, time);
}

void LocalVideoInput::showDelegate(const LMRTCVideoFrame& frame) {
  const auto delegate = delegate_.get();
  if (!delegate) return;
  delegate->willRenderCVPixelBufferRef(CVPixelBuffer::wrap(frame.rtcVideoFrame->buffer->toI420()),
                                       {shared_from_this(), this});
}

std::shared_ptr<FrameDelivery> LocalVideoInput::delivery() const {
  const std::lock_guard lock(mutex_);
  return delivery_;
}

}  // namespace lumo
