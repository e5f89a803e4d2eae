#pragma once

#include <memory>
#include <string>

#include "LumoRTCLocal/media/VideoSource.h"

namespace lumo {

/// Exactly one of the two is set.
struct CameraOpenResult {
  std::unique_ptr<VideoSource> source;
  std::string error;  ///< for people: the file's name and what is wrong
};

/// Opens a video file or a capture device as a camera. Its pictures fit into the asked-for size in their own
/// proportions, between black bars. A file shows each picture at the time that it has in the file and starts
/// again when it ends; a device shows its newest picture, and nothing once it is unplugged.
/// @param path  a file in any format that FFmpeg reads, or a capture device ("/dev/video0")
CameraOpenResult openCamera(const std::string& path);

}  // namespace lumo
