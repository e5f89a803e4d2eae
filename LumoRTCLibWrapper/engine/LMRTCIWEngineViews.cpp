#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"

// Media streams: binding of video views.

namespace {

using VideoStream = std::shared_ptr<LMRTCVideoInputStream>;

VideoStream asVideo(const std::shared_ptr<LMRTCInputStream>& stream) {
  return stream->mediaType() == LMRTCMediaTypeVideo ? std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream)
                                                    : nullptr;
}

VideoStream cameraStream(const LMRTCRemoteUser& user) {
  for (const auto& stream : user.remoteStreams()) {
    if (stream->mediaStreamType() != LMRTCMediaStreamTypeNormal) continue;
    if (auto video = asVideo(stream)) return video;
  }
  return nullptr;
}

VideoStream liveVideoStream(const LMRTCRoom* room) {
  if (!room) return nullptr;
  for (const auto& stream : room->getLiveStreams()) {
    if (auto video = asVideo(stream)) return video;
  }
  return nullptr;
}

}  // namespace

std::int64_t LMRTCIWEngine::setLocalView(const std::shared_ptr<LMRTCIWView>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  return setLocalViewWithViewDelegate(view);
}

std::int64_t LMRTCIWEngine::setLocalViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  if (!view) return frame.fail(LMRTCWrapperCodeParameterError, "view is nil");
  setIwLocalVideoView(view);
  view->setLocalView(defaultVideoStream());
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeLocalView() {
  const CallFrame frame(__func__);
  if (const auto view = iwLocalVideoView()) view->removeLocalView();
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteView(const std::shared_ptr<LMRTCIWView>& view,
                                          const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  return setRemoteViewWithViewDelegate(view, userId);
}

std::int64_t LMRTCIWEngine::setRemoteViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view,
                                                          const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  const auto user = getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  keepOrForget(remoteVideoViewDict_, userId, view);
  if (view) view->setRemoteView(cameraStream(*user));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeRemoteView(const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  const auto view = remoteVideoViewDict_.find(userId).value_or(nullptr);
  if (!view) return LMRTCWrapperCodeParameterError;
  LMIMIWLog::error(__func__, "view is nil");  // on the way to success: kept for hosts
  view->removeRemoteView();
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLiveMixView(const std::shared_ptr<LMRTCIWView>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  return setLiveMixViewWithViewDelegate(view);
}

std::int64_t LMRTCIWEngine::setLiveMixViewWithViewDelegate(const std::shared_ptr<LMRTCIWViewDelegate>& view) {
  const CallFrame frame(__func__, "view:%@", {view != nullptr});
  if (!view) return frame.fail(LMRTCWrapperCodeParameterError, "view is nil");
  const auto stream = liveVideoStream(room().get());
  setIwLiveMixVideoView(view);
  view->setRemoteView(stream);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeLiveMixView() {
  const CallFrame frame(__func__);
  if (const auto view = iwLiveMixVideoView()) view->removeRemoteView();
  return LMRTCWrapperCodeSuccess;
}
