#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"

// CDN push and the inner CDN stream of a live room.

namespace {

using Delegate = LMRTCIWEngineDelegate;

}  // namespace

std::int64_t LMRTCIWEngine::addLiveCdn(const std::string& url) {
  const CallFrame frame(__func__, "url:%@", {url});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  live.info->addPublishStreamUrl(url, [weak = weak_from_this(), frame, url](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, url:%@", {"onLiveCdnAdded", code, url});
    notifyOf(weak, &Delegate::onLiveCdnAdded, url, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeLiveCdn(const std::string& url) {
  const CallFrame frame(__func__, "url:%@", {url});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  live.info->removePublishStreamUrl(url, [self = shared_from_this(), frame, url](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, url:%@", {"onLiveCdnRemoved", code, url});
    self->notify(&Delegate::onLiveCdnRemoved, url, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::enableLiveMixInnerCdnStream(bool enable) {
  const CallFrame frame(__func__, "enable:%@", {enable});
  if (!joinedRoom()) {
    // The garbled name is kept for hosts.
    return CallFrame::failAs("switchLivenableLiveMixInnerCdnStreameRole", LMRTCWrapperCodeLocalUserNotJoined,
                             "room is nil or localUser is nil");
  }
  const auto live = liveInfo();
  // The text is kept for hosts.
  if (!live) return frame.fail(LMRTCWrapperCodeParameterError, "rtcEngine is nil");

  live->enableInnerCDN(enable, [self = shared_from_this(), frame, enable](bool success, std::int64_t code) {
    // The cache belongs to the callback: without one it keeps its value.
    const auto callback = self->listener(&Delegate::onLiveMixInnerCdnStreamEnabled);
    if (!callback) return;
    if (success) self->setInnerCdnStateCache(enable);
    frame.result(code, "callback:%@, code:%@, enable:%@", {"onLiveMixInnerCdnStreamEnabled", code, enable});
    (*callback)(self->innerCdnStateCache(), code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::subscribeLiveMixInnerCdnStream() {
  const CallFrame frame(__func__);
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto stream = joined.room->getCDNStream();
  if (!stream) return frame.fail(LMRTCWrapperCodeStreamNotExist, "streams count is 0");

  joined.localUser->subscribeStream(
      InputStreams{stream}, InputStreams{}, [self = shared_from_this(), frame](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, ", {"onLiveMixInnerCdnStreamSubscribed", code});
        self->notify(&Delegate::onLiveMixInnerCdnStreamSubscribed, code, LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unsubscribeLiveMixInnerCdnStream() {
  const CallFrame frame(__func__);
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto stream = joined.room->getCDNStream();
  if (!stream) return frame.fail(LMRTCWrapperCodeStreamNotExist, "streams count is 0");

  joined.localUser->unsubscribeStreams({stream}, [self = shared_from_this()](bool, std::int64_t code) {
    // The other operation's name is kept for hosts.
    lumo::Console::write("LMRTCIWEngine subscribeLiveMixInnerCdnStream completion code: %zd", {code});
    self->notify(&Delegate::onLiveMixInnerCdnStreamUnsubscribed, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixInnerCdnStreamView(const std::shared_ptr<LMRTCIWView>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  return setLiveMixInnerCdnStreamViewDelegate(view);
}

std::int64_t LMRTCIWEngine::setLiveMixInnerCdnStreamViewDelegate(
    const std::shared_ptr<LMRTCIWViewDelegate>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  if (!rtcEngine()) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  if (!view) {
    // The other operation's name is kept for hosts.
    return CallFrame::failAs("unsubscribeLiveMixInnerCdnStream", LMRTCWrapperCodeParameterError,
                             "view is nil");
  }
  setIwLiveMixInnerCdnVideoView(view);
  const auto main = room();
  view->setInnerCdnView(main ? main->getCDNStream() : nullptr);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeLiveMixInnerCdnStreamView() {
  const CallFrame frame(__func__);
  if (const auto view = iwLiveMixInnerCdnVideoView()) view->removeInnerCdnView();
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalLiveMixInnerCdnVideoResolution(std::int64_t width, std::int64_t height) {
  const CallFrame frame(__func__, "width:%@, height:%@", {width, height});
  // The other operation's name is kept for hosts.
  const auto cdn = cdnStream(frame, "setLiveMixVideoResolution");
  if (!cdn.stream) return cdn.code;
  const std::int64_t preset =
      LMRTCIWConverter::toLMRTCVideoSizePreset(LMRTCIWConfigUtility::getVideoResolution(width, height));
  if (preset == -1) return frame.fail(LMRTCWrapperCodeParameterError, "width and height is not support");

  cdn.stream->setVideoConfig(
      preset, innerCDNVideoFps(),
      [self = shared_from_this(), frame, preset](bool success, std::int64_t code) {
        if (success) self->setInnerCDNVideoResolution(preset);
        frame.result(code, "callback:%@, code:%@, ", {"onLocalLiveMixInnerCdnVideoResolutionSet", code});
        self->notify(&Delegate::onLocalLiveMixInnerCdnVideoResolutionSet,
                     success ? std::int64_t{LMRTCWrapperCodeSuccess} : code, LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalLiveMixInnerCdnVideoFps(std::int64_t fps) {
  const CallFrame frame(__func__, "fps:%@", {fps});
  const auto cdn = cdnStream(frame, __func__);
  if (!cdn.stream) return cdn.code;
  const std::int64_t fpsValue = LMRTCIWConverter::toLMRTCVideoFPS(fps);

  cdn.stream->setVideoConfig(
      innerCDNVideoResolution(), fpsValue,
      [self = shared_from_this(), frame, fpsValue](bool success, std::int64_t code) {
        if (success) self->setInnerCDNVideoFps(fpsValue);
        // The resolution callback's name is kept for hosts.
        frame.result(code, "callback:%@, code:%@, ", {"onLocalLiveMixInnerCdnVideoResolutionSet", code});
        self->notify(&Delegate::onLocalLiveMixInnerCdnVideoFpsSet, code, LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::muteLiveMixInnerCdnStream(bool mute) {
  const CallFrame frame(__func__, "mute:%@", {mute});
  const auto cdn = cdnStream(frame, __func__);
  if (!cdn.stream) return cdn.code;
  cdn.stream->setIsMute(mute);
  return LMRTCWrapperCodeSuccess;
}

LMRTCIWEngineBase::CdnStream LMRTCIWEngineBase::cdnStream(const CallFrame& frame,
                                                          const char* notJoinedMethod) const {
  if (!rtcEngine()) return {frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil"), nullptr};
  const auto joined = joinedRoom();
  if (!joined) {
    return {CallFrame::failAs(notJoinedMethod, LMRTCWrapperCodeLocalUserNotJoined,
                              "room is nil or localUser is nil"),
            nullptr};
  }
  auto stream = joined.room->getCDNStream();
  if (!stream) return {frame.fail(LMRTCWrapperCodeStreamNotExist, "CDNStream is nil"), nullptr};
  return {LMRTCWrapperCodeSuccess, std::move(stream)};
}
