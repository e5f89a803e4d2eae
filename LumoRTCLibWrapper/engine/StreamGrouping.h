#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCInputStream.h"

namespace lumo {

/// What one publisher has in a list of streams.
struct StreamReport {
  const LMRTCInputStream* stream = nullptr;  ///< the publisher's last stream in the list; names user and tag
  std::int64_t type = 0;                     ///< LMRTCIWStreamType, or -1
  std::int64_t mediaType = 0;                ///< LMRTCIWMediaType: what the publisher's streams add up to
};

/// Reduces `streams` to one report per publisher: per user for ordinary streams, per user and tag for all
/// others. Streams of neither audio nor video make no report of their own. Linear in the number of streams;
/// the reports borrow from them.
std::vector<StreamReport> groupStreams(const std::vector<std::shared_ptr<LMRTCInputStream>>& streams);

/// The key of a user's custom stream in maps: the user id, an at sign, the tag.
std::string customStreamKey(const std::string& userId, const std::string& tag);
/// The same into a string that keeps its memory.
void assignCustomStreamKey(std::string& key, const std::string& userId, const std::string& tag);

}  // namespace lumo

/// Calls `completion(normal, userId, tag, mediaType)` once per report of lumo::groupStreams, before it
/// returns. `normal` is true for a user's ordinary streams. Hosts must not rely on the order of the reports.
template <class Completion>
void parseInPutStream(const std::vector<std::shared_ptr<LMRTCInputStream>>& streams,
                      const Completion& completion) {
  for (const auto& report : lumo::groupStreams(streams)) {
    completion(report.type == 0, report.stream->userId(), report.stream->tag(), report.mediaType);
  }
}
