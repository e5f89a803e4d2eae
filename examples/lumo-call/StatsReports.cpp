#include "examples/lumo-call/StatsReports.h"

#include <utility>

#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"

namespace {

constexpr double kPercent = 100;

/// What the records of both kinds have in common.
template <class Stats>
StreamFigures commonFigures(const std::string& name, const Stats& stats) {
  StreamFigures figures;
  figures.name = name;
  figures.kilobits = static_cast<double>(stats.bitrate);
  figures.lossPercent = stats.packageLostRate * kPercent;
  figures.roundTripMs = static_cast<double>(stats.rtt);
  return figures;
}

template <class Stats>
StreamFigures soundFigures(const std::string& name, const Stats& stats) {
  StreamFigures figures = commonFigures(name, stats);
  figures.level = static_cast<double>(stats.volume);
  return figures;
}

template <class Stats>
StreamFigures pictureFigures(const std::string& name, const Stats& stats) {
  StreamFigures figures = commonFigures(name, stats);
  figures.framesPerSecond = static_cast<double>(stats.fps);
  figures.size = std::to_string(stats.width) + "x" + std::to_string(stats.height);
  return figures;
}

StreamFigures lineFigures(const std::string& name, std::int64_t kilobits, std::int64_t roundTripMs) {
  StreamFigures figures;
  figures.name = name;
  figures.kilobits = static_cast<double>(kilobits);
  figures.roundTripMs = static_cast<double>(roundTripMs);
  return figures;
}

}  // namespace

void StatsReports::fill(LMRTCIWStatsDelegate& delegate, const std::string& localName) {
  delegate.onNetworkStats = [this](const auto& stats) {
    begin();
    add(lineFigures("network, sent", stats.sendBitrate, stats.rtt));
    add(lineFigures("network, received", stats.receiveBitrate, stats.rtt));
  };
  delegate.onLocalAudioStats = [=, this](const auto& stats) {
    add(soundFigures(localName + " microphone", stats));
  };
  delegate.onLocalVideoStats = [=, this](const auto& stats) {
    add(pictureFigures(localName + (stats.tiny ? " camera, small" : " camera"), stats));
  };
  delegate.onLocalCustomAudioStats = [=, this](const auto& stats, const auto& tag) {
    add(soundFigures(localName + " " + tag + " sound", stats));
  };
  delegate.onLocalCustomVideoStats = [=, this](const auto& stats, const auto& tag) {
    add(pictureFigures(localName + " " + tag + " video", stats));
  };
  delegate.onRemoteAudioStats = [this](const auto& stats, const auto&, const auto& userId) {
    add(soundFigures(userId + " microphone", stats));
  };
  delegate.onRemoteVideoStats = [this](const auto& stats, const auto&, const auto& userId) {
    add(pictureFigures(userId + " camera", stats));
  };
  delegate.onRemoteCustomAudioStats = [this](const auto& stats, const auto&, const auto& userId,
                                             const auto& tag) {
    add(soundFigures(userId + " " + tag + " sound", stats));
  };
  delegate.onRemoteCustomVideoStats = [this](const auto& stats, const auto&, const auto& userId,
                                             const auto& tag) {
    add(pictureFigures(userId + " " + tag + " video", stats));
  };
}

std::optional<StatsReport> StatsReports::takeSettled() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(hasGrown_, false) || isTaken_) return std::nullopt;
  isTaken_ = true;
  return reports_.back();
}

std::vector<StatsReport> StatsReports::all() const {
  const std::lock_guard lock(mutex_);
  return reports_;
}

void StatsReports::begin() {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  const std::lock_guard lock(mutex_);
  reports_.push_back({elapsed.count(), {}});
}

void StatsReports::add(StreamFigures figures) {
  const std::lock_guard lock(mutex_);
  if (reports_.empty()) return;  // its report began before there was a listener
  reports_.back().streams.push_back(std::move(figures));
  hasGrown_ = true;
  isTaken_ = false;
}
