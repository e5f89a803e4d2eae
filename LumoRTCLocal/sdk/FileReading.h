#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "LumoRTCLocal/media/FilePictures.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/sdk/CameraPipeline.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"

namespace lumo {

/// Reads one media file once, from start to end, at the pace of its timestamps: its pictures as the source of
/// a pipeline, its sound as a voice of a playback. Whichever of the two ends first waits for the other: the
/// last picture stays, the sound is silent. Any thread.
class FileReading : public std::enable_shared_from_this<FileReading> {
 public:
  /// Where the file goes to.
  struct Target {
    std::shared_ptr<CameraPipeline> pipeline;  ///< without a source of its own while the file is read
    std::shared_ptr<FilePlayback> playback;
    std::shared_ptr<Runner> decoding;  ///< decodes the sound; the pipeline decodes the pictures
  };
  /// Exactly one of the two is set.
  struct Opened {
    std::shared_ptr<FileReading> reading;
    std::string error;  ///< for people: the file's name and what is wrong
  };

  /// Opens a regular file with pictures; sound may be missing. Blocks while the file's beginning is read.
  /// @param ended  called once, on a media thread, when all of the file has been read
  static Opened open(const std::string& path, Target target, std::function<void()> ended);

  /// The file's sound, which goes nowhere at first; null when it has none.
  const std::shared_ptr<FileVoice>& voice() const { return voice_; }

  void start();
  /// Ends the reading before its end; the pipeline has no source then.
  void stop();

 private:
  FileReading(Target target, std::function<void()> ended);

  void partEnded();

  const Target target_;
  const std::function<void()> ended_;
  std::shared_ptr<FilePictures> pictures_;
  std::shared_ptr<FileVoice> voice_;
  std::atomic<int> partsLeft_{1};
};

}  // namespace lumo
