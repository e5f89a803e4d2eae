#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"

// Sub-rooms: links with other rooms.

namespace {

using Delegate = LMRTCIWEngineDelegate;
using lumo::Console;

constexpr char kNotJoined[] = "room is nil or localUser is nil or iwRoomSetup is nil";

}  // namespace

std::int64_t LMRTCIWEngine::requestJoinSubRoom(const std::string& roomId, const std::string& userId,
                                               bool autoLayout, const std::string& extra) {
  const CallFrame frame(__func__, "roomId:%@,userId:%@,autoLayout:%@,extra:%@",
                        {roomId, userId, autoLayout, extra});
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  joined.localUser->requestJoinOtherRoom(
      roomId, userId, autoLayout, extra,
      [self = shared_from_this(), frame, roomId, userId, autoLayout, extra](std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, roomId:%@,userId:%@,autoLayout:%@,extra:%@",
                     {"onJoinSubRoomRequested", code, roomId, userId, autoLayout, extra});
        self->notify(&Delegate::onJoinSubRoomRequested, roomId, userId, code,
                     LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::cancelJoinSubRoomRequest(const std::string& roomId, const std::string& userId,
                                                     const std::string& extra) {
  const CallFrame frame(__func__, "roomId:%@,userId:%@,extra:%@", {roomId, userId, extra});
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  joined.localUser->cancelRequestJoinOtherRoom(
      roomId, userId, extra, [self = shared_from_this(), frame, roomId, userId, extra](std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, roomId:%@,userId:%@,extra:%@",
                     {"onJoinSubRoomRequestCanceled", code, roomId, userId, extra});
        self->notify(&Delegate::onJoinSubRoomRequestCanceled, roomId, userId, code,
                     LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::responseJoinSubRoomRequest(const std::string& roomId, const std::string& userId,
                                                       bool agree, bool autoLayout,
                                                       const std::string& extra) {
  const CallFrame frame(__func__, "roomId:%@,userId:%@,agree:%@,autoLayout:%@,extra:%@",
                        {roomId, userId, agree, autoLayout, extra});
  const auto joined = joinedRoom();
  if (!joined || !iwRoomSetup()) return frame.fail(LMRTCWrapperCodeLocalUserNotJoined, kNotJoined);
  joined.localUser->responseJoinOtherRoom(
      roomId, userId, agree, autoLayout, extra,
      [self = shared_from_this(), frame, roomId, userId, agree, autoLayout, extra](std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, roomId:%@,userId:%@,agree:%@,autoLayout:%@,extra:%@",
                     {"onJoinSubRoomRequestResponded", code, roomId, userId, agree, autoLayout, extra});
        self->notify(&Delegate::onJoinSubRoomRequestResponded, roomId, userId, agree, code,
                     LMRTCCodeDefine::codeDesc(code));
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::joinSubRoom(const std::string& roomId) {
  const CallFrame frame(__func__, "roomId:%@", {roomId});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->joinOtherRoom(
      roomId, [self = shared_from_this(), frame, roomId](std::int64_t code, const OtherRoomPtr& room) {
        Console::write("LMRTCIWEngine joinSubRoom completion code: %zd", {code});
        const auto pass = self->callbackGate_.enter();
        const bool success = room && code == 0 && pass;
        if (success) {
          room->setDelegate(self->asDelegate<LMRTCOtherRoomEventDelegate>());
          self->subs_.insertOrAssign(roomId, room);
        }
        self->notify(&Delegate::onSubRoomJoined, roomId, code, LMRTCCodeDefine::codeDesc(code));
        if (!success) return;
        frame.result(code, "callback:%@, code:%@, roomId:%@", {"onSubRoomBanded", code, roomId});
        self->notify(&Delegate::onSubRoomBanded, roomId);
        self->callbackRemoteUsers(*room);
      });
  return LMRTCWrapperCodeSuccess;
}

std::int64_t LMRTCIWEngine::leaveSubRoom(const std::string& roomId, bool disband) {
  const CallFrame frame(__func__, "roomId:%@,disband:%@", {roomId, disband});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  engine->leaveOtherRoom(
      roomId, disband, [self = shared_from_this(), frame, roomId, disband](bool success, std::int64_t code) {
        frame.result(code, "callback:%@, code:%@, roomId:%@,disband:%@",
                     {"onSubRoomLeft", code, roomId, disband});
        self->notify(&Delegate::onSubRoomLeft, roomId, code, LMRTCCodeDefine::codeDesc(code));
        if (success) self->forgetSubRoom(roomId);
      });
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::didRequestJoinOtherRoom(const std::string& inviterRoomId,
                                            const std::string& inviterUserId, const std::string& extra) {
  Console::write("LMRTCIWEngine didRequestJoinOtherRoom: %@ inviterUserId: %@ extra: %@",
                 {inviterRoomId, inviterUserId, extra});
  announce(&Delegate::onJoinSubRoomRequestReceived, "onJoinSubRoomRequestReceived",
           "inviterRoomId:%@,inviterUserId:%@,extra:%@", inviterRoomId, inviterUserId, extra);
}

void LMRTCIWEngine::didCancelRequestOtherRoom(const std::string& inviterRoomId,
                                              const std::string& inviterUserId, const std::string& extra) {
  Console::write("LMRTCIWEngine didCancelRequestOtherRoom: %@ inviterUserId: %@ extra: %@",
                 {inviterRoomId, inviterUserId, extra});
  announce(&Delegate::onCancelJoinSubRoomRequestReceived, "onCancelJoinSubRoomRequestReceived",
           "inviterRoomId:%@,inviterUserId:%@,extra:%@", inviterRoomId, inviterUserId, extra);
}

void LMRTCIWEngine::didResponseJoinOtherRoom(const std::string& inviterRoomId,
                                             const std::string& inviterUserId,
                                             const std::string& inviteeRoomId,
                                             const std::string& inviteeUserId, bool agree,
                                             const std::string& extra) {
  // The other event's name is kept for hosts.
  Console::write(
      "LMRTCIWEngine didCancelRequestOtherRoom: %@ inviterUserId: %@ inviteeRoomId: %@ inviteeUserId: %@ "
      "agree: %@ "
      "extra: %@",
      {inviterRoomId, inviterUserId, inviteeRoomId, inviteeUserId, agree, extra});
  const auto joined = joinedRoom();
  if (!joined) return LMIMIWLog::error("stream:didResponseJoinOtherRoom", "room is nil or localUser is nil");

  const std::string& localUserId = joined.localUser->userId();
  if (agree && localUserId == inviteeUserId) return;  // has heard the result of the own answer
  if (!agree || localUserId == inviterUserId) {
    announce(&Delegate::onJoinSubRoomRequestResponseReceived, "onJoinSubRoomRequestResponseReceived",
             "inviteeRoomId:%@,inviteeUserId:%@,agree:%@,extra:%@", inviteeRoomId, inviteeUserId, agree,
             extra);
  } else {
    const bool ownInvitation = inviterRoomId == joined.room->roomId();
    announce(&Delegate::onSubRoomBanded, "onSubRoomBanded", "roomId:%@",
             ownInvitation ? inviteeRoomId : inviterRoomId);
  }
}

void LMRTCIWEngine::didFinishOtherRoom(const std::string& roomId, const std::string& userId) {
  Console::write("LMRTCIWEngine didFinishOtherRoom: %@ userId: %@", {roomId, userId});
  notify(&Delegate::onSubRoomDisband, roomId, userId);
  leaveSubRoom(roomId, false);
  forgetSubRoom(roomId);
}

void LMRTCIWEngineBase::forgetSubRoom(const std::string& roomId) {
  if (const auto subRoom = subs_.find(roomId).value_or(nullptr)) subRoom->setDelegate({});
  subs_.erase(roomId);
}
