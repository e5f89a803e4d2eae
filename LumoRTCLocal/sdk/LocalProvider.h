#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"

namespace lumo {

/// The provider of LumoRTCLocal: its engine, its code texts (localCodeText) and its views (LocalVideoView).
class LocalProvider : public LMRTCProvider {
 public:
  explicit LocalProvider(std::shared_ptr<LMRTCEngine> engine) : engine_(std::move(engine)) {}

  std::shared_ptr<LMRTCEngine> sharedEngine() override { return engine_; }
  std::string codeDesc(std::int64_t code) override;
  std::shared_ptr<LMRTCVideoView> createVideoView(const UIRect& frame) override;

 private:
  const std::shared_ptr<LMRTCEngine> engine_;
};

}  // namespace lumo
