#include <algorithm>
#include <map>
#include <set>

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
  const auto set = [&lines, number = 0](auto& callback) mutable {
    callback = [&lines, name = std::to_string(number++)](const auto&... values) {
      lines.push_back((name + ... + part(values)));
    };
  };
  auto& [net, a, v, ca, cv, ra, rv, rca, rcv, ma, mv, member, customMember] = listener;
  const auto setAll = [](auto each, auto&... callbacks) { (each(callbacks), ...); };
  setAll(set, net, a, v, ca, cv, ra, rv, rca, rcv, ma, mv, member, customMember);
}

/// The line that a stream's report should make; empty where none.
std::string expected(const LMRTCStreamStatus& status, bool isSent, const Lines& users) {
  const std::int64_t kind = status.mediaStreamType, video = status.mediaType == LumoRTCMediaTypeVideo ? 1 : 0;
  std::string tag;
  for (const char letter : status.streamId) tag = letter == '_' ? "|" : tag.empty() ? tag : tag + letter;
  const auto line = [video](std::int64_t first, const std::string& ids) {
    return std::to_string(first + video) + ids;
  };
  if (isSent && kind != 1 && kind != 4) return line(1, "");
  if (isSent) return tag.empty() ? "" : line(3, tag);
  if (kind == 2) return line(9, "");
  const std::string ids = "|room|" + status.userId;
  if (std::ranges::find(users, status.userId) == users.end()) return "";
  return kind == 0 ? line(5, ids) : tag.empty() ? "" : line(7, ids + tag);
}

std::string expected(const LMRTCLiveAudioStatus& level) {
  const std::string tag = level.streamId().substr(level.userId().size() + 1);
  const bool isCustom = tag != kLMRTCDefaultStreamTag;
  return (isCustom ? "12|" : "11|") + level.userId() + (isCustom ? "|" + tag : "") + part(level.audioLevel());
}

/// Streams of user and tag `keys`, or of a user alone where they are ordinary, make one report with all their
/// media.
void checkGroups(const Streams& streams) {
  std::map<std::string, std::set<std::int64_t>> media;
  for (const auto& stream : streams) {
    const std::string custom = stream->mediaStreamType() == 0 ? "" : "@" + stream->tag();
    media[stream->userId() + custom].insert(stream->mediaType());
  }
  for (const auto& [stream, type, mediaType] : lumo::groupStreams(streams)) {
    const auto found =
        media.extract(type == 0 ? stream->userId() : lumo::customStreamKey(stream->userId(), stream->tag()));
    check(!found.empty(), "each publisher has one report");
    check(mediaType == (found.mapped().size() == 2 ? 2 : *found.mapped().begin()),
          "a report adds the media up");
  }
  check(media.empty(), "each publisher has a report");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumo::fuzz::Input input(data, size);
  const auto sdk = std::make_shared<lumo::fake::Provider>();
  LMRTCProvider::install(sdk);
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
  lumo::Console::setSink([](const std::string&) {});
  const auto room = std::make_shared<lumo::fake::Room>(sdk->context, "room");
  const auto engine = LMRTCIWEngine::create();
  engine->setRoom(room);
  const auto listener = std::make_shared<LMRTCIWStatsDelegate>();
  engine->setStatsDelegate(listener);
  const auto statistics = sdk->engine->statusDelegate.get().lock();

  Lines lines, expectedLines = {"0"}, users = {input.text(), input.text()};
  record(*listener, lines);
  Streams streams;
  std::map<std::string, LMRTCLiveAudioStatus>
      last;  // of each stream; streams that are not reported are silent
  for (const std::string& user : users) {
    streams.push_back(std::make_shared<lumo::fake::AudioInput>(sdk->context, user));
    room->users.push_back(std::make_shared<lumo::fake::RemoteUser>(user, Streams{streams.back()}));
    last[streams.back()->streamId()].updateUserId(user, streams.back()->streamId());
  }
  LMRTCStatusForm form;
  std::vector<LMRTCLiveAudioStatus> levels;
  while (!input.isEmpty()) {
    const int choices = input.take(0, 7);
    LMRTCStreamStatus status;
    status.mediaType = choices & 1 ? LumoRTCMediaTypeVideo : LumoRTCMediaTypeAudio;
    status.mediaStreamType = input.take(0, 5);
    status.userId = choices & 2 ? input.text() : users[input.take<std::uint8_t>() % 2U];
    const std::string tag = input.text();
    status.streamId = choices & 4 ? tag : status.userId + "_" + tag;
    form.sendStats.push_back(status);
    form.recvStats.push_back(status);
    auto& level = levels.emplace_back();
    level.updateUserId(status.userId, status.streamId);
    level.setAudioLevel(static_cast<std::int64_t>(levels.size()));
    last[status.streamId] = level;
    streams.push_back(std::make_shared<lumo::fake::OddInput>(sdk->context, status.userId, tag, choices & 1,
                                                             status.mediaStreamType));
  }

  for (const auto& status : form.sendStats) expectedLines.push_back(expected(status, true, users));
  for (const auto& status : form.recvStats) expectedLines.push_back(expected(status, false, users));
  std::erase(expectedLines, "");
  statistics->didReportStatusForm(form);
  check(lines == expectedLines, "statistics go to the callback of their kind, with the ids of their stream");

  std::multiset<std::string> loud;
  for (const auto& [id, level] : last) {
    if (id.size() > level.userId().size()) loud.insert(expected(level));
  }
  lines.clear();
  statistics->didReportLiveAudioStatus(levels);
  check(std::multiset(lines.begin(), lines.end()) == loud, "members are told once, with the last level");
  checkGroups(streams);
  engine->destroy();
  LMRTCProvider::install(nullptr);
  return 0;
}
