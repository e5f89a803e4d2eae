#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "LumoRTCLocal/media/PictureFitter.h"
#include "LumoRTCLocal/media/VideoSource.h"

namespace lumo {

/// The pictures of a file, once from start to end, each at the time that it has in the file. The first
/// picture is there from the beginning, the last one stays.
class FilePictures : public VideoSource {
 public:
  /// Exactly one of the two is set.
  struct Opened {
    std::shared_ptr<FilePictures> pictures;
    std::string error;  ///< for people: the file's name and what is wrong
  };

  /// Opens a regular file that has pictures. Blocks while the file's beginning is read.
  /// @param ended  called once, by `frameAt`, when the last picture has been shown for as long as the one
  ///               before it
  static Opened open(const std::string& path, std::function<void()> ended);

  std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds time, const VideoFormat& format) override;

 private:
  FilePictures(std::unique_ptr<MediaFileReader> reader, MediaPicture first, std::function<void()> ended);

  const std::unique_ptr<MediaFileReader> reader_;
  MediaPicture shown_;
  std::optional<MediaPicture> next_;  ///< nothing at the end of the file
  Microseconds interval_{40'000};     ///< between the last two pictures
  std::function<void()> ended_;       ///< empty once it has been called
  PictureFitter fitter_;
};

}  // namespace lumo
