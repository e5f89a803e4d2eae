#include "LumoRTCLocal/sdk/LocalCdnInput.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

LocalCdnInput::LocalCdnInput(std::shared_ptr<const LocalContext> context, MediaServer::Member member,
                             const PublicationState& state, std::weak_ptr<RemoteStreamListener> listener)
    : LocalStream(state.publication->name()),
      RemoteStream(state, std::move(listener)),
      context_(std::move(context)),
      member_(std::move(member)),
      sound_(context_->speaker),
      delivery_(*context_->timeline, "render cdn", context_->renderGate) {}

std::shared_ptr<LMRTCInputStream> LocalCdnInput::input() { return {shared_from_this(), this}; }

std::int64_t LocalCdnInput::resourceState() const { return LMRTCResourceStateNormal; }

void LocalCdnInput::setAudioDataCallback(LMRTCAudioDataCallback callback) {
  sound_.tap().set(std::move(callback));
}

void LocalCdnInput::setVideoConfig(std::int64_t preset, std::int64_t fpsValue, Completion completion) {
  context_->operations->run("setVideoConfig",
                            [weak = std::weak_ptr(context_), member = member_, preset, fpsValue,
                             completion = std::move(completion)](std::int64_t refusal) {
                              std::int64_t code = refusal;
                              if (const auto context = contextFor(weak, code))
                                code = context->server->setCdnFormat(member, preset, fpsValue);
                              if (completion) completion(code == LocalCodeSuccess, code);
                            });
}

void LocalCdnInput::setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) {
  delivery_.setRenderer(view);
}

void LocalCdnInput::receiveVideo(const LMRTCVideoFrame& frame) {
  noteMedia(frame);
  if (!isMute()) delivery_.offer(frame);
}

void LocalCdnInput::receiveAudio(const AudioBlock& block, Microseconds time) {
  noteMedia(block);
  if (!isMute()) sound_.receive(block, time);
}

}  // namespace lumo
