#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

class MediaFileReader;

/// What of a file is read.
enum class MediaKind { picture, sound, both };

/// Exactly one of the two is set.
struct MediaOpenResult {
  std::unique_ptr<MediaFileReader> reader;
  std::string error;  ///< for people: the file's name and what is wrong
};

/// A decoded picture, upright, in the size it has in the file.
struct MediaPicture {
  std::shared_ptr<const LumoRTCI420Buffer> picture;
  Microseconds timestamp{0};  ///< since the start of the file
};

/// Decoded sound, at 48 kHz.
struct MediaSound {
  std::span<const std::int16_t> samples;  ///< stereo, interleaved; valid until the reader's next call
  Microseconds timestamp{0};              ///< of the first sample, since the start of the file
};

/// Reads the pictures and the sound of one media file in order, or the pictures of a capture device. Damaged
/// parts are skipped, a cut-off file ends where it is cut; neither is an error once the file is open. One
/// thread at a time. The first reader silences FFmpeg's log, which belongs to the whole process, unless the
/// host has set its level.
class MediaFileReader {
 public:
  /// Opens `path` and decodes its beginning. A file that cannot be opened, is no media file, lacks what
  /// `kind` asks for, or cannot be decoded gives an error. With `both`, one of picture and sound is enough.
  /// @param path  a file, or a capture device ("/dev/video0")
  static MediaOpenResult open(const std::string& path, MediaKind kind);

  /// As `open`, for files only: what could keep the opener waiting, such as a device or a pipe, is refused.
  static MediaOpenResult openFile(const std::string& path, MediaKind kind);

  ~MediaFileReader();
  MediaFileReader(const MediaFileReader&) = delete;
  MediaFileReader& operator=(const MediaFileReader&) = delete;

  bool hasPicture() const;
  bool hasSound() const;

  /// Whether the pictures come from a capture device. Then `nextPicture` never waits, and there is nothing to
  /// seek.
  bool isLive() const;

  /// How long the file says that it is; 0 when it does not say.
  Microseconds duration() const;

  /// The next picture. Nothing at the end of the file; from a device, nothing as long as there is no new
  /// picture.
  std::optional<MediaPicture> nextPicture();

  /// The next piece of sound, a fraction of a second; nothing at the end of the file. Whoever opened `both`
  /// reads both side by side: what is read ahead of one is kept for the other.
  std::optional<MediaSound> nextSound();

  /// Whether something in the data read so far was damaged or missing.
  bool isDamaged() const;

  /// Whether the file has turned out to stop before the end that it announces, or could not be read on; or
  /// the device has been unplugged.
  bool isCutOff() const;

  /// Continues with the picture that is shown at `time`, and the sound from there on. A time beyond the end
  /// gives the end. A file that cannot be sought goes back to its start and is read up to there.
  /// @return false when neither is possible, or the reader is live
  bool seek(Microseconds time);

  /// Continues from the start of the file. The same as `seek` to 0.
  bool rewind();

 private:
  struct State;
  explicit MediaFileReader(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace lumo
