#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/engine/StreamSelection.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"

// Raw media observers.

namespace {

using AudioObserver = std::shared_ptr<LMRTCIWAudioFrameDelegate>;
using SampleObserver = std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate>;
using PixelObserver = std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate>;

void deliver(const AudioObserver& observer, const LMRTCAudioData& data, std::uint64_t renderTimeMs) {
  if (!observer || !observer->onAudioFrame) return;
  observer->onAudioFrame({.bytes = data.bytes,
                          .length = data.length,
                          .channels = data.channels,
                          .sampleRate = data.sampleRate,
                          .bytesPerSample = data.bytesPerSample,
                          .samples = data.samples,
                          .renderTimeMs = renderTimeMs});
}

void deliver(const AudioObserver& observer, const LMRTCAudioData& data) {
  deliver(observer, data, data.renderTimeMs);
}

CMSampleBufferRef process(const SampleObserver& observer, const CMSampleBufferRef& buffer) {
  return observer && observer->onSampleBuffer ? observer->onSampleBuffer(buffer) : buffer;
}

/// The user's first microphone (media type 0) or camera (1) stream.
std::shared_ptr<LMRTCInputStream> normalStream(const LMRTCRemoteUser& user, std::int64_t mediaType) {
  for (auto& stream : user.remoteStreams()) {
    if (stream->mediaStreamType() == LMRTCMediaStreamTypeNormal && stream->mediaType() == mediaType)
      return stream;
  }
  return nullptr;
}

std::int64_t failWithoutStream() {
  // The video operation's name also for sound: kept for hosts.
  lumo::Console::write("LMRTCIWEngine setRemoteCustomVideoProcessedDelegate return: %zd",
                       {LMRTCWrapperCodeStreamNotExist});
  return LMRTCWrapperCodeStreamNotExist;
}

}  // namespace

template <class Deliver>
LMRTCAudioDataCallback LMRTCIWEngine::audioHook(bool wanted, Deliver deliverTo) {
  if (!wanted) return nullptr;
  return [weak = weak_from_this(), deliverTo](const LMRTCAudioData& data) {
    const auto self = weak.lock();
    if (!self) return;
    if (const auto pass = self->callbackGate_.enter()) deliverTo(*self, data);
  };
}

template <class Find>
std::function<CMSampleBufferRef(const CMSampleBufferRef&)> LMRTCIWEngine::sampleHook(bool wanted, Find find) {
  if (!wanted) return nullptr;
  return [weak = weak_from_this(), find](const CMSampleBufferRef& buffer) {
    const auto self = weak.lock();
    if (!self) return buffer;
    const auto pass = self->callbackGate_.enter();
    return pass ? process(find(*self), buffer) : buffer;
  };
}

std::int64_t LMRTCIWEngine::setLocalAudioCapturedDelegate(const AudioObserver& observer) {
  const CallFrame frame(__func__, "delegate:%@", {observer != nullptr});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  setLocalAudioCapturedDelegate_(observer);
  engine->defaultAudioStream()->setRecordAudioDataCallback(
      audioHook(observer != nullptr, [](const LMRTCIWEngine& self, const LMRTCAudioData& data) {
        deliver(self.localAudioCapturedDelegate_(), data);
      }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalAudioMixedDelegate(const AudioObserver& observer) {
  const CallFrame frame(__func__, "delegate:%@", {observer != nullptr});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  setLocalAudioMixedDelegate_(observer);
  engine->defaultAudioStream()->setWillSendAudioBufferCallback(
      audioHook(observer != nullptr, [](const LMRTCIWEngine& self, const LMRTCAudioData& data) {
        deliver(self.localAudioMixedDelegate_(), data, 0);
      }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteAudioMixedDelegate(const AudioObserver& observer) {
  const CallFrame frame(__func__, "delegate:%@", {observer != nullptr});
  const auto main = room();
  if (!main) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil");
  setRemoteAudioMixedDelegate_(observer);
  main->setReceivedAudioBufferCallback(
      audioHook(observer != nullptr, [](const LMRTCIWEngine& self, const LMRTCAudioData& data) {
        deliver(self.remoteAudioMixedDelegate_(), data, 0);
      }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteAudioReceivedDelegate(const AudioObserver& observer,
                                                           const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto user = joined.room->getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  const auto stream = normalStream(*user, LMRTCMediaTypeAudio);
  if (!stream) return LMRTCWrapperCodeSuccess;

  keepOrForget(remoteAudioReceivedDelegates_, userId, observer);
  stream->setAudioDataCallback(
      audioHook(observer != nullptr, [userId](const LMRTCIWEngine& self, const LMRTCAudioData& data) {
        deliver(self.remoteAudioReceivedDelegates_.find(userId).value_or(nullptr), data);
      }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalVideoProcessedDelegate(const SampleObserver& observer) {
  const CallFrame frame(__func__, "delegate:%@", {observer != nullptr});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  setLocalVideoProcessedDelegate_(observer);
  engine->defaultVideoStream()->setVideoSendBufferCallback(sampleHook(
      observer != nullptr, [](const LMRTCIWEngine& self) { return self.localVideoProcessedDelegate_(); }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteVideoProcessedDelegate(const PixelObserver& observer,
                                                            const std::string& userId) {
  const CallFrame frame(__func__, "userId:%@", {userId});
  const auto joined = joinedRoom();
  if (!joined) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, "room is nil or localUser is nil");
  const auto user = joined.room->getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  const auto stream =
      std::dynamic_pointer_cast<LMRTCVideoInputStream>(normalStream(*user, LMRTCMediaTypeVideo));
  if (!stream) return LMRTCWrapperCodeSuccess;

  keepOrForget(remoteVideoProcessedDelegates_, userId, observer);
  watchPictures(*stream, observer != nullptr);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalCustomVideoProcessedDelegate(const SampleObserver& observer,
                                                                 const std::string& tag) {
  const CallFrame frame(__func__, "tag:%@", {tag});
  const auto custom = customStreams_.find(tag).value_or(nullptr);
  if (!custom) return frame.fail(LMRTCWrapperCodeStreamNotExist, "stream is nil");
  if (custom->type != LMRTCIWCustomStream::kFile) return LMRTCWrapperCodeInterfaceNotSupport;

  keepOrForget(localCustomVideoProcessedDelegates_, tag, observer);
  custom->stream->setVideoSendBufferCallback(
      sampleHook(observer != nullptr, [tag](const LMRTCIWEngine& self) {
        return self.localCustomVideoProcessedDelegates_.find(tag).value_or(nullptr);
      }));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteCustomVideoProcessedDelegate(const PixelObserver& observer,
                                                                  const std::string& userId,
                                                                  const std::string& tag) {
  const CallFrame frame(__func__, "userId:%@,tag:%@", {userId, tag});
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) {
    return frame.fail(LMRTCWrapperCodeLocalUserNotJoined,
                      "room is nil or localUser is nil or iwRoomSetup is nil");
  }
  // Before user and stream are found: hosts rely on it.
  keepOrForget(remoteCustomVideoProcessedDelegates_, lumo::customStreamKey(userId, tag), observer);
  const auto user = joined.room->getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  const auto stream = lumo::taggedStream(*user, tag, LMRTCMediaTypeVideo);
  if (!stream) return failWithoutStream();
  watchPictures(*stream, observer != nullptr);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setRemoteCustomAudioReceivedDelegate(const AudioObserver& observer,
                                                                 const std::string& userId,
                                                                 const std::string& tag) {
  const CallFrame frame(__func__, "userId:%@,tag:%@", {userId, tag});
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) {
    return frame.fail(LMRTCWrapperCodeLocalUserNotJoined,
                      "room is nil or localUser is nil or iwRoomSetup is nil");
  }
  const auto key = lumo::customStreamKey(userId, tag);
  keepOrForget(remoteCustomAudioProcessedDelegates_, key, observer);
  const auto user = joined.room->getRemoteUser(userId);
  if (!user) return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil");
  const auto stream = lumo::taggedStream(*user, tag, LMRTCMediaTypeAudio);
  if (!stream) return failWithoutStream();

  stream->setAudioDataCallback(
      audioHook(observer != nullptr, [key](const LMRTCIWEngine& self, const LMRTCAudioData& data) {
        deliver(self.remoteCustomAudioProcessedDelegates_.find(key).value_or(nullptr), data);
      }));
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::willRenderCVPixelBufferRef(const CVPixelBufferRef& pixelBuffer,
                                               const std::shared_ptr<LMRTCVideoInputStream>& stream) {
  const auto pass = callbackGate_.enter();
  if (!pass) return;
  PixelObserver observer;
  if (stream->mediaStreamType() == LMRTCMediaStreamTypeNormal) {
    observer = remoteVideoProcessedDelegates_.find(stream->userId()).value_or(nullptr);
  } else {
    thread_local std::string key;  // keeps its memory from picture to picture
    lumo::assignCustomStreamKey(key, stream->userId(), stream->tag());
    observer = remoteCustomVideoProcessedDelegates_.find(key).value_or(nullptr);
  }
  if (observer && observer->onPixelBuffer) observer->onPixelBuffer(pixelBuffer);
}

void LMRTCIWEngine::watchPictures(LMRTCVideoInputStream& stream, bool wanted) {
  stream.setDelegate(wanted ? asDelegate<LMRTCVideoInputStreamDelegate>()
                            : std::weak_ptr<LMRTCVideoInputStreamDelegate>());
}
