#include "examples/support/CallbackLog.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "examples/support/Screen.h"

namespace {

std::string text(const std::string& value) { return value; }
std::string text(std::int64_t value) { return std::to_string(value); }
std::string text(bool value) { return value ? "true" : "false"; }

}  // namespace

template <class... Arguments>
void CallbackLog::print(std::function<void(Arguments...)>& field, const char* name,
                        std::array<const char*, sizeof...(Arguments)> labels) const {
  field = [this, name, labels](Arguments... arguments) {
    std::string values;
    [[maybe_unused]] auto label = labels.begin();
    (values.append(" ").append(*label++).append("=").append(text(arguments)), ...);
    line("<-", name, values);
  };
}

void CallbackLog::action(std::string_view text) const { line("->", text, {}); }

void CallbackLog::progress(std::string_view callback, double seconds, double total) const {
  constexpr double kCells = 20;
  std::array<char, 64> values{};
  std::snprintf(values.data(), values.size(), " progress=%.1f of %.1f ", seconds, total);
  const double part = total > 0 ? std::clamp(seconds / total, 0.0, 1.0) : 0;
  const auto full = static_cast<std::size_t>(std::lround(part * kCells));
  line("<-", callback,
       values.data() + std::string(full, '#') + std::string(static_cast<std::size_t>(kCells) - full, '.'));
}

void CallbackLog::fill(LMRTCIWEngineDelegate& delegate) const {
  fillRooms(delegate);
  fillSubRooms(delegate);
  fillStreams(delegate);
  fillLive(delegate);
  fillMedia(delegate);
}

void CallbackLog::fillRooms(LMRTCIWEngineDelegate& d) const {
  print(d.onRoomJoined, "onRoomJoined", {"code", "message"});
  print(d.onRoomLeft, "onRoomLeft", {"code", "message"});
  print(d.onKicked, "onKicked", {"roomId", "message"});
  print(d.onUserJoined, "onUserJoined", {"roomId", "userId"});
  print(d.onUserLeft, "onUserLeft", {"roomId", "userId"});
  print(d.onUserOffline, "onUserOffline", {"roomId", "userId"});
}

void CallbackLog::fillSubRooms(LMRTCIWEngineDelegate& d) const {
  print(d.onJoinSubRoomRequested, "onJoinSubRoomRequested", {"roomId", "userId", "code", "message"});
  print(d.onJoinSubRoomRequestResponseReceived, "onJoinSubRoomRequestResponseReceived",
        {"roomId", "userId", "agree", "extra"});
  print(d.onSubRoomJoined, "onSubRoomJoined", {"roomId", "code", "message"});
  print(d.onSubRoomLeft, "onSubRoomLeft", {"roomId", "code", "message"});
  print(d.onSubRoomBanded, "onSubRoomBanded", {"roomId"});
  print(d.onJoinSubRoomRequestCanceled, "onJoinSubRoomRequestCanceled",
        {"roomId", "userId", "code", "message"});
  print(d.onJoinSubRoomRequestResponded, "onJoinSubRoomRequestResponded",
        {"roomId", "userId", "agree", "code", "message"});
  print(d.onJoinSubRoomRequestReceived, "onJoinSubRoomRequestReceived", {"roomId", "userId", "extra"});
  print(d.onCancelJoinSubRoomRequestReceived, "onCancelJoinSubRoomRequestReceived",
        {"roomId", "userId", "extra"});
  print(d.onSubRoomDisband, "onSubRoomDisband", {"roomId", "userId"});
}

void CallbackLog::fillStreams(LMRTCIWEngineDelegate& d) const {
  print(d.onRemotePublished, "onRemotePublished", {"roomId", "userId", "mediaType"});
  print(d.onRemoteUnpublished, "onRemoteUnpublished", {"roomId", "userId", "mediaType"});
  print(d.onRemoteStateChanged, "onRemoteStateChanged", {"roomId", "userId", "type", "disabled"});
  print(d.onRemoteFirstFrame, "onRemoteFirstFrame", {"roomId", "userId", "type"});
  print(d.onRemoteCustomStreamPublished, "onRemoteCustomStreamPublished",
        {"roomId", "userId", "tag", "type"});
  print(d.onRemoteCustomStreamUnpublished, "onRemoteCustomStreamUnpublished",
        {"roomId", "userId", "tag", "type"});
  print(d.onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged",
        {"roomId", "userId", "tag", "type", "disabled"});
  print(d.onRemoteCustomStreamFirstFrame, "onRemoteCustomStreamFirstFrame",
        {"roomId", "userId", "tag", "type"});
  print(d.onPublished, "onPublished", {"mediaType", "code", "message"});
  print(d.onUnpublished, "onUnpublished", {"mediaType", "code", "message"});
  print(d.onSubscribed, "onSubscribed", {"userId", "mediaType", "code", "message"});
  print(d.onUnsubscribed, "onUnsubscribed", {"userId", "mediaType", "code", "message"});
  print(d.onCustomStreamPublished, "onCustomStreamPublished", {"tag", "code", "message"});
  print(d.onCustomStreamPublishFinished, "onCustomStreamPublishFinished", {"tag"});
  print(d.onCustomStreamUnpublished, "onCustomStreamUnpublished", {"tag", "code", "message"});
  print(d.onCustomStreamSubscribed, "onCustomStreamSubscribed", {"userId", "tag", "type", "code", "message"});
  print(d.onCustomStreamUnsubscribed, "onCustomStreamUnsubscribed",
        {"userId", "tag", "type", "code", "message"});
}

void CallbackLog::fillLive(LMRTCIWEngineDelegate& d) const {
  print(d.onRemoteLiveRoleSwitched, "onRemoteLiveRoleSwitched", {"roomId", "userId", "role"});
  print(d.onRemoteLiveMixPublished, "onRemoteLiveMixPublished", {"mediaType"});
  print(d.onRemoteLiveMixUnpublished, "onRemoteLiveMixUnpublished", {"mediaType"});
  print(d.onRemoteLiveMixFirstFrame, "onRemoteLiveMixFirstFrame", {"mediaType"});
  print(d.onRemoteLiveMixInnerCdnStreamPublished, "onRemoteLiveMixInnerCdnStreamPublished", {});
  print(d.onRemoteLiveMixInnerCdnStreamUnpublished, "onRemoteLiveMixInnerCdnStreamUnpublished", {});
  print(d.onLiveMixSubscribed, "onLiveMixSubscribed", {"mediaType", "code", "message"});
  print(d.onLiveMixUnsubscribed, "onLiveMixUnsubscribed", {"mediaType", "code", "message"});
  print(d.onLiveMixLayoutModeSet, "onLiveMixLayoutModeSet", {"code", "message"});
  print(d.onLiveMixRenderModeSet, "onLiveMixRenderModeSet", {"code", "message"});
  print(d.onLiveMixBackgroundColorSet, "onLiveMixBackgroundColorSet", {"code", "message"});
  print(d.onLiveMixCustomLayoutsSet, "onLiveMixCustomLayoutsSet", {"code", "message"});
  print(d.onLiveMixCustomAudiosSet, "onLiveMixCustomAudiosSet", {"code", "message"});
  print(d.onLiveMixAudioBitrateSet, "onLiveMixAudioBitrateSet", {"code", "message"});
  print(d.onLiveMixVideoBitrateSet, "onLiveMixVideoBitrateSet", {"tiny", "code", "message"});
  print(d.onLiveMixVideoResolutionSet, "onLiveMixVideoResolutionSet", {"tiny", "code", "message"});
  print(d.onLiveMixVideoFpsSet, "onLiveMixVideoFpsSet", {"tiny", "code", "message"});
  print(d.onLiveCdnAdded, "onLiveCdnAdded", {"url", "code", "message"});
  print(d.onLiveCdnRemoved, "onLiveCdnRemoved", {"url", "code", "message"});
  print(d.onLiveMixInnerCdnStreamEnabled, "onLiveMixInnerCdnStreamEnabled", {"enable", "code", "message"});
  print(d.onLiveMixInnerCdnStreamSubscribed, "onLiveMixInnerCdnStreamSubscribed", {"code", "message"});
  print(d.onLiveMixInnerCdnStreamUnsubscribed, "onLiveMixInnerCdnStreamUnsubscribed", {"code", "message"});
  print(d.onLocalLiveMixInnerCdnVideoResolutionSet, "onLocalLiveMixInnerCdnVideoResolutionSet",
        {"code", "message"});
  print(d.onLocalLiveMixInnerCdnVideoFpsSet, "onLocalLiveMixInnerCdnVideoFpsSet", {"code", "message"});
  print(d.onLiveRoleSwitched, "onLiveRoleSwitched", {"role", "code", "message"});
  print(d.onLiveMixSeiReceived, "onLiveMixSeiReceived", {"sei"});
}

void CallbackLog::fillMedia(LMRTCIWEngineDelegate& d) const {
  print(d.onAudioEffectCreated, "onAudioEffectCreated", {"effectId", "code", "message"});
  print(d.onAudioMixingStarted, "onAudioMixingStarted", {});
  print(d.onAudioMixingFinished, "onAudioMixingFinished", {});
  print(d.onWatermarkSet, "onWatermarkSet", {"code", "message"});
  print(d.onNetworkProbeStarted, "onNetworkProbeStarted", {"code", "message"});
  print(d.onSeiEnabled, "onSeiEnabled", {"enabled", "code", "message"});
  print(d.onSeiReceived, "onSeiReceived", {"roomId", "userId", "sei"});
  print(d.onCameraEnabled, "onCameraEnabled", {"enabled", "code", "message"});
  print(d.onCameraSwitched, "onCameraSwitched", {"camera", "code", "message"});
  print(d.onAudioMixingPaused, "onAudioMixingPaused", {});
  print(d.onAudioMixingResume, "onAudioMixingResume", {});
  print(d.onAudioMixingStopped, "onAudioMixingStopped", {});
  print(d.onWatermarkRemoved, "onWatermarkRemoved", {"code", "message"});
  print(d.onNetworkProbeStopped, "onNetworkProbeStopped", {"code", "message"});
}

void CallbackLog::line(const char* mark, std::string_view what, std::string_view values) const {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  std::array<char, 32> time{};
  std::snprintf(time.data(), time.size(), "%8.3f  ", elapsed.count());
  Screen::shared().line(std::string(time.data()).append(mark).append(" ").append(what).append(values));
}
