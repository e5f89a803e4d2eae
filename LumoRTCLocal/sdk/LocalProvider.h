#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"

namespace lumo {

/// The provider of LumoRTCLocal: its engine and audio mixer, its code texts (localCodeText) and its views
/// (LocalVideoView).
class LocalProvider : public LMRTCProvider {
 public:
  LocalProvider(std::shared_ptr<LMRTCEngine> engine, std::shared_ptr<LMRTCAudioMixer> mixer)
      : engine_(std::move(engine)), mixer_(std::move(mixer)) {}

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine_; }
  std::string codeDesc(std::int64_t code) override;
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) override;
  std::shared_ptr<LMRTCAudioMixer> sharedAudioMixer() override { return mixer_; }
  double durationOfAudioFile(const std::string& url) override;
  void i420Rotate(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                  std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                  std::uint8_t* dstY, std::int32_t dstStrideY, std::uint8_t* dstU, std::int32_t dstStrideU,
                  std::uint8_t* dstV, std::int32_t dstStrideV, std::int32_t width, std::int32_t height,
                  std::int32_t rotation) override;
  void i420ToARGB(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                  std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                  std::uint8_t* dst, std::int32_t dstStride, std::int32_t width,
                  std::int32_t height) override;

 private:
  const std::shared_ptr<LMRTCEngine> engine_;
  const std::shared_ptr<LMRTCAudioMixer> mixer_;
};

}  // namespace lumo
