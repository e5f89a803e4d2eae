#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConfigUtility.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Live mix: layout and encoding.

namespace {

using Delegate = LMRTCIWEngineDelegate;

bool isPlacedBy(const LMRTCIWCustomLayout& layout, const LMRTCStream& stream) {
  if (stream.mediaType() != LMRTCMediaTypeVideo) return false;
  return layout.type() == 0 ? stream.mediaStreamType() == LMRTCMediaStreamTypeNormal
                            : layout.tag() && stream.tag() == *layout.tag();
}

bool isAudio(const LMRTCStream& stream) { return stream.mediaType() == LMRTCMediaTypeAudio; }

/// The first stream of `streams` that `fits`, or null.
template <class Streams, class Fits>
std::shared_ptr<LMRTCStream> firstThat(const Streams& streams, const Fits& fits) {
  for (const auto& stream : streams) {
    if (fits(*stream)) return stream;
  }
  return nullptr;
}

LMRTCMixVideoLayout& layoutOf(LMRTCMixConfig& config, bool tiny) {
  auto& video = config.mediaConfig.videoConfig;
  return tiny ? video.tinyVideoLayout : video.videoLayout;
}

}  // namespace

std::int64_t LMRTCIWEngine::setLiveMixLayoutMode(std::int64_t mode) {
  const CallFrame frame(__func__, "mode:%@", {mode});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  config.layoutMode = LMRTCIWConverter::toLMRTCMixLayoutMode(mode);
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, mode](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, mode:%@", {"onLiveMixLayoutModeSet", code, mode});
    notifyOf(weak, &Delegate::onLiveMixLayoutModeSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixRenderMode(std::int64_t mode) {
  const CallFrame frame(__func__, "mode:%@", {mode});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  config.mediaConfig.videoConfig.videoExtend.renderMode = LMRTCIWConverter::toLMRTCVideoRenderMode(mode);
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, mode](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, mode:%@", {"onLiveMixRenderModeSet", code, mode});
    notifyOf(weak, &Delegate::onLiveMixRenderModeSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixBackgroundColor(std::uint64_t color) {
  const CallFrame frame(__func__, "color:%@", {color});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  if (!config.mediaConfig.videoConfig.setBackgroundColor(color)) {
    return frame.fail(LMRTCWrapperCodeParameterError,
                      "setLiveMixBackgroundColor LMRTCWrapperCodeParameterError");
  }
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, color](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, color:%@", {"onLiveMixBackgroundColorSet", code, color});
    notifyOf(weak, &Delegate::onLiveMixBackgroundColorSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixBackgroundColorWithRed(std::uint64_t red, std::uint64_t green,
                                                             std::uint64_t blue) {
  // The tag and the keys are kept for hosts as they are.
  const CallFrame frame("setLiveMixBackgroundColorWithRed:green:blue", "red:%@:green:%@blue:%@",
                        {red, green, blue});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  if (!config.mediaConfig.videoConfig.setBackgroundColorWithRed(red, green, blue)) {
    return frame.fail(LMRTCWrapperCodeParameterError,
                      "setLiveMixBackgroundColorWithRed:green:blue LMRTCWrapperCodeParameterError");
  }
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, red, green, blue](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, red:%@:green:%@blue:%@",
                 {"onLiveMixBackgroundColorSet", code, red, green, blue});
    notifyOf(weak, &Delegate::onLiveMixBackgroundColorSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixCustomLayouts(const std::vector<LMRTCIWCustomLayout>& layouts) {
  const std::size_t count = layouts.size();
  const CallFrame frame(__func__, "layoutArraylength:%@", {count});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  if (layouts.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "layoutArray count is 0");

  LMRTCMixConfig config;
  config.layoutMode = LMRTCMixLayoutModeCustom;
  config.customMode = true;
  auto& placed = config.customLayouts.emplace();
  for (const auto& layout : layouts) {
    const auto fits = [&layout](const LMRTCStream& stream) { return isPlacedBy(layout, stream); };
    if (auto stream = findStream(*live.localUser, layout.userId(), fits)) {
      placed.push_back({std::move(stream), layout.x, layout.y, layout.width, layout.height});
    }
  }
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, count](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, layoutArraylength:%@",
                 {"onLiveMixCustomLayoutsSet", code, count});
    notifyOf(weak, &Delegate::onLiveMixCustomLayoutsSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixCustomAudios(const UserIds& userIds) {
  const std::size_t count = userIds.size();
  const CallFrame frame(__func__, "userIdArrayLeggth%@", {count});  // the spelling is kept for hosts
  const auto live = liveMix(frame);
  if (!live) return live.code;
  if (userIds.empty()) return frame.fail(LMRTCWrapperCodeParameterError, "userIdArray count is 0");

  LMRTCMixConfig config;
  config.customMode = true;
  auto& audios = config.customMixAudios.emplace();
  for (const auto& userId : userIds) {
    if (auto stream = findStream(*live.localUser, userId, isAudio)) audios.push_back({std::move(stream)});
  }
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, count](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, userIdArrayLeggth%@",
                 {"onLiveMixCustomAudiosSet", code, count});
    notifyOf(weak, &Delegate::onLiveMixCustomAudiosSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixAudioBitrate(std::int64_t bitrate) {
  const CallFrame frame(__func__, "bitrate:%@", {bitrate});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  config.mediaConfig.audioConfig.bitrate = bitrate;
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, bitrate](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, bitrate:%@", {"onLiveMixAudioBitrateSet", code, bitrate});
    notifyOf(weak, &Delegate::onLiveMixAudioBitrateSet, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixVideoBitrate(std::int64_t bitrate) {
  const CallFrame frame(__func__, "bitrate:%@", {bitrate});
  return setLiveMixVideoBitrate(bitrate, false);
}

std::int64_t LMRTCIWEngine::setLiveMixVideoBitrate(std::int64_t bitrate, bool tiny) {
  const CallFrame frame(__func__, "bitrate:%@,tiny:%@", {bitrate, tiny});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  layoutOf(config, tiny) = {.fps = 0, .width = 0, .height = 0, .bitrate = bitrate};
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, bitrate, tiny](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, bitrate:%@,tiny:%@",
                 {"onLiveMixVideoBitrateSet", code, bitrate, tiny});
    notifyOf(weak, &Delegate::onLiveMixVideoBitrateSet, tiny, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixVideoResolution(std::int64_t width, std::int64_t height) {
  const CallFrame frame(__func__, "width:%@,height:%@", {width, height});
  return setLiveMixVideoResolution(width, height, false);
}

std::int64_t LMRTCIWEngine::setLiveMixVideoResolution(std::int64_t width, std::int64_t height, bool tiny) {
  const CallFrame frame(__func__, "width:%@,height:%@,tiny:%@", {width, height, tiny});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  layoutOf(config, tiny) = {.fps = 0, .width = width, .height = height, .bitrate = 0};
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, width, height, tiny](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, width:%@,height:%@,tiny:%@",
                 {"onLiveMixVideoResolutionSet", code, width, height, tiny});
    notifyOf(weak, &Delegate::onLiveMixVideoResolutionSet, tiny, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixVideoFps(std::int64_t fps) {
  const CallFrame frame(__func__, "fps:%@", {fps});
  return setLiveMixVideoFps(fps, false);
}

std::int64_t LMRTCIWEngine::setLiveMixVideoFps(std::int64_t fps, bool tiny) {
  const CallFrame frame(__func__, "fps:%@,tiny:%@", {fps, tiny});
  const auto live = liveMix(frame);
  if (!live) return live.code;
  LMRTCMixConfig config;
  layoutOf(config, tiny) = {
      .fps = LMRTCIWConfigUtility::getVideoFPS(fps), .width = 0, .height = 0, .bitrate = 0};
  live.info->setMixConfig(config, [weak = weak_from_this(), frame, fps, tiny](std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, fps:%@", {"onLiveMixVideoFpsSet", code, fps});
    notifyOf(weak, &Delegate::onLiveMixVideoFpsSet, tiny, code, LMRTCCodeDefine::codeDesc(code));
  });
  return LMRTCWrapperCodeSuccess;
}

LMRTCIWEngineBase::LiveMix LMRTCIWEngineBase::liveMix(const CallFrame& frame) const {
  auto joined = joinedRoom();
  if (!joined)
    return {frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil"), {}, {}};
  auto info = liveInfo();
  if (!info) return {frame.fail(LMRTCWrapperCodeParameterError, "liveInfo is nil"), {}, {}};
  return {LMRTCWrapperCodeSuccess, std::move(joined.localUser), std::move(info)};
}

template <class Fits>
std::shared_ptr<LMRTCStream> LMRTCIWEngine::findStream(const LMRTCLocalUser& localUser,
                                                       const std::string& userId, const Fits& fits) {
  if (userId == localUser.userId()) {
    if (auto stream = firstThat(localUser.streams(), fits)) return stream;
  }
  const auto user = getRemoteUser(userId);
  return user ? firstThat(user->remoteStreams(), fits) : nullptr;
}
