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
  LocalCodeNoStreams = 1201,         ///< the list of streams is empty
  LocalCodeUnknownStream = 1202,     ///< the stream is absent, or not one of this engine
  LocalCodeAlreadyPublished = 1203,  ///< the member publishes the stream already, or the list names it twice
  LocalCodeNotPublished = 1204,      ///< the member does not publish the stream
  LocalCodeAudienceMayNotPublish = 1205,  ///< the member's role is audience
  LocalCodeStreamGone = 1206,             ///< nobody in the room publishes the stream any more
  LocalCodeNotSubscribed = 1207,          ///< the stream was not subscribed
  LocalCodeCameraFailed = 1301,           ///< a participant's camera file cannot be opened
  LocalCodeUnknownOperation = 1302,       ///< failure injection: no operation has that name
  LocalCodeNotSupported = 1901,           ///< LumoRTCLocal does not do this yet
};

/// The English text of a code: "Success" for 0, "Unknown code" for what is not in the table.
std::string_view localCodeText(std::int64_t code);

}  // namespace lumo
