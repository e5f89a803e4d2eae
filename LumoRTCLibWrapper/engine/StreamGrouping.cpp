#include "LumoRTCLibWrapper/engine/StreamGrouping.h"

#include <array>
#include <cstddef>
#include <deque>
#include <memory_resource>
#include <string_view>
#include <unordered_map>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

namespace lumo {
namespace {

constexpr int kAudioBit = 1;
constexpr int kVideoBit = 16;

int mediaBit(std::int64_t mediaType) {
  return mediaType == LMRTCMediaTypeAudio ? kAudioBit : mediaType == LMRTCMediaTypeVideo ? kVideoBit : 0;
}

std::int64_t mediaTypeOf(int mask) { return mask == kAudioBit ? 0 : mask == kVideoBit ? 1 : 2; }

struct Group {
  const LMRTCInputStream* last = nullptr;
  int mask = 0;
};

}  // namespace

std::string customStreamKey(const std::string& userId, const std::string& tag) {
  std::string key;
  assignCustomStreamKey(key, userId, tag);
  return key;
}

void assignCustomStreamKey(std::string& key, const std::string& userId, const std::string& tag) {
  key.clear();
  appendFormat(key, "%@@%@", {userId, tag});
}

std::vector<StreamReport> groupStreams(const std::vector<std::shared_ptr<LMRTCInputStream>>& streams) {
  // Most lists are one user's few streams; those need no heap memory for the index.
  std::array<std::byte, 1024> arena;
  std::pmr::monotonic_buffer_resource memory(arena.data(), arena.size());
  std::pmr::unordered_map<std::string_view, std::size_t> places(&memory);
  std::pmr::deque<std::string> customKeys(&memory);
  std::vector<Group> groups;
  places.reserve(streams.size());
  groups.reserve(streams.size());

  for (const auto& stream : streams) {
    if (!stream) continue;
    const bool ordinary = stream->mediaStreamType() == LMRTCMediaStreamTypeNormal;
    const std::string_view key =
        ordinary ? stream->userId()
                 : customKeys.emplace_back(customStreamKey(stream->userId(), stream->tag()));
    const auto [place, added] = places.try_emplace(key, groups.size());
    if (added) groups.emplace_back();
    Group& group = groups[place->second];
    group.mask |= mediaBit(stream->mediaType());
    group.last = stream.get();
  }

  std::vector<StreamReport> reports;
  reports.reserve(groups.size());
  for (const Group& group : groups) {
    if (group.mask == 0) continue;
    reports.push_back({group.last, LMRTCIWConverter::toLMRTCIWStreamType(group.last->mediaStreamType()),
                       mediaTypeOf(group.mask)});
  }
  return reports;
}

}  // namespace lumo
