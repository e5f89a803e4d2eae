#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// Writes sound to a WAV file: 16 bits, 48 kHz, stereo. A runner of its own writes, so that nobody waits for
/// the disk.
class WavWriter {
 public:
  /// Exactly one of the two is set.
  struct Created {
    std::shared_ptr<WavWriter> writer;
    std::string error;  ///< for people: the file's name and what is wrong
  };

  /// Makes the file, in place of one that is there.
  static Created create(Timeline& timeline, const std::string& path);

  /// As `close`.
  ~WavWriter();
  WavWriter(const WavWriter&) = delete;
  WavWriter& operator=(const WavWriter&) = delete;

  /// Any thread; never waits for the disk. After `close` it does nothing. What the disk has not taken for
  /// ten seconds, and what is beyond the six hours that a WAV file holds, is left out.
  void add(const AudioBlock& block);

  /// Writes what is left and completes the file. Blocks; not on the writer's own runner.
  /// @return what is wrong with the file, for people; empty when everything is in it
  std::string close();

 private:
  WavWriter(Timeline& timeline, std::string path);

  void writeWaiting();
  void writeHeader();

  const std::string path_;

  std::mutex mutex_;  ///< guards what follows
  std::vector<AudioBlock> waiting_;
  bool isClosed_ = false;
  bool isIncomplete_ = false;
  std::uint32_t blocks_ = 0;  // taken so far

  // The runner, and whoever closes once it has ended.
  std::vector<AudioBlock> writing_;
  std::ofstream file_;
  std::uint32_t writtenBytes_ = 0;
  std::unique_ptr<Runner> runner_;
};

}  // namespace lumo
