#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/SdkVideoConfig.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/engine/StreamSelection.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"

// Custom streams: media files of the local user, and the tagged streams of remote users.

namespace {

using Delegate = LMRTCIWEngineDelegate;

constexpr char kNotJoined[] = "room is nil or localUser is nil or iwRoomSetup is nil";

bool isFile(const LMRTCIWCustomStream& custom) { return custom.type == LMRTCIWCustomStream::kFile; }

std::shared_ptr<LMRTCFileVideoOutputStream> asFile(const LMRTCIWCustomStream& custom) {
  return isFile(custom) ? std::dynamic_pointer_cast<LMRTCFileVideoOutputStream>(custom.stream) : nullptr;
}

}  // namespace

// Of the local user

std::int64_t LMRTCIWEngine::createCustomStreamFromFile(const OptionalText& url, const std::string& tag,
                                                       bool replace, bool playback) {
  const CallFrame frame(__func__, "url:%@,tag:%@,replace:%@,playback:%@", {url, tag, replace, playback});
  if (!joinedRoom() || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  if (!url) return frame.fail(LMRTCWrapperCodeParameterError, "url is nil");
  const auto engine = rtcEngine();
  auto stream =
      engine ? engine->createFileVideoOutputStream(*url, replace, playback, tag, LMRTCVideoStreamConfig())
             : nullptr;
  if (!stream) return frame.fail(LMRTCWrapperCodeCreateCustomStreamError, "nativeStream is nil");
  keepOrForget(customStreams_, tag,
               std::make_shared<LMRTCIWCustomStream>(LMRTCIWCustomStream::kFile, std::move(stream)));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setCustomStreamVideoConfig(const LMRTCIWVideoConfig* config,
                                                       const std::string& tag) {
  const LMRTCIWVideoConfig& values = config ? *config : lumo::kNoVideoConfig;
  const CallFrame frame(
      __func__, "minBitrate:%@,maxBitrate:%@,fps:%@,resolution:%@,mirror:%@,tag:%@",
      {values.minBitrate, values.maxBitrate, values.fps, values.resolution, values.mirror, tag});
  if (!joinedRoom() || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  if (!config) return frame.fail(LMRTCWrapperCodeParameterError, "config is nil");
  const auto custom = customStreams_.find(tag).value_or(nullptr);
  if (!custom) return frame.fail(LMRTCWrapperCodeStreamNotExist, "stream is nil");
  if (!isFile(*custom)) return LMRTCWrapperCodeInterfaceNotSupport;
  custom->stream->setVideoConfig(lumo::sdkVideoConfig(values));
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::muteLocalCustomStream(const std::string& tag, bool mute) {
  const CallFrame frame(__func__, "tag:%@,mute:%@", {tag, mute});
  if (!joinedRoom() || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  const auto custom = customStreams_.find(tag).value_or(nullptr);
  if (!custom) return frame.fail(LMRTCWrapperCodeStreamNotExist, "stream is nil");
  custom->stream->setIsMute(mute);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::setLocalCustomStreamView(const std::shared_ptr<LMRTCIWView>& view,
                                                     const std::string& tag) {
  const CallFrame frame(__func__, "view:%@,tag:%@", {view != nullptr, tag});
  return setLocalCustomStreamViewWithViewDelegate(view, tag);
}

std::int64_t LMRTCIWEngine::setLocalCustomStreamViewWithViewDelegate(
    const std::shared_ptr<LMRTCIWViewDelegate>& view, const std::string& tag) {
  const CallFrame frame(__func__, "view:%@,tag:%@", {view != nullptr, tag});
  if (!view) return frame.fail(LMRTCWrapperCodeParameterError, "view is nil");
  const auto custom = customStreams_.find(tag).value_or(nullptr);
  if (!custom) return frame.fail(LMRTCWrapperCodeStreamNotExist, "stream is nil");
  if (!isFile(*custom)) return LMRTCWrapperCodeInterfaceNotSupport;
  keepOrForget(localCustomViews_, tag, view);
  view->setLocalView(custom->stream);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeLocalCustomStreamView(const std::string& tag) {
  const CallFrame frame(__func__, "tag:%@", {tag});
  const auto view = localCustomViews_.find(tag).value_or(nullptr);
  if (!view) return LMRTCWrapperCodeParameterError;
  LMIMIWLog::error(__func__, "view is nil");  // on the way to success: kept for hosts
  view->removeLocalView();
  return LMRTCWrapperCodeSuccess;
}

LMRTCIWEngineBase::CustomPublication LMRTCIWEngineBase::customPublication(const CallFrame& frame,
                                                                          const std::string& tag) const {
  const auto joined = joinedRoom();
  const auto setup = iwRoomSetup();
  if (!joined || !setup) return {frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined), {}, {}, {}};
  const auto custom = customStreams_.find(tag).value_or(nullptr);
  if (!custom) return {frame.fail(LMRTCWrapperCodeStreamNotExist, "stream is nil"), {}, {}, {}};
  const std::int64_t role = setup->role;
  const bool mayPublish = role == LMRTCIWRoleMeetingMember || role == LMRTCIWRoleLiveBroadcaster;
  return {mayPublish ? LMRTCWrapperCodeSuccess : LMRTCWrapperCodeParameterError, joined.localUser, custom,
          role};
}

std::int64_t LMRTCIWEngine::publishCustomStream(const std::string& tag) {
  const CallFrame frame(__func__, "tag:%@", {tag});
  const auto [check, localUser, custom, role] = customPublication(frame, tag);
  if (check != LMRTCWrapperCodeSuccess) return check;

  const bool file = isFile(*custom);
  if (const auto stream = asFile(*custom))
    stream->setDelegate(asDelegate<LMRTCFileVideoOutputStreamDelegate>());
  const auto finish = [self = shared_from_this(), frame, tag, role = role, file](bool success,
                                                                                 std::int64_t code) {
    frame.result(code, "callback:%@, code:%@, tag:%@,role:%@", {"onCustomStreamPublished", code, tag, role});
    if (success && file) return;  // reported when reading starts
    self->notify(&Delegate::onCustomStreamPublished, tag, code, LMRTCCodeDefine::codeDesc(code));
  };
  if (role == LMRTCIWRoleMeetingMember) {
    localUser->publishStream(custom->stream, finish);
  } else {
    localUser->publishLiveStream(
        custom->stream, [weak = weak_from_this(), finish](bool success, std::int64_t code,
                                                          const std::shared_ptr<LMRTCLiveInfo>& liveInfo) {
          const auto self = weak.lock();
          if (success && self) self->keepLiveInfo(liveInfo);
          finish(success, code);
        });
  }
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unpublishCustomStream(const std::string& tag) {
  const CallFrame frame(__func__, "tag:%@", {tag});
  const auto [check, localUser, custom, role] = customPublication(frame, tag);
  if (check != LMRTCWrapperCodeSuccess) return check;

  if (const auto stream = asFile(*custom)) stream->stop();
  unpublishCustom(*localUser, custom->stream, role,
                  [self = shared_from_this(), frame, tag, role = role](bool, std::int64_t code) {
                    lumo::Console::write("LMRTCIWEngine unpublishCustomStream completion: %zd", {code});
                    const auto callback = self->listener(&Delegate::onCustomStreamUnpublished);
                    if (!callback) return;
                    frame.result(code, "callback:%@, code:%@, tag:%@,role:%@",
                                 {"onCustomStreamUnpublished", code, tag, role});
                    (*callback)(tag, static_cast<std::int32_t>(code), LMRTCCodeDefine::codeDesc(code));
                  });
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::unpublishCustom(LMRTCLocalUser& localUser,
                                    const std::shared_ptr<LMRTCOutputStream>& stream, std::int64_t role,
                                    std::function<void(bool success, std::int64_t code)> done) {
  if (role == LMRTCIWRoleMeetingMember)
    localUser.unpublishStream(stream, std::move(done));
  else if (role == LMRTCIWRoleLiveBroadcaster)
    localUser.unpublishLiveStream(stream, std::move(done));
}

void LMRTCIWEngine::fileVideoOutputStreamDidStartRead(const FileStreamPtr& stream) {
  lumo::Console::write("LMRTCIWEngine fileVideoOutputStreamDidStartRead: %@", {stream->tag()});
  announceAs(&Delegate::onCustomStreamPublished, "onCustomStreamPublished", "tag:%@,code:%@",
             {stream->tag(), LMRTCWrapperCodeSuccess}, stream->tag(), LMRTCWrapperCodeSuccess,
             LMRTCCodeDefine::codeDesc(LMRTCWrapperCodeSuccess));
}

void LMRTCIWEngine::fileVideoOutputStreamDidReadCompleted(const FileStreamPtr& stream) {
  lumo::Console::write("LMRTCIWEngine fileVideoOutputStreamDidReadCompleted: %@", {stream->tag()});
  stream->stop();
  const auto joined = joinedRoom();
  if (!joined) {
    lumo::Console::write("LMRTCIWEngine fileVideoOutputStreamDidReadCompleted room return: %zd",
                         {LMRTCWrapperCodeLocalUserNotJoined});
    return;
  }
  const auto setup = iwRoomSetup();
  unpublishCustom(*joined.localUser, stream, setup ? setup->role : LMRTCIWRoleMeetingMember,
                  [self = shared_from_this(), tag = stream->tag()](bool, std::int64_t) {
                    self->announce(&Delegate::onCustomStreamPublishFinished, "onCustomStreamPublishFinished",
                                   "tag:%@", tag);
                  });
}

void LMRTCIWEngine::fileVideoOutputStreamDidFailed(const FileStreamPtr& stream) {
  lumo::Console::write("LMRTCIWEngine fileVideoOutputStreamDidFailed: %@", {stream->tag()});
  announceAs(&Delegate::onCustomStreamPublished, "onCustomStreamPublished", "tag:%@,code:%@",
             {stream->tag(), LMRTCWrapperCodeOpenFileError}, stream->tag(), LMRTCWrapperCodeOpenFileError,
             "Open File Error.");
}

// Of remote users

LMRTCIWEngine::InputStreams LMRTCIWEngine::getCustomStreams(const RemoteUserPtr& user, const std::string& tag,
                                                            std::int64_t mediaType) {
  const CallFrame frame(__func__, "user:%@,tag:%@,type:%@",
                        {user ? user->userId() : std::nullopt, tag, mediaType});
  if (!user) return {};
  auto streams = user->remoteStreams();
  std::erase_if(streams, [&](const auto& stream) {
    return stream->tag() != tag || !lumo::isWanted(*stream, mediaType);
  });
  return streams;
}

std::int64_t LMRTCIWEngine::muteRemoteCustomStream(const std::string& userId, const std::string& tag,
                                                   std::int64_t mediaType, bool mute) {
  const CallFrame frame(__func__, "userId:%@,tag:%@,type:%@,mute:%@", {userId, tag, mediaType, mute});
  const auto selected = selectCustomStreams(frame, userId, tag, mediaType);
  for (const auto& stream : selected.streams) stream->setIsMute(mute);
  return selected.code;
}

std::int64_t LMRTCIWEngine::setRemoteCustomStreamView(const std::shared_ptr<LMRTCIWView>& view,
                                                      const std::string& userId, const std::string& tag) {
  const CallFrame frame(__func__, "view:%@,userId:%@,tag:%@", {view != nullptr, userId, tag});
  return setRemoteCustomStreamViewWithViewDelegate(view, userId, tag);
}

std::int64_t LMRTCIWEngine::setRemoteCustomStreamViewWithViewDelegate(
    const std::shared_ptr<LMRTCIWViewDelegate>& view, const std::string& userId, const std::string& tag) {
  const CallFrame frame(__func__, "view:%@,userId:%@,tag:%@", {view != nullptr, userId, tag});
  if (!joinedRoom() || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  if (!view) return frame.fail(LMRTCWrapperCodeParameterError, "view is nil");
  const auto user = getRemoteUser(userId);
  if (!user)
    return frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "view is nil");  // the text is kept for hosts
  const auto stream = lumo::taggedStream(*user, tag, LMRTCMediaTypeVideo);
  if (!stream) {
    lumo::Console::write("LMRTCIWEngine setRemoteCustomStreamView return: %zd",
                         {LMRTCWrapperCodeStreamNotExist});
    return LMRTCWrapperCodeStreamNotExist;
  }
  keepOrForget(remoteCustomViews_, lumo::customStreamKey(userId, tag), view);
  view->setRemoteView(stream);
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::removeRemoteCustomStreamView(const std::string& userId, const std::string& tag) {
  const CallFrame frame(__func__, "userId:%@,tag:%@", {userId, tag});
  if (!joinedRoom() || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  const auto view = remoteCustomViews_.find(lumo::customStreamKey(userId, tag)).value_or(nullptr);
  if (!view) return LMRTCWrapperCodeParameterError;
  LMIMIWLog::error(__func__, "view is nil");  // on the way to success: kept for hosts
  view->removeRemoteView();
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::subscribeCustomStream(const std::string& userId, const std::string& tag,
                                                  std::int64_t mediaType, bool tiny) {
  const CallFrame frame(__func__, "userId:%@,tag:%@,type:%@,tiny:%@", {userId, tag, mediaType, tiny});
  const auto selected = selectCustomStreams(frame, userId, tag, mediaType);
  if (!selected.localUser) return selected.code;
  const InputStreams& streams = selected.streams;
  selected.localUser->subscribeStream(
      tiny ? InputStreams{} : streams, tiny ? streams : InputStreams{},
      [self = shared_from_this(), frame, userId, tag, mediaType, tiny, streams](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, userId:%@,tag:%@,type:%@,tiny:%@",
                     {"onCustomStreamSubscribed", code, userId, tag, mediaType, tiny});
        self->notifyPerStream(&Delegate::onCustomStreamSubscribed, streams, code);
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::unsubscribeCustomStream(const std::string& userId, const std::string& tag,
                                                    std::int64_t mediaType) {
  const CallFrame frame(__func__, "userId:%@,tag:%@,type:%@", {userId, tag, mediaType});
  const auto selected = selectCustomStreams(frame, userId, tag, mediaType);
  if (!selected.localUser) return selected.code;
  const InputStreams& streams = selected.streams;
  selected.localUser->unsubscribeStreams(
      streams, [self = shared_from_this(), frame, userId, tag, mediaType, streams](bool, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, userId:%@,tag:%@,type:%@",
                     {"onCustomStreamUnsubscribed", code, userId, tag, mediaType});
        self->notifyPerStream(&Delegate::onCustomStreamUnsubscribed, streams, code);
      });
  return LMRTCWrapperCodeSuccess;
}

LMRTCIWEngine::CustomSelection LMRTCIWEngine::selectCustomStreams(const CallFrame& frame,
                                                                  const std::string& userId,
                                                                  const std::string& tag,
                                                                  std::int64_t mediaType) {
  auto joined = joinedRoom();
  if (!joined || !iwRoomSetup())
    return {frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined), nullptr, {}};
  const auto user = getRemoteUser(userId);
  if (!user) return {frame.fail(LMRTCWrapperCodeRemoteUserNotJoined, "user is nil"), nullptr, {}};
  auto streams = getCustomStreams(user, tag, mediaType);
  if (streams.empty()) return {frame.fail(LMRTCWrapperCodeStreamNotExist, "streams count < 1"), nullptr, {}};
  return {LMRTCWrapperCodeSuccess, std::move(joined.localUser), std::move(streams)};
}

void LMRTCIWEngineBase::notifyPerStream(CustomStreamCallback LMRTCIWEngineDelegate::*field,
                                        const InputStreams& streams, std::int64_t code) const {
  if (!listener(field)) return;
  const auto message = LMRTCCodeDefine::codeDesc(code);
  parseInPutStream(streams,
                   [&](bool, const std::string& userId, const std::string& tag, std::int64_t mediaType) {
                     notify(field, userId, tag, mediaType, code, message);
                   });
}
