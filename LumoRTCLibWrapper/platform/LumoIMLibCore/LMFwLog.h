#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWFormat.h"

/// Importance of a log entry; the smaller the number, the graver.
enum LMFwLogLevel : std::int64_t {
  LMFwLogLevelOff = 0,    ///< as a threshold: nothing is written
  LMFwLogLevelError = 2,  ///< a failed precondition or an error
  LMFwLogLevelInfo = 4,   ///< an ordinary line
};

/// One line of the structured log.
struct LMFwLogEntry {
  std::chrono::system_clock::time_point time;
  std::int64_t level = 0;
  std::int64_t type = 0;  ///< what kind of log the entry belongs to; this library always writes type 1
  std::string tag;        ///< who wrote it, such as "IW/RTC-joinRoom-T"
  std::string keys;       ///< the parameters, filled in
};

/// The log facility: a level threshold in front of one replaceable sink. Every operation may be called on any
/// thread.
class LMFwLog {
 public:
  /// Takes each entry, on the thread that wrote it; called from several threads at once.
  using Sink = std::function<void(const LMFwLogEntry& entry)>;

  static LMFwLog& getInstance();

  /// Writes one entry, if its level passes the threshold.
  /// @param level   LMFwLogLevel; written when it is not above the threshold
  /// @param type    1
  /// @param tag     who writes
  /// @param keys    comma-separated name:%@ pairs
  /// @param values  one for each placeholder of `keys`
  void write(std::int64_t level, std::int64_t type, std::string_view tag, std::string_view keys,
             lumo::FormatValues values = {});

  /// Whether an entry of this level would be written. Costs one relaxed atomic load.
  bool isEnabled(std::int64_t level) const { return level <= threshold_.load(std::memory_order_relaxed); }

  /// The highest level that is still written; LMFwLogLevelInfo by default, LMFwLogLevelOff writes nothing.
  void setThreshold(std::int64_t level) { threshold_.store(level, std::memory_order_relaxed); }

  /// Replaces the sink. An empty one brings back the default, which writes one line per entry to standard
  /// error: time, level, tag, keys. Entries being written on other threads may still reach the old sink.
  void setSink(Sink sink);

 private:
  LMFwLog() = default;

  std::atomic<std::int64_t> threshold_{LMFwLogLevelInfo};
  lumo::Cell<std::shared_ptr<const Sink>> sink_;  ///< null: the default sink
};
