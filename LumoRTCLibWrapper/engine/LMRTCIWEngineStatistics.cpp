#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <utility>

#include "LumoRTCLibWrapper/engine/CallFrame.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRemoteUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCRoom.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMRTCIWCodeDefine.h"

// Statistics.

namespace {

constexpr std::int64_t kOpus = LMRTCAudioCodecTypeOpus;
constexpr std::int64_t kSecondCustomKind = 4;  // of sent streams: custom, like LMRTCMediaStreamTypeCustom

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

/// A number as an integer field shows it; what no integer can show becomes 0.
std::int64_t truncated(float value) {
  constexpr float kLimit = 9.2e18F;
  return std::abs(value) < kLimit ? static_cast<std::int64_t>(value) : 0;
}

std::int64_t rounded(float value) { return truncated(std::round(value)); }

double hundredths(float fraction) { return static_cast<double>(std::round(fraction * 100.0F)) / 100.0; }

std::int64_t audioCodec(const LMRTCStreamStatus& status) {
  return lowerCase(status.codecName) == "opus" ? kOpus : LMRTCAudioCodecTypePCMU;
}

bool isVideo(const LMRTCStreamStatus& status) { return status.mediaType == LumoRTCMediaTypeVideo; }
bool isAudio(const LMRTCStreamStatus& status) { return status.mediaType == LumoRTCMediaTypeAudio; }

/// The tag of a custom stream, from its id: what follows the last "_"; nothing without one.
std::optional<std::string> tagOf(const LMRTCStreamStatus& status) {
  const auto separator = status.streamId.rfind('_');
  if (separator == std::string::npos) return std::nullopt;
  return status.streamId.substr(separator + 1);
}

LMRTCIWNetworkStats networkStats(const LMRTCStatusForm& form) {
  const auto network = lowerCase(form.networkType.value_or(""));
  return {.type = network == "wlan"   ? 1
                  : network == "wwan" ? 2
                                      : 0,
          .ip = form.ipAddress.value_or("Unknown"),
          .sendBitrate = truncated(form.totalSendBitRate),
          .receiveBitrate = truncated(form.totalRecvBitRate),
          .rtt = form.rtt};
}

LMRTCIWLocalVideoStats localVideo(const LMRTCStreamStatus& status, bool tiny) {
  return {.tiny = tiny,
          .codec = 0,
          .bitrate = rounded(status.bitRate),
          .fps = status.frameRate,
          .width = status.frameWidth,
          .height = status.frameHeight,
          .packageLostRate = hundredths(status.packetLoss),
          .rtt = status.rtt};
}

LMRTCIWLocalAudioStats localAudio(const LMRTCStreamStatus& status) {
  return {.codec = audioCodec(status),
          .bitrate = rounded(status.bitRate),
          .volume = status.audioLevel,
          .packageLostRate = hundredths(status.packetLoss),
          .rtt = status.rtt};
}

LMRTCIWRemoteVideoStats remoteVideo(const LMRTCStreamStatus& status) {
  return {.codec = 0,
          .bitrate = truncated(status.bitRate),
          .fps = status.frameRate,
          .width = status.frameWidth,
          .height = status.frameHeight,
          .packageLostRate = hundredths(status.packetLoss),
          .rtt = status.rtt};
}

LMRTCIWRemoteAudioStats remoteAudio(const LMRTCStreamStatus& status) {
  return {.codec = audioCodec(status),
          .bitrate = truncated(status.bitRate),
          .volume = status.audioLevel,
          .packageLostRate = hundredths(status.packetLoss),
          .rtt = status.rtt};
}

/// Calls a callback of the listener, if it is set.
template <class Callback, class... Arguments>
void call(const Callback& callback, const Arguments&... arguments) {
  if (callback) callback(arguments...);
}

void reportSent(const LMRTCIWStatsDelegate& listener, const LMRTCStreamStatus& status) {
  if (status.mediaStreamType != LMRTCMediaStreamTypeCustom && status.mediaStreamType != kSecondCustomKind) {
    const bool tiny = status.streamId.find("_tiny") != std::string::npos;
    if (isVideo(status)) call(listener.onLocalVideoStats, localVideo(status, tiny));
    if (isAudio(status)) call(listener.onLocalAudioStats, localAudio(status));
  } else if (const auto tag = tagOf(status)) {
    if (isVideo(status)) call(listener.onLocalCustomVideoStats, localVideo(status, false), *tag);
    if (isAudio(status)) call(listener.onLocalCustomAudioStats, localAudio(status), *tag);
  }
}

using Rooms = std::vector<std::shared_ptr<LMRTCBaseRoom>>;

/// Finds the rooms of users. The streams of one user mostly follow one another, so that asking again for the
/// same one costs nothing.
class RoomFinder {
 public:
  explicit RoomFinder(Rooms rooms) : rooms_(std::move(rooms)) {}

  /// The first room that has the user, or null.
  /// @param userId  stays as it is until the next call
  const LMRTCBaseRoom* roomOf(const std::string& userId) {
    if (userId_ && *userId_ == userId) return room_;
    const auto place = std::ranges::find_if(
        rooms_, [&](const auto& room) { return room->getRemoteUser(userId) != nullptr; });
    userId_ = &userId;
    room_ = place == rooms_.end() ? nullptr : place->get();
    return room_;
  }

 private:
  const Rooms rooms_;
  const std::string* userId_ = nullptr;  // of the user who was asked for last, whose room follows
  const LMRTCBaseRoom* room_ = nullptr;
};

void reportReceived(const LMRTCIWStatsDelegate& listener, RoomFinder& rooms,
                    const LMRTCStreamStatus& status) {
  if (status.mediaStreamType == LMRTCMediaStreamTypeLive) {
    if (isVideo(status)) call(listener.onLiveMixVideoStats, remoteVideo(status));
    if (isAudio(status)) call(listener.onLiveMixAudioStats, remoteAudio(status));
    return;
  }
  const LMRTCBaseRoom* const room = rooms.roomOf(status.userId);
  if (!room) return;
  if (status.mediaStreamType == LMRTCMediaStreamTypeNormal) {
    if (isVideo(status))
      call(listener.onRemoteVideoStats, remoteVideo(status), room->roomId(), status.userId);
    if (isAudio(status))
      call(listener.onRemoteAudioStats, remoteAudio(status), room->roomId(), status.userId);
  } else if (const auto tag = tagOf(status)) {
    if (isVideo(status)) {
      call(listener.onRemoteCustomVideoStats, remoteVideo(status), room->roomId(), status.userId, *tag);
    }
    if (isAudio(status)) {
      call(listener.onRemoteCustomAudioStats, remoteAudio(status), room->roomId(), status.userId, *tag);
    }
  }
}

}  // namespace

std::int64_t LMRTCIWEngine::setStatsDelegate(const std::shared_ptr<LMRTCIWStatsDelegate>& observer) {
  const CallFrame frame(__func__, "delegate:%@", {observer != nullptr});
  const auto engine = rtcEngine();
  if (!engine) return frame.fail(LMRTCWrapperCodeEngineDestroyed, "rtcEngine is nil");
  setStatsDelegate_(observer);
  engine->setStatusReportDelegate(observer ? asDelegate<LMRTCStatusReportDelegate>()
                                           : std::weak_ptr<LMRTCStatusReportDelegate>());
  return LMRTCWrapperCodeSuccess;
}

void LMRTCIWEngine::didReportStatusForm(const LMRTCStatusForm& form) {
  const auto listener = statsListener();
  if (!listener) return;
  if (listener->onNetworkStats) listener->onNetworkStats(networkStats(form));
  for (const auto& status : form.sendStats) {
    if (!callbackGate_.isClosed()) reportSent(*listener, status);
  }
  RoomFinder rooms(allRooms());
  for (const auto& status : form.recvStats) {
    if (!callbackGate_.isClosed()) reportReceived(*listener, rooms, status);
  }
}

void LMRTCIWEngine::didReportLiveAudioStatus(const std::vector<LMRTCLiveAudioStatus>& statuses) {
  const auto listener = statsListener();
  if (!listener) return;
  for (const auto& [streamId, status] : getFullAudioStates(statuses)) {
    const std::size_t tagStart = status.userId().size() + 1;
    if (callbackGate_.isClosed() || streamId.size() < tagStart) continue;
    const auto tag = streamId.substr(tagStart);
    if (tag == kLMRTCDefaultStreamTag) {
      call(listener->onLiveMixMemberAudioStats, status.userId(), status.audioLevel());
    } else {
      call(listener->onLiveMixMemberCustomAudioStats, status.userId(), tag, status.audioLevel());
    }
  }
}

std::unordered_map<std::string, LMRTCLiveAudioStatus> LMRTCIWEngineBase::getFullAudioStates(
    const std::vector<LMRTCLiveAudioStatus>& statuses) const {
  std::unordered_map<std::string, LMRTCLiveAudioStatus> states;
  states.reserve(statuses.size());
  for (const auto& status : statuses) states.insert_or_assign(status.streamId(), status);
  for (const auto& room : allRooms()) {
    for (const auto& user : room->remoteUsers()) {
      for (const auto& stream : user->remoteStreams()) {
        if (!std::dynamic_pointer_cast<LMRTCAudioInputStream>(stream)) continue;
        const auto [place, added] = states.try_emplace(stream->streamId());
        if (added) place->second.updateUserId(stream->userId(), stream->streamId());
      }
    }
  }
  return states;
}

lumo::HostCallback<LMRTCIWStatsDelegate> LMRTCIWEngineBase::statsListener() const {
  auto pass = callbackGate_.enter();
  auto observer = pass ? statsDelegate_() : nullptr;
  return {std::move(pass), std::move(observer)};
}

std::vector<std::shared_ptr<LMRTCBaseRoom>> LMRTCIWEngineBase::allRooms() const {
  Rooms rooms;
  if (auto main = room()) rooms.push_back(std::move(main));
  for (auto& [roomId, subRoom] : subs()) {
    if (subRoom) rooms.push_back(subRoom);
  }
  return rooms;
}
