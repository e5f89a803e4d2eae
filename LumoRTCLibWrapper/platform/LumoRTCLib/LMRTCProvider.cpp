#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
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

std::shared_ptr<LMRTCVideoView> LMRTCVideoView::create(const UIRect& frame) {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->createVideoView(frame) : nullptr;
}

std::string LMRTCCodeDefine::codeDesc(std::int64_t code) {
  const auto provider = LMRTCProvider::installed();
  return provider ? provider->codeDesc(code) : std::string();
}
