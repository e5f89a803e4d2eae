#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct LMRTCIWStatsDelegate;

/// What a report says of one stream, or of the network in one direction. What it does not say is absent.
struct StreamFigures {
  std::string name;  ///< such as "Anna camera"
  std::optional<double> kilobits;
  std::optional<double> framesPerSecond;
  std::optional<double> lossPercent;
  std::optional<double> roundTripMs;
  std::optional<double> level;  ///< of the sound, 0 to 100
  std::string size;             ///< of the pictures, "width x height"; empty: none
};

struct StatsReport {
  double seconds = 0;  ///< since the collector was made
  std::vector<StreamFigures> streams;
};

/// Collects what the engine's stats listener is told, one report after another. Any thread.
class StatsReports {
 public:
  /// Fills every field but those of the live mix. The collector must outlive the callbacks.
  /// @param localName  how the local user is called
  void fill(LMRTCIWStatsDelegate& delegate, const std::string& localName);

  /// The newest report, once, when nothing has been added to it since the last call: its parts come one by
  /// one, and nothing tells the last of them.
  std::optional<StatsReport> takeSettled();

  std::vector<StatsReport> all() const;

 private:
  void begin();
  void add(StreamFigures figures);

  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  mutable std::mutex mutex_;  // guards the rest
  std::vector<StatsReport> reports_;
  bool hasGrown_ = false;  // since the last call of takeSettled
  bool isTaken_ = true;
};
