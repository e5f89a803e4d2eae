#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/StreamSelection.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

// Media streams: devices and muting.

std::int64_t LMRTCIWEngine::enableMicrophone(bool enable) {
  const CallFrame frame(__func__, "enable:%@", {enable});
  if (const auto audio = defaultAudioStream()) audio->setMicrophoneDisable(!enable);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::enableSpeaker(bool enable) {
  const CallFrame frame(__func__, "enable:%@", {enable});
  if (const auto engine = rtcEngine()) engine->enableSpeaker(enable);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::adjustLocalVolume(std::int64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  if (const auto audio = defaultAudioStream()) audio->setRecordingVolume(static_cast<std::uint64_t>(volume));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::adjustRemoteVolume(std::int64_t volume) {
  const CallFrame frame(__func__, "volume:%@", {volume});
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::enableCamera(bool enable) {
  const CallFrame frame(__func__, "enable:%@", {enable});
  if (const auto video = defaultVideoStream()) {
    if (enable) {
      video->startCapture();
    } else {
      video->stopCapture();
    }
  }
  lumo::MainQueue::async([self = shared_from_this(), frame, enable] {
    const auto callback = self->listener(&LMRTCIWEngineDelegate::onCameraEnabled);
    if (!callback) return;
    frame.result(LMRTCWrapperCodeSuccess, "callback:%@, code:%@, ",
                 {"onCameraEnabled", LMRTCWrapperCodeSuccess});
    (*callback)(enable, LMRTCWrapperCodeSuccess, "");
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::enableCamera(bool enable, std::int64_t camera) {
  const CallFrame frame(__func__, "enable:%@,camera:%@", {enable, camera});
  if (camera == LMRTCIWCameraNone) return LMRTCWrapperCodeParameterError;
  const auto video = defaultVideoStream();
  if (video && enable) video->setCameraPosition(LMRTCIWConverter::toLMRTCDeviceCamera(camera));
  return enableCamera(enable);
}

std::int64_t LMRTCIWEngine::switchCamera() {
  const CallFrame frame(__func__);
  if (const auto video = defaultVideoStream()) video->switchCamera();
  lumo::MainQueue::async([self = shared_from_this(), frame] {
    const auto callback = self->listener(&LMRTCIWEngineDelegate::onCameraSwitched);
    if (!callback) return;
    const auto video = self->defaultVideoStream();
    const bool back = video && video->cameraPosition() == LMRTCDeviceCameraBack;
    frame.result(LMRTCWrapperCodeSuccess, "callback:%@, code:%@, ",
                 {"onCameraSwitched", LMRTCWrapperCodeSuccess});
    (*callback)(back ? LMRTCIWCameraBack : LMRTCIWCameraFront, LMRTCWrapperCodeSuccess, "");
  });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::switchToCamera(std::int64_t camera) {
  const CallFrame frame(__func__, "camera:%@", {camera});
  return LMRTCWrapperCodeInterfaceNotSupport;
}

std::int64_t LMRTCIWEngine::whichCamera() {
  const CallFrame frame(__func__);
  const auto video = defaultVideoStream();
  switch (video ? video->cameraPosition() : LMRTCDeviceCameraUnspecified) {
    case LMRTCDeviceCameraFront:
      return LMRTCIWCameraFront;
    case LMRTCDeviceCameraBack:
      return LMRTCIWCameraBack;
    default:
      return LMRTCIWCameraNone;
  }
}

bool LMRTCIWEngine::isCameraFocusSupported() const {
  const auto video = defaultVideoStream();
  return video && video->isCameraFocusSupported();
}

bool LMRTCIWEngine::isCameraExposurePositionSupported() const {
  const auto video = defaultVideoStream();
  return video && video->isCameraExposurePositionSupported();
}

std::int64_t LMRTCIWEngine::setCameraFocusPositionInPreview(const UIPoint& point) {
  const CallFrame frame(__func__, "point:%@", {point});
  if (const auto video = defaultVideoStream()) video->setCameraFocusPositionInPreview(point);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setCameraExposurePositionInPreview(const UIPoint& point) {
  const CallFrame frame(__func__, "point:%@", {point});
  if (const auto video = defaultVideoStream()) video->setCameraExposurePositionInPreview(point);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setCameraCaptureOrientation(std::int64_t orientation) {
  const CallFrame frame(__func__, "orientation:%@", {orientation});
  if (const auto video = defaultVideoStream()) video->setVideoOrientation(orientation);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::muteLocalStream(std::int64_t mediaType, bool mute) {
  const CallFrame frame(__func__, "type:%@,mute:%@", {mediaType, mute});
  const auto audio = defaultAudioStream();
  const auto video = defaultVideoStream();
  if (audio && mediaType != LMRTCIWMediaTypeVideo) audio->setIsMute(mute);
  if (video && mediaType != LMRTCIWMediaTypeAudio) video->setIsMute(mute);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::muteRemoteStream(const std::string& userId, std::int64_t mediaType, bool mute) {
  const CallFrame frame(__func__, "userId:%@,type:%@,mute:%@", {userId, mediaType, mute});
  if (!joinedRoom()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto user = getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  bool found = false;
  for (const auto& stream : user->remoteStreams()) {
    if (stream->mediaStreamType() != LMRTCMediaStreamTypeNormal || !lumo::isWanted(*stream, mediaType))
      continue;
    stream->setIsMute(mute);
    found = true;
  }
  return found ? LMRTCWrapperCodeSuccess : LMRTCWrapperCodeStreamNotExist;
}

std::int64_t LMRTCIWEngine::muteAllRemoteAudioStreams(bool mute) {
  const CallFrame frame(__func__, "mute:%@", {mute});
  const auto main = room();
  if (!main) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil");
  main->muteAllRemoteAudio(mute);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::muteLiveMixStream(std::int64_t mediaType, bool mute) {
  const CallFrame frame(__func__, "type:%@,mute:%@", {mediaType, mute});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  bool found = false;
  for (const auto& stream : joined.room->getLiveStreams()) {
    if (!lumo::isWanted(*stream, mediaType)) continue;
    stream->setIsMute(mute);
    found = true;
  }
  return found ? LMRTCWrapperCodeSuccess : LMRTCWrapperCodeStreamNotExist;
}
