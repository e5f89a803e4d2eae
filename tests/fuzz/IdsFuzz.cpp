#include <map>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/engine/StreamGrouping.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/FakeSdk.h"

namespace {

using lumo::fuzz::check;
using Lines = std::vector<std::string>;
using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;

std::string part(const std::string& id) { return "|" + id; }
std::string part(std::int64_t level) { return "|" + std::to_string(level); }
std::string part(const lumo::Describable auto&) { return {}; }

/// Writes each report down: the number of its callback in LMRTCIWStatsDelegate, then ids and level.
void record(LMRTCIWStatsDelegate& listener, Lines& lines) {
  auto& [net, a, v, ca, cv, ra, rv, rca, rcv, ma, mv, member, customMember] = listener;
  auto setAll = [&lines, number = 0](auto&... callbacks) mutable {
    ((callbacks = [&lines, name = std::to_string(number++)](
                      const auto&... values) { lines.push_back((name + ... + part(values))); }),
     ...);
  };
  setAll(net, a, v, ca, cv, ra, rv, rca, rcv, ma, mv, member, customMember);
}

/// The line that a stream's report should make; empty where none.
std::string expected(const LMRTCStreamStatus& status, bool isSent, bool isMember) {
  const std::int64_t kind = status.mediaStreamType;
  const bool isMix = !isSent && kind == 2, isCustom = isSent ? kind == 1 || kind == 4 : !isMix && kind != 0;
  std::string tag;
  for (const char letter : status.streamId) tag = letter == '_' ? "|" : tag.empty() ? tag : tag + letter;
  if ((!isSent && !isMix && !isMember) || (isCustom && tag.empty())) return "";
  const int first = isMix ? 9 : isSent ? 1 : 5;
  return std::to_string(first + (isCustom ? 2 : 0) + (status.mediaType == LumoRTCMediaTypeVideo ? 1 : 0)) +
         (isSent || isMix ? "" : "|room|" + status.userId) + (isCustom ? tag : "");
}

/// The line of the level of a member of a live room; empty where the stream id is too short.
std::string expected(const LMRTCLiveAudioStatus& level) {
  if (level.streamId().size() <= level.userId().size()) return "";
  const std::string tag = level.streamId().substr(level.userId().size() + 1);
  const bool isCustom = tag != kLMRTCDefaultStreamTag;
  return (isCustom ? "12|" : "11|") + level.userId() + (isCustom ? "|" + tag : "") + part(level.audioLevel());
}

/// Ordinary streams of a user, and others of a user and tag, make one report with all their media.
void checkGroups(const Streams& streams) {
  const auto keyOf = [](const LMRTCInputStream& stream) {
    return stream.userId() + (stream.mediaStreamType() == 0 ? "" : "@" + stream.tag());
  };
  std::map<std::string, std::int64_t> expectedMedia, media;
  for (const auto& stream : streams) {
    auto& all = expectedMedia.try_emplace(keyOf(*stream), stream->mediaType()).first->second;
    if (all != stream->mediaType()) all = 2;
  }
  for (const auto& [stream, type, mediaType] : lumo::groupStreams(streams))
    check(media.emplace(keyOf(*stream), mediaType).second, "each publisher has one report");
  check(media == expectedMedia, "a report adds the media up");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumo::fuzz::Input input(data, size);
  const auto sdk = std::make_shared<lumo::fake::Provider>();
  LMRTCProvider::install(sdk);
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
  lumo::Console::setSink({});
  const auto room = std::make_shared<lumo::fake::Room>(sdk->context, "room");
  const auto engine = LMRTCIWEngine::create();
  engine->setRoom(room);
  Lines lines, expectedLines = {"0"};
  const auto listener = std::make_shared<LMRTCIWStatsDelegate>();
  record(*listener, lines);
  engine->setStatsDelegate(listener);

  const Lines users = {input.text(), input.text()};
  for (const auto& user : users)
    room->users.push_back(std::make_shared<lumo::fake::RemoteUser>(user, Streams()));
  Streams streams;
  LMRTCStatusForm form;
  std::vector<LMRTCLiveAudioStatus> levels;
  std::map<std::string, std::string> last;  // line of each stream
  while (!input.isEmpty()) {
    const int choices = input.take(0, 7);
    LMRTCStreamStatus status;
    status.mediaType = choices & 1 ? LumoRTCMediaTypeVideo : LumoRTCMediaTypeAudio;
    status.mediaStreamType = input.take(0, 5);
    status.userId = choices & 2 ? input.text() : users[input.take<std::uint8_t>() % 2U];
    const std::string tag = input.text();
    status.streamId = choices & 4 ? tag : status.userId + "_" + tag;
    form.sendStats.push_back(status);
    auto& level = levels.emplace_back();
    level.updateUserId(status.userId, status.streamId);
    level.setAudioLevel(static_cast<std::int64_t>(levels.size()));
    last[status.streamId] = expected(level);
    streams.push_back(std::make_shared<lumo::fake::OddInput>(sdk->context, status.userId, tag, choices & 1,
                                                             status.mediaStreamType));
  }

  for (const bool isSent : {true, false}) {
    for (const auto& status : form.sendStats) {
      const bool isMember = status.userId == users[0] || status.userId == users[1];
      expectedLines.push_back(expected(status, isSent, isMember));
    }
  }
  std::erase(expectedLines, "");
  form.recvStats = form.sendStats;
  const auto statistics = sdk->engine->statusDelegate.get().lock();
  statistics->didReportStatusForm(form);
  check(lines == expectedLines, "statistics go to the callback of their kind, with the ids of their stream");
  expectedLines.clear();
  for (const auto& [id, line] : last) expectedLines.push_back(line);
  std::erase(expectedLines, "");
  lines.clear();
  statistics->didReportLiveAudioStatus(levels);
  check(std::ranges::is_permutation(lines, expectedLines), "members are told once, with the last level");
  checkGroups(streams);
  engine->destroy();
  LMRTCProvider::install(nullptr);
  return 0;
}
