#include "LumoRTCLocal/sdk/LocalProvider.h"

#include "LumoRTCLocal/sdk/LocalCodes.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"

namespace lumo {

std::string LocalProvider::codeDesc(std::int64_t code) { return std::string(localCodeText(code)); }

std::shared_ptr<LMRTCVideoView> LocalProvider::createVideoView(const UIRect& frame) {
  return std::make_shared<LocalVideoView>(frame);
}

}  // namespace lumo
