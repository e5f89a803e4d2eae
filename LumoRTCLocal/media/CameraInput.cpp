#include "LumoRTCLocal/media/CameraInput.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "LumoRTCLocal/media/PictureFitter.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

/// A gap in the asked-for times over which seeking is faster than decoding every picture on the way.
constexpr Microseconds kFarAhead = 2s;

/// Repeats a file. How long it is shows when its end has been read for the first time: what files announce is
/// not always there.
class FileCamera : public VideoSource {
 public:
  FileCamera(std::unique_ptr<MediaFileReader> reader, MediaPicture first)
      : reader_(std::move(reader)), start_(first.timestamp), shown_(std::move(first)) {
    readNext();
  }

  std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds time, const VideoFormat& format) override {
    showAt(std::max(time, 0us));
    return fitter_.fit(shown_.picture, format);
  }

 private:
  void showAt(Microseconds time) {
    if (isStill()) return;
    moveTo(length_ ? time % *length_ : time);
    if (next_) return;
    if (!length_) length_ = std::max(shown_.timestamp + interval_, 1us);
    moveTo(time % *length_);
  }

  /// Shows the last picture that starts at or before `position`.
  void moveTo(Microseconds position) {
    position = std::max(position, start_);
    if (position < shown_.timestamp || position > shown_.timestamp + kFarAhead) jumpTo(position);
    while (next_ && next_->timestamp <= position) {
      interval_ = next_->timestamp - shown_.timestamp;
      shown_ = std::move(*next_);
      readNext();
    }
  }

  void jumpTo(Microseconds position) {
    if (!next_ && shown_.timestamp <= position) return;  // the last picture stays until the end
    if (!reader_->seek(position)) return;
    auto picture = reader_->nextPicture();
    if (!picture) return;
    shown_ = std::move(*picture);
    readNext();
  }

  void readNext() { next_ = reader_->nextPicture(); }

  bool isStill() const { return !next_ && shown_.timestamp == start_; }

  const std::unique_ptr<MediaFileReader> reader_;
  const Microseconds start_;  // of the first picture: sound may begin before it
  MediaPicture shown_;
  std::optional<MediaPicture> next_;    // nothing at the end of the file
  Microseconds interval_ = 40ms;        // between the last two pictures
  std::optional<Microseconds> length_;  // known once the end has been read
  PictureFitter fitter_;
};

class DeviceCamera : public VideoSource {
 public:
  explicit DeviceCamera(std::unique_ptr<MediaFileReader> reader) : reader_(std::move(reader)) {}

  std::shared_ptr<const LumoRTCI420Buffer> frameAt(Microseconds, const VideoFormat& format) override {
    while (auto picture = reader_->nextPicture()) newest_ = std::move(picture->picture);
    if (reader_->isCutOff()) newest_ = nullptr;  // unplugged
    return fitter_.fit(newest_, format);
  }

 private:
  const std::unique_ptr<MediaFileReader> reader_;
  std::shared_ptr<const LumoRTCI420Buffer> newest_;
  PictureFitter fitter_;
};

}  // namespace

CameraOpenResult openCamera(const std::string& path) {
  MediaOpenResult opened = MediaFileReader::open(path, MediaKind::picture);
  if (!opened.reader) return {nullptr, std::move(opened.error)};
  if (opened.reader->isLive()) return {std::make_unique<DeviceCamera>(std::move(opened.reader)), {}};
  auto first = opened.reader->nextPicture();
  if (!first) return {nullptr, path + " has a picture that cannot be converted"};
  return {std::make_unique<FileCamera>(std::move(opened.reader), std::move(*first)), {}};
}

}  // namespace lumo
