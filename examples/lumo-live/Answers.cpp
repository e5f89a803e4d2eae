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
  watch(d.onSubRoomJoined, "onSubRoomJoined");
  watch(d.onSubRoomLeft, "onSubRoomLeft");
  watch(d.onLiveCdnAdded, "onLiveCdnAdded");
  watch(d.onLiveCdnRemoved, "onLiveCdnRemoved");
  watch(d.onLiveMixInnerCdnStreamEnabled, "onLiveMixInnerCdnStreamEnabled");
  watch(d.onLiveMixInnerCdnStreamSubscribed, "onLiveMixInnerCdnStreamSubscribed");
  watch(d.onLocalLiveMixInnerCdnVideoResolutionSet, "onLocalLiveMixInnerCdnVideoResolutionSet");
  d.onJoinSubRoomRequestResponseReceived = [this, first = std::move(d.onJoinSubRoomRequestResponseReceived)](
                                               const std::string& roomId, const std::string& userId,
                                               bool agree, const std::string& extra) {
    first(roomId, userId, agree, extra);
    add("onJoinSubRoomRequestResponseReceived", agree ? 0 : 1);
  };
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
    add(name, std::get<sizeof...(Arguments) - 2>(std::tie(arguments...)));
  };
}

void Answers::add(const char* name, std::int64_t code) {
  {
    const std::lock_guard lock(mutex_);
    codes_[name].push_back(code);
  }
  come_.notify_one();
}
