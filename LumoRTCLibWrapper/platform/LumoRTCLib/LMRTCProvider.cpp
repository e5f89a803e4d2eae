#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCPixels.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"

namespace {

lumo::Cell<std::shared_ptr<LMRTCProvider>>& providerCell() {
  static lumo::Cell<std::shared_ptr<LMRTCProvider>> cell;
  return cell;
}

}  // namespace

void LMRTCProvider::install(std::shared_ptr<LMRTCProvider> provider) {
  providerCell().set(std::move(provider));
}

std::shared_ptr<LMRTCProvider> LMRTCProvider::installed() { return providerCell().get(); }

std::shared_ptr<LMRTCEngine> LMRTCEngine::sharedInstance() {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->sharedEngine() : nullptr;
}

std::shared_ptr<LMRTCAudioMixer> LMRTCAudioMixer::sharedInstance() {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->sharedAudioMixer() : nullptr;
}

double LMRTCAudioMixer::durationOfAudioFile(const std::string& url) {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->durationOfAudioFile(url) : 0;
}

std::shared_ptr<LMRTCVideoView> LMRTCVideoView::create(const UIRect& frame) {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->createVideoView(frame) : nullptr;
}

std::string LMRTCCodeDefine::codeDesc(std::int64_t code) {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->codeDesc(code) : std::string();
}

void LumoRTCI420Rotate(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                       std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                       std::uint8_t* dstY, std::int32_t dstStrideY, std::uint8_t* dstU,
                       std::int32_t dstStrideU, std::uint8_t* dstV, std::int32_t dstStrideV,
                       std::int32_t width, std::int32_t height, std::int32_t rotation) {
  if (const auto provider = LMRTCProvider::installed()) {
    provider->i420Rotate(srcY, srcStrideY, srcU, srcStrideU, srcV, srcStrideV, dstY, dstStrideY, dstU,
                         dstStrideU, dstV, dstStrideV, width, height, rotation);
  }
}

void LumoRTCI420ToARGB(const std::uint8_t* srcY, std::int32_t srcStrideY, const std::uint8_t* srcU,
                       std::int32_t srcStrideU, const std::uint8_t* srcV, std::int32_t srcStrideV,
                       std::uint8_t* dst, std::int32_t dstStride, std::int32_t width, std::int32_t height) {
  if (const auto provider = LMRTCProvider::installed()) {
    provider->i420ToARGB(srcY, srcStrideY, srcU, srcStrideU, srcV, srcStrideV, dst, dstStride, width, height);
  }
}
