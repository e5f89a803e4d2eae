#include "LumoRTCLibWrapper/engine/Notify.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/engine/StreamList.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/util/LMIWLog.h"

// Events of the SDK on their way to the host.

using Delegate = LMRTCIWEngineDelegate;
using lumo::Console;
using lumo::StreamList;

namespace {

constexpr char kRoomOrUserNil[] = "room is nil or localUser is nil";
constexpr char kRoomOrUserOrSetupNil[] = "room is nil or localUser is nil or iwRoomSetup is nil";
constexpr char kRoomNil[] = "room is nil ";  // the trailing blank is kept for hosts

constexpr std::int64_t kAudio = LMRTCMediaTypeAudio;
constexpr std::int64_t kVideo = LMRTCMediaTypeVideo;

/// The host's role for an SDK role type.
std::int64_t toRole(std::int64_t roleType) {
  return roleType == LMRTCRoleTypeBroadcaster ? LMRTCIWRoleLiveBroadcaster : LMRTCIWRoleLiveAudience;
}

/// What the host gets for an id that the log shows as absent.
std::string orEmpty(const std::optional<std::string>& id) { return id.value_or(std::string()); }

bool isNormal(const LMRTCInputStream& stream) {
  return stream.mediaStreamType() == LMRTCMediaStreamTypeNormal;
}

}  // namespace

// Engine

void LMRTCIWEngine::didKicked(const std::string& roomId, std::int64_t reason) {
  Console::write("LMRTCIWEngine didKicked: %@ reason: %zd", {roomId, reason});
  if (!roomIdForEvent(__func__)) return;
  announce(&Delegate::onKicked, "onKicked", "room:%@", roomId, lumo::format("%zd", {reason}));
}

// Main room

void LMRTCIWEngine::didJoinUser(const RemoteUserPtr& user) {
  const auto userId = user->userId();
  Console::write("LMRTCIWEngine didJoinUser: %@", {userId});
  const auto main = joinedRoom();
  if (!main || !userId) return LMIMIWLog::error(__func__, kRoomOrUserNil);
  const std::string& roomId = main.room->roomId();
  LMIMIWLog::listener("onUserJoined", "room:%@,userId:%@", {roomId, *userId});
  notify(&Delegate::onUserJoined, roomId, *userId);
}

void LMRTCIWEngine::didLeaveUser(const RemoteUserPtr& user) {
  const auto userId = user->userId();
  Console::write("LMRTCIWEngine didLeaveUser: %@", {userId});
  const auto roomId = roomIdForEvent(__func__);
  if (!roomId) return;
  LMIMIWLog::listener("onUserLeft", "room:%@,userId:%@", {*roomId, userId});
  notify(&Delegate::onUserLeft, *roomId, orEmpty(userId));
}

void LMRTCIWEngine::didOfflineUser(const RemoteUserPtr& user) {
  const auto userId = user->userId();
  Console::write("LMRTCIWEngine didOfflineUser: %@", {userId});
  const auto roomId = roomIdForEvent("didLeaveUser");  // the other event's name is kept for hosts
  if (!roomId) return;
  LMIMIWLog::listener("onUserOffline", "room:%@,userId:%@", {*roomId, userId});
  notify(&Delegate::onUserOffline, *roomId, orEmpty(userId));
}

void LMRTCIWEngine::didReportFirstFrame(const InputStreamPtr& stream, std::int64_t mediaType) {
  Console::write("LMRTCIWEngine didReportFirstFrame: %@ , media type: %@", {stream->streamId(), mediaType});
  if (const auto roomId = roomIdForEvent(__func__)) reportFirstFrame(*roomId, *stream, mediaType, true);
}

void LMRTCIWEngine::didPublishStreams(const InputStreams& streams) {
  Console::write("LMRTCIWEngine didPublishStreams: %@", {StreamList{streams}});
  if (const auto roomId = roomIdForEvent(__func__)) reportPublished(*roomId, streams);
}

void LMRTCIWEngine::didUnpublishStreams(const InputStreams& streams) {
  Console::write("LMRTCIWEngine didUnpublishStreams: %@", {StreamList{streams}});
  if (const auto roomId = roomIdForEvent(__func__)) reportUnpublished(*roomId, streams);
}

void LMRTCIWEngine::didPublishLiveStreams(const InputStreams& streams) {
  Console::write("LMRTCIWEngine didPublishLiveStreams: %@", {StreamList{streams}});
  const auto main = joinedRoom();
  if (!main || !iwRoomSetup()) return LMIMIWLog::error(__func__, kRoomOrUserOrSetupNil);
  if (!listener(&Delegate::onRemoteLiveMixPublished)) return;
  // What the room has now, which may differ from the event's list.
  const auto liveStreams = main.room->getLiveStreams();
  parseInPutStream(liveStreams, [this](bool, const std::string&, const std::string&, std::int64_t mediaType) {
    announce(&Delegate::onRemoteLiveMixPublished, "onRemoteLiveMixPublished", "type:%@", mediaType);
  });
}

void LMRTCIWEngine::didUnpublishLiveStreams(const InputStreams& streams) {
  Console::write("LMRTCIWEngine didUnpublishLiveStreams: %@", {StreamList{streams}});
  if (!joinedRoom() || !iwRoomSetup()) return LMIMIWLog::error(__func__, kRoomOrUserOrSetupNil);
  if (!listener(&Delegate::onRemoteLiveMixUnpublished)) return;
  parseInPutStream(streams, [this](bool, const std::string&, const std::string&, std::int64_t mediaType) {
    announce(&Delegate::onRemoteLiveMixUnpublished, "onRemoteLiveMixUnpublished", "type:%@", mediaType);
  });
}

void LMRTCIWEngine::didPublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) {
  LMIMIWLog::step("LMRTCIWEngine didPublishCDNStream");
  announce(&Delegate::onRemoteLiveMixInnerCdnStreamPublished, "onRemoteLiveMixInnerCdnStreamPublished", "");
}

void LMRTCIWEngine::didUnpublishCDNStream(const std::shared_ptr<LMRTCCDNInputStream>&) {
  LMIMIWLog::step("LMRTCIWEngine didUnpublishCDNStream");
  announce(&Delegate::onRemoteLiveMixInnerCdnStreamUnpublished, "onRemoteLiveMixInnerCdnStreamUnpublished",
           "");
}

void LMRTCIWEngine::didAudioMute(const InputStreamPtr& stream, bool muted) {
  Console::write("LMRTCIWEngine stream: %@ didAudioMute: %@", {stream->streamId(), muted});
  const auto roomId = roomIdForEvent("stream:didAudioMute");
  if (!roomId) return;
  if (isNormal(*stream)) {
    announce(&Delegate::onRemoteStateChanged, "onRemoteStateChanged",
             "roomId:%@,userId:%@,type:%@,disabled:%@", *roomId, stream->userId(), kAudio, muted);
  } else {
    announce(&Delegate::onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged",
             "roomId:%@,userId:%@,tag:%@,type:%@,disabled:%@", *roomId, stream->userId(), stream->tag(),
             kAudio, muted);
  }
}

void LMRTCIWEngine::didVideoEnable(const InputStreamPtr& stream, bool enabled) {
  Console::write("LMRTCIWEngine stream: %@ didVideoEnable: %@", {stream->streamId(), enabled});
  const auto roomId = roomIdForEvent("stream:didVideoEnable");
  if (!roomId) return;
  constexpr char kKeys[] = "roomId:%@,userId:%@,type:%@,disabled:%@";
  const std::string& userId = stream->userId();
  if (isNormal(*stream)) {
    announce(&Delegate::onRemoteStateChanged, "onRemoteStateChanged", kKeys, *roomId, userId, kVideo,
             !enabled);
  } else {
    announceAs(&Delegate::onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged", kKeys,
               {*roomId, userId, kVideo, !enabled},  // without the tag: kept for hosts
               *roomId, userId, stream->tag(), kVideo, !enabled);
  }
}

void LMRTCIWEngine::didReceiveMessage(const std::string&) {}  // room messages do not concern the host

void LMRTCIWEngine::didSwitchRoleWithUser(const RemoteUserPtr& user, std::int64_t roleType) {
  const auto userId = user->userId();
  Console::write("LMRTCIWEngine didSwitchRoleWithUser: %@ roleType: %@", {userId, roleType});
  const auto main = room();
  if (!main) return LMIMIWLog::error(__func__, kRoomNil);
  const std::string& roomId = main->roomId();
  const std::int64_t role = toRole(roleType);
  announceAs(&Delegate::onRemoteLiveRoleSwitched, "onRemoteLiveRoleSwitched", "roomId:%@,userId:%@,role:%@",
             {roomId, userId, role}, roomId, orEmpty(userId), role);
}

void LMRTCIWEngine::didReceiveSEI(const std::string& sei, const std::string& userId) {
  Console::write("LMRTCIWEngine didReceiveSEI: %@ userId: %@", {sei, userId});
  const auto main = room();
  if (!main) return LMIMIWLog::error(__func__, kRoomNil);
  announce(&Delegate::onSeiReceived, "onSeiReceived", "roomId:%@,userId:%@,sei:%@", main->roomId(), userId,
           sei);
}

void LMRTCIWEngine::didReceiveLiveStreamSEI(const std::string& sei) {
  Console::write("LMRTCIWEngine didReceiveLiveStreamSEI: %@", {sei});
  announce(&Delegate::onLiveMixSeiReceived, "onLiveMixSeiReceived", "sei:%@", sei);
}

// Sub-rooms

void LMRTCIWEngine::didJoinUser(const OtherRoomPtr& subRoom, const RemoteUserPtr& user) {
  const auto userId = user->userId();
  Console::write("LMRTCIWEngine room: %@ didJoinUser: %@", {subRoom->roomId(), userId});
  announceAs(&Delegate::onUserJoined, "onUserJoined", "room:%@,user:%@", {subRoom->roomId(), userId},
             subRoom->roomId(), orEmpty(userId));
  callbackRemoteUser(*user, subRoom->roomId());
}

void LMRTCIWEngine::didOfflineUser(const OtherRoomPtr& subRoom, const RemoteUserPtr& user) {
  const auto userId = user->userId();
  announceAs(&Delegate::onUserOffline, "onUserOffline", "room:%@,user:%@", {subRoom->roomId(), userId},
             subRoom->roomId(), orEmpty(userId));
}

void LMRTCIWEngine::didLeaveUser(const OtherRoomPtr& subRoom, const RemoteUserPtr& user) {
  const auto userId = user->userId();
  announceAs(&Delegate::onUserLeft, "onUserLeft", "room:%@,user:%@", {subRoom->roomId(), userId},
             subRoom->roomId(), orEmpty(userId));
}

void LMRTCIWEngine::didPublishStreams(const OtherRoomPtr& subRoom, const InputStreams& streams) {
  Console::write("LMRTCIWEngine room: %@ didPublishStreams: %@", {subRoom->roomId(), StreamList{streams}});
  if (roomIdForEvent("room:didPublishStreams")) reportPublished(subRoom->roomId(), streams);
}

void LMRTCIWEngine::didUnpublishStreams(const OtherRoomPtr& subRoom, const InputStreams& streams) {
  Console::write("LMRTCIWEngine room: %@ didUnpublishStreams: %@", {subRoom->roomId(), StreamList{streams}});
  if (roomIdForEvent("room:didUnpublishStreams")) reportUnpublished(subRoom->roomId(), streams);
}

void LMRTCIWEngine::didReportFirstFrame(const OtherRoomPtr& subRoom, const InputStreamPtr& stream,
                                        std::int64_t mediaType) {
  Console::write("LMRTCIWEngine room: %@ didReportFirstFrame: %@ mediaType: %zd",
                 {subRoom->roomId(), stream->streamId(), mediaType});
  if (roomIdForEvent("room:didReportFirstFrame:mediaType")) {
    reportFirstFrame(subRoom->roomId(), *stream, mediaType, false);
  }
}

void LMRTCIWEngine::didAudioMute(const OtherRoomPtr& subRoom, const InputStreamPtr& stream, bool muted) {
  const std::string& roomId = subRoom->roomId();
  Console::write("LMRTCIWEngine room: %@ stream: %@ didAudioMute: %@", {roomId, stream->streamId(), muted});
  if (!roomIdForEvent("room:stream:didAudioMute")) return;
  if (isNormal(*stream)) {
    announce(&Delegate::onRemoteStateChanged, "onRemoteStateChanged", "room:%@,userId:%@,type:%@,disabled:%@",
             roomId, stream->userId(), kAudio, muted);
  } else {
    announce(&Delegate::onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged",
             "room:%@,userId:%@,tag:%@,type:%@,disabled:%@", roomId, stream->userId(), stream->tag(), kAudio,
             muted);
  }
}

void LMRTCIWEngine::didVideoEnable(const OtherRoomPtr& subRoom, const InputStreamPtr& stream, bool enabled) {
  const std::string& roomId = subRoom->roomId();
  const std::string& userId = stream->userId();
  Console::write("LMRTCIWEngine room: %@ stream: %@ didVideoEnable: %@",
                 {roomId, stream->streamId(), enabled});
  if (!roomIdForEvent("room:stream:didVideoEnable")) return;
  // The lines carry the audio type, 0: kept for hosts.
  if (isNormal(*stream)) {
    announceAs(&Delegate::onRemoteStateChanged, "onRemoteStateChanged",
               "room:%@,userId:%@,type:%@,disabled:%@", {roomId, userId, kAudio, !enabled}, roomId, userId,
               kVideo, !enabled);
  } else {
    announceAs(&Delegate::onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged",
               "room:%@,userId:%@,tag:%@,type:%@,disabled:%@",
               {roomId, userId, stream->tag(), kAudio, !enabled}, roomId, userId, stream->tag(), kVideo,
               !enabled);
  }
}

void LMRTCIWEngine::didReceiveMessage(const OtherRoomPtr& subRoom, const std::string& message) {
  Console::write("LMRTCIWEngine room: %@ didReceiveMessage: %@", {subRoom->roomId(), message});
}

void LMRTCIWEngine::didReceiveSEI(const OtherRoomPtr& subRoom, const std::string& sei,
                                  const std::string& userId) {
  Console::write("LMRTCIWEngine didReceiveSEI: %@ userId: %@", {sei, userId});  // no room: kept for hosts
  announce(&Delegate::onSeiReceived, "onSeiReceived", "roomId:%@,userId:%@,sei:%@", subRoom->roomId(), userId,
           sei);
}

// Common rules

LMRTCIWEngineBase::OptionalText LMRTCIWEngineBase::roomIdForEvent(const char* method) const {
  if (const auto main = joinedRoom()) return main.room->roomId();
  LMIMIWLog::error(method, kRoomOrUserNil);
  return std::nullopt;
}

void LMRTCIWEngineBase::reportPublished(const std::string& roomId, const InputStreams& streams) const {
  parseInPutStream(
      streams, [&](bool normal, const std::string& userId, const std::string& tag, std::int64_t mediaType) {
        if (normal) {
          announce(&Delegate::onRemotePublished, "onRemotePublished", "room:%@,userId:%@,type:%@", roomId,
                   userId, mediaType);
        } else {
          announce(&Delegate::onRemoteCustomStreamPublished, "onRemoteCustomStreamPublished",
                   "room:%@,userId:%@,tag:%@,type:%@", roomId, userId, tag, mediaType);
        }
      });
  for (const auto& stream : streams) {
    if (stream) reportPublishedState(roomId, *stream);
  }
}

void LMRTCIWEngineBase::reportPublishedState(const std::string& roomId,
                                             const LMRTCInputStream& stream) const {
  if (stream.mediaType() != kAudio && stream.mediaType() != kVideo) return;
  const bool disabled = stream.resourceState() == LMRTCResourceStateDisabled;
  if (isNormal(stream)) {
    announce(&Delegate::onRemoteStateChanged, "onRemoteStateChanged", "room:%@,userId:%@,type:%@,disabled:%@",
             roomId, stream.userId(), stream.mediaType(), disabled);
  } else {
    announce(&Delegate::onRemoteCustomStreamStateChanged, "onRemoteCustomStreamStateChanged",
             "room:%@,userId:%@,tag:%@,type:%@,disabled:%@", roomId, stream.userId(), stream.tag(),
             stream.mediaType(), disabled);
  }
}

void LMRTCIWEngineBase::reportUnpublished(const std::string& roomId, const InputStreams& streams) const {
  parseInPutStream(
      streams, [&](bool normal, const std::string& userId, const std::string& tag, std::int64_t mediaType) {
        if (normal) {
          announce(&Delegate::onRemoteUnpublished, "onRemoteUnpublished", "room:%@,userId:%@,type:%@", roomId,
                   userId, mediaType);
        } else {
          announce(&Delegate::onRemoteCustomStreamUnpublished, "onRemoteCustomStreamUnpublished",
                   "room:%@,userId:%@,tag:%@,type:%@", roomId, userId, tag, mediaType);
        }
      });
}

void LMRTCIWEngineBase::reportFirstFrame(const std::string& roomId, const LMRTCInputStream& stream,
                                         std::int64_t mediaType, bool logAlways) const {
  if (mediaType != kAudio && mediaType != kVideo) return;
  const auto report = [&](auto field, const char* method, const char* keys, const auto&... arguments) {
    const auto callback = listener(field);
    if (callback || logAlways) LMIMIWLog::listener(method, keys, {arguments...});
    if (callback) (*callback)(arguments...);
  };
  switch (stream.mediaStreamType()) {
    case LMRTCMediaStreamTypeLive:
      return report(&Delegate::onRemoteLiveMixFirstFrame, "onRemoteLiveMixFirstFrame", "type:%@", mediaType);
    case LMRTCMediaStreamTypeCustom:
      return report(&Delegate::onRemoteCustomStreamFirstFrame, "onRemoteCustomStreamFirstFrame",
                    "room:%@,userId:%@,tag:%@,type:%@", roomId, stream.userId(), stream.tag(), mediaType);
    case LMRTCMediaStreamTypeNormal:
      return report(&Delegate::onRemoteFirstFrame, "onRemoteFirstFrame", "room:%@,userId:%@,type:%@", roomId,
                    stream.userId(), mediaType);
    default:
      return;  // a kind that hosts do not know
  }
}
