#pragma once

#include <cstdint>
#include <memory>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLocal/media/FrameDelivery.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalInputStream.h"
#include "LumoRTCLocal/sdk/LocalStream.h"
#include "LumoRTCLocal/server/MediaServer.h"

namespace lumo {

/// The inner CDN stream of a live room: the mixed picture, brought to the bound renderer, and the mixed
/// sound, played on the speaker. Any thread.
class LocalCdnInput : public LocalStream<LMRTCCDNInputStream>, public RemoteStream {
 public:
  LocalCdnInput(std::shared_ptr<const LocalContext> context, MediaServer::Member member,
                const PublicationState& state, std::weak_ptr<RemoteStreamListener> listener);

  std::shared_ptr<LMRTCInputStream> input() override;
  std::int64_t resourceState() const override;
  void setAudioDataCallback(LMRTCAudioDataCallback callback) override;
  /// Fails with LocalCodeCdnFormat for other values than the documented ones, and with LocalCodeStreamGone.
  void setVideoConfig(std::int64_t preset, std::int64_t fpsValue, Completion completion) override;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override;
  void receiveVideo(const LMRTCVideoFrame& frame) override;
  void receiveAudio(const AudioBlock& block, Microseconds time) override;

 private:
  const std::shared_ptr<const LocalContext> context_;
  const MediaServer::Member member_;
  ReceivedSound sound_;
  FrameDelivery delivery_;
};

}  // namespace lumo
