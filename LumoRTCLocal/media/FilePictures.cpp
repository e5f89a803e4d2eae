#include "LumoRTCLocal/media/FilePictures.h"

#include <utility>

namespace lumo {

FilePictures::Opened FilePictures::open(const std::string& path, std::function<void()> ended) {
  MediaOpenResult opened = MediaFileReader::openFile(path, MediaKind::picture);
  if (!opened.reader) return {nullptr, std::move(opened.error)};
  auto first = opened.reader->nextPicture();
  if (!first) return {nullptr, path + " has a picture that cannot be converted"};
  return {std::shared_ptr<FilePictures>(
              new FilePictures(std::move(opened.reader), std::move(*first), std::move(ended))),
          {}};
}

FilePictures::FilePictures(std::unique_ptr<MediaFileReader> reader, MediaPicture first,
                           std::function<void()> ended)
    : reader_(std::move(reader)), shown_(std::move(first)), ended_(std::move(ended)) {
  next_ = reader_->nextPicture();
}

std::shared_ptr<const LumoRTCI420Buffer> FilePictures::frameAt(Microseconds time, const VideoFormat& format) {
  while (next_ && next_->timestamp <= time) {
    interval_ = next_->timestamp - shown_.timestamp;
    shown_ = std::move(*next_);
    next_ = reader_->nextPicture();
  }
  if (!next_ && ended_ && time >= shown_.timestamp + interval_) std::exchange(ended_, nullptr)();
  return fitter_.fit(shown_.picture, format);
}

}  // namespace lumo
