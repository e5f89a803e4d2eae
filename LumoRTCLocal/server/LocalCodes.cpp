#include "LumoRTCLocal/server/LocalCodes.h"

#include <algorithm>

namespace lumo {
namespace {

struct CodeText {
  std::int64_t code;
  std::string_view text;
};

constexpr CodeText kCodeTexts[] = {
    {LocalCodeSuccess, "Success"},
    {LocalCodeNotInitialised, "The engine is not initialised"},
    {LocalCodeEmptyRoomId, "The room id is empty"},
    {LocalCodeAlreadyInRoom, "Already in a room"},
    {LocalCodeNotInRoom, "Not in a room"},
    {LocalCodeUserIdTaken, "The user id is taken in this room"},
    {LocalCodeEmptyUserId, "The user id is empty"},
    {LocalCodeUserNotInRoom, "The user is not in the room"},
    {LocalCodeRoomKindMismatch, "The room is of another kind"},
    {LocalCodeNotALiveRoom, "The room is not a live room"},
    {LocalCodeNotANormalRoom, "The room is not a normal room"},
    {LocalCodeSameRole, "The member has this role already"},
    {LocalCodeKicked, "The server has removed the user from the room"},
    {LocalCodeNotABroadcaster, "Only a broadcaster may steer the live mix"},
    {LocalCodeNotBroadcasting, "Nobody publishes in this room"},
    {LocalCodeNoStreams, "No streams were given"},
    {LocalCodeUnknownStream, "The stream is unknown"},
    {LocalCodeAlreadyPublished, "The stream is published already"},
    {LocalCodeNotPublished, "The stream is not published"},
    {LocalCodeAudienceMayNotPublish, "An audience member may not publish"},
    {LocalCodeStreamGone, "The stream is no longer published"},
    {LocalCodeNotSubscribed, "The stream is not subscribed"},
    {LocalCodeCameraFailed, "The camera cannot be opened"},
    {LocalCodeFileFailed, "The file cannot be opened or has no picture"},
    {LocalCodeNotACustomTag, "The tag is not that of a custom stream"},
    {LocalCodeVideoFormat, "Pictures have sides of 1 to 16384 pixels and come 1 to 240 times per second"},
    {LocalCodeUnknownOperation, "No operation has this name"},
    {LocalCodeUnknownLayoutMode, "The live mix has no such layout mode"},
    {LocalCodeUnknownRenderMode, "The live mix has no such render mode"},
    {LocalCodeMixSize, "The sides of the live mix are even numbers from 16 to 4096"},
    {LocalCodeMixFrameRate, "The live mix has 1 to 60 frames per second"},
    {LocalCodeMixBitrate, "The live mix has 1 to 50000 kbit/s of video and 8 to 512 kbit/s of audio"},
    {LocalCodeMixPlacement, "A custom layout is too small or too far outside the live mix"},
    {LocalCodePushAddressMalformed, "The address is malformed"},
    {LocalCodePushProtocolUnknown, "The address has none of the protocols rtmp, udp and file"},
    {LocalCodePushContainerUnknown, "The file is none of .flv, .ts, .mp4 and .mkv"},
    {LocalCodePushAddressTaken, "The live mix is pushed to this address already"},
    {LocalCodePushAddressUnknown, "The live mix is not pushed to this address"},
    {LocalCodePushFailed, "The address cannot be opened"},
    {LocalCodeCdnFormat, "The inner CDN stream has no such size or frame rate"},
    {LocalCodeOwnRoom, "The other room is the own room"},
    {LocalCodeUnknownRoom, "There is no room of this id"},
    {LocalCodeAlreadyLinked, "The rooms are linked already"},
    {LocalCodeInvitationPending, "The user is invited already"},
    {LocalCodeNoInvitation, "There is no such invitation"},
    {LocalCodeNotLinked, "The rooms are not linked"},
    {LocalCodeOtherRoomJoined, "The other room is joined already"},
    {LocalCodeOtherRoomNotJoined, "The other room is not joined"},
    {LocalCodeSeiNotEnabled, "Sending texts with the video is not enabled"},
    {LocalCodeSeiTooLong, "The text is too long to go with the video"},
    {LocalCodeSeiBacklog, "Too many texts wait for the next picture"},
    {LocalCodeProbeRunning, "A network probe is running already"},
    {LocalCodeProbeNotRunning, "No network probe is running"},
    {LocalCodeProbeInterrupted, "The network probe was interrupted"},
};

}  // namespace

std::string_view localCodeText(std::int64_t code) {
  const auto* const entry = std::ranges::find(kCodeTexts, code, &CodeText::code);
  return entry == std::end(kCodeTexts) ? "Unknown code" : entry->text;
}

}  // namespace lumo
