#include "LumoRTCLibWrapper/engine/StreamGrouping.h"

#include <array>
#include <bit>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory_resource>
#include <string_view>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"
#include "LumoRTCLibWrapper/util/LMRTCIWConverter.h"

namespace lumo {
namespace {

constexpr std::int64_t kAudioBit = 1;
constexpr std::int64_t kVideoBit = 16;

std::int64_t mediaBit(std::int64_t mediaType) {
  return mediaType == LMRTCMediaTypeAudio ? kAudioBit : mediaType == LMRTCMediaTypeVideo ? kVideoBit : 0;
}

std::int64_t mediaTypeOf(std::int64_t mask) { return mask == kAudioBit ? 0 : mask == kVideoBit ? 1 : 2; }

/// Numbers keys from 0, in the order in which they first appear; it borrows their text. A flat table instead
/// of a map with a node per key, so that long lists stay within the processor's caches.
class KeyNumbers {
 public:
  /// @param most  how many different keys there are at most
  KeyNumbers(std::size_t most, std::pmr::memory_resource* memory)
      : slots_(std::bit_ceil(2 * most + 1), 0, memory), keys_(memory) {
    keys_.reserve(most);
  }

  std::size_t numberOf(std::string_view key) {
    const std::size_t last = slots_.size() - 1;  // all bits set
    for (std::size_t place = std::hash<std::string_view>()(key) & last;; place = (place + 1) & last) {
      std::uint32_t& slot = slots_[place];
      if (slot == 0) {
        keys_.push_back(key);
        slot = static_cast<std::uint32_t>(keys_.size());
      } else if (keys_[slot - 1] != key) {
        continue;
      }
      return slot - 1;
    }
  }

 private:
  std::pmr::vector<std::uint32_t> slots_;  ///< the number of a key plus 1; 0: free. At most half are in use
  std::pmr::vector<std::string_view> keys_;
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
  KeyNumbers keys(streams.size(), &memory);
  std::pmr::deque<std::string> customKeys(&memory);
  std::vector<StreamReport> reports;  // until all streams are in, their media types are masks
  reports.reserve(streams.size());

  for (const auto& stream : streams) {
    if (!stream) continue;
    const std::int64_t kind = stream->mediaStreamType();
    const std::string_view key =
        kind == LMRTCMediaStreamTypeNormal
            ? stream->userId()
            : customKeys.emplace_back(customStreamKey(stream->userId(), stream->tag()));
    const std::size_t number = keys.numberOf(key);
    if (number == reports.size()) reports.emplace_back();
    StreamReport& report = reports[number];
    report.stream = stream.get();
    report.type = LMRTCIWConverter::toLMRTCIWStreamType(kind);
    report.mediaType |= mediaBit(stream->mediaType());
  }

  std::erase_if(reports, [](const StreamReport& report) { return report.mediaType == 0; });
  for (StreamReport& report : reports) report.mediaType = mediaTypeOf(report.mediaType);
  return reports;
}

}  // namespace lumo
