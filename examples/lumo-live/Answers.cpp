#include "examples/lumo-live/Answers.h"

#include <chrono>
#include <tuple>
#include <utility>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"

void Answers::watch(LMRTCIWEngineDelegate& d) {
  watch(d.onRoomJoined, "onRoomJoined");
  watch(d.onRoomLeft, "onRoomLeft");
  watch(d.onPublished, "onPublished");
  watch(d.onLiveMixSubscribed, "onLiveMixSubscribed");
  watch(d.onLiveRoleSwitched, "onLiveRoleSwitched");
  watch(d.onLiveMixLayoutModeSet, "onLiveMixLayoutModeSet");
  watch(d.onLiveMixRenderModeSet, "onLiveMixRenderModeSet");
  watch(d.onLiveMixBackgroundColorSet, "onLiveMixBackgroundColorSet");
  watch(d.onLiveMixCustomLayoutsSet, "onLiveMixCustomLayoutsSet");
  watch(d.onLiveMixVideoResolutionSet, "onLiveMixVideoResolutionSet");
  watch(d.onLiveCdnAdded, "onLiveCdnAdded");
  watch(d.onLiveCdnRemoved, "onLiveCdnRemoved");
  watch(d.onLiveMixInnerCdnStreamEnabled, "onLiveMixInnerCdnStreamEnabled");
  watch(d.onLiveMixInnerCdnStreamSubscribed, "onLiveMixInnerCdnStreamSubscribed");
  watch(d.onLocalLiveMixInnerCdnVideoResolutionSet, "onLocalLiveMixInnerCdnVideoResolutionSet");
}

std::optional<std::int64_t> Answers::next(const std::string& name) {
  std::unique_lock lock(mutex_);
  auto& codes = codes_[name];
  if (!come_.wait_for(lock, std::chrono::seconds(10), [&codes] { return !codes.empty(); }))
    return std::nullopt;
  const std::int64_t code = codes.front();
  codes.pop_front();
  return code;
}

template <class... Arguments>
void Answers::watch(std::function<void(Arguments...)>& field, const char* name) {
  field = [this, name, first = std::move(field)](Arguments... arguments) {
    first(arguments...);
    const std::int64_t code = std::get<sizeof...(Arguments) - 2>(std::tie(arguments...));
    {
      const std::lock_guard lock(mutex_);
      codes_[name].push_back(code);
    }
    come_.notify_one();
  };
}
