#pragma once

#include <cstdint>
#include <string_view>

namespace lumo {

/// The result codes of LumoRTCLocal. An operation answers with the first that applies, and leaves everything
/// as it was unless it answers 0. An injected failure may carry any other number.
enum LocalCode : std::int64_t {
  LocalCodeSuccess = 0,
  LocalCodeNotInitialised = 1001,  ///< the engine was never initialised, or un-initialised before the answer
  LocalCodeEmptyRoomId = 1101,     ///< a room needs an id
  LocalCodeAlreadyInRoom = 1102,   ///< one main room at a time
  LocalCodeNotInRoom = 1103,       ///< never joined, left, or removed by the server
  LocalCodeUserIdTaken = 1104,     ///< the room has a member of that id
  LocalCodeEmptyUserId = 1105,     ///< a member needs an id
  LocalCodeUserNotInRoom = 1106,   ///< the room has no member of that id
  LocalCodeRoomKindMismatch = 1107,  ///< joining a live room as a normal one, or the reverse
  LocalCodeNotALiveRoom = 1108,      ///< live publication, or a live role, in a normal room
  LocalCodeNotANormalRoom = 1109,    ///< ordinary publication in a live room
  LocalCodeSameRole = 1110,          ///< the member has that role already
  LocalCodeKicked = 1111,            ///< injected into a role switch: the server removes the local user
  LocalCodeNotABroadcaster = 1112,   ///< an audience member may not steer the live mix
  LocalCodeNotBroadcasting = 1113,   ///< nobody in the room publishes: there is nothing to mix
  LocalCodeNoStreams = 1201,         ///< the list of streams is empty
  LocalCodeUnknownStream = 1202,     ///< the stream is absent, or not one of this engine
  LocalCodeAlreadyPublished = 1203,  ///< the member publishes the stream already, or the list names it twice
  LocalCodeNotPublished = 1204,      ///< the member does not publish the stream
  LocalCodeAudienceMayNotPublish = 1205,  ///< the member's role is audience
  LocalCodeStreamGone = 1206,             ///< nobody in the room publishes the stream any more
  LocalCodeNotSubscribed = 1207,          ///< the stream was not subscribed
  LocalCodeCameraFailed = 1301,           ///< a participant's camera file cannot be opened
  LocalCodeFileFailed = 1303,             ///< a participant's file cannot be opened or has no picture
  LocalCodeNotACustomTag = 1304,          ///< a file needs a tag that is not that of microphone and camera
  LocalCodeVideoFormat = 1305,            ///< a participant's VideoFormat is out of range
  LocalCodeUnknownOperation = 1302,       ///< failure injection: no operation has that name
  LocalCodeUnknownLayoutMode = 1401,      ///< live mix: no LMRTCMixLayoutMode
  LocalCodeUnknownRenderMode = 1402,      ///< live mix: no LMRTCVideoRenderMode
  LocalCodeMixSize = 1403,                ///< live mix: a side is odd, below 16 or above 4096
  LocalCodeMixFrameRate = 1404,           ///< live mix: below 1 or above 60
  LocalCodeMixBitrate = 1405,             ///< live mix: video 1 to 50000, audio 8 to 512 kilobits per second
  LocalCodeMixPlacement = 1406,           ///< custom layout: smaller than 2 x 2, or far outside
  LocalCodePushAddressMalformed = 1411,
  LocalCodePushProtocolUnknown = 1412,   ///< none of rtmp, udp and file
  LocalCodePushContainerUnknown = 1413,  ///< a file that is none of .flv, .ts, .mp4 and .mkv
  LocalCodePushAddressTaken = 1414,      ///< the mix is pushed there already
  LocalCodePushAddressUnknown = 1415,    ///< the mix is not pushed there
  LocalCodePushFailed = 1416,            ///< the address cannot be opened
  LocalCodeCdnFormat = 1421,             ///< inner CDN stream: no such size preset or frame-rate value
  LocalCodeOwnRoom = 1501,               ///< a room is not linked with itself
  LocalCodeUnknownRoom = 1502,           ///< there is no room of that id
  LocalCodeAlreadyLinked = 1503,         ///< the two rooms are linked
  LocalCodeInvitationPending = 1504,     ///< this user is invited already, and has not answered
  LocalCodeNoInvitation = 1505,          ///< never made, answered, or taken back
  LocalCodeNotLinked = 1506,             ///< joining a room that the main room is not linked with
  LocalCodeOtherRoomJoined = 1507,       ///< the other room is joined already
  LocalCodeOtherRoomNotJoined = 1508,    ///< leaving an other room that is not joined
  LocalCodeSeiNotEnabled = 1601,         ///< texts with the video were not switched on
  LocalCodeSeiTooLong = 1602,            ///< more than Publication::kLongestSei bytes
  LocalCodeSeiBacklog = 1603,            ///< Publication::kMostSei texts wait for a picture already
  LocalCodeProbeRunning = 1701,          ///< one network probe at a time
  LocalCodeProbeNotRunning = 1702,       ///< there is no network probe to stop
  LocalCodeProbeInterrupted = 1703,      ///< stopped, or ended by joining a room or the end of the session
};

/// What the audio mixer reports that it does now.
enum LocalMixingState : std::uint64_t {
  LocalMixingStatePlaying = 0,
  LocalMixingStatePaused = 1,
  LocalMixingStateStopped = 2,
  LocalMixingStateFailed = 3,  ///< stopped because of the file
};

/// Why the audio mixer has changed its state.
enum LocalMixingReason : std::uint64_t {
  LocalMixingReasonStarted = 0,
  LocalMixingReasonPaused = 1,
  LocalMixingReasonResumed = 2,
  LocalMixingReasonStopped = 3,         ///< by `stop`, or the end of the session
  LocalMixingReasonEndOfFile = 4,       ///< played to its end, as often as asked for
  LocalMixingReasonReplaced = 5,        ///< another file was started
  LocalMixingReasonFileCutOff = 6,      ///< the file stops before the end that it announces
  LocalMixingReasonFileUnreadable = 7,  ///< the file cannot be read any further
};

/// The English text of a code: "Success" for 0, "Unknown code" for what is not in the table.
std::string_view localCodeText(std::int64_t code);

}  // namespace lumo
