#pragma once

#include <deque>
#include <optional>

#include "LumoRTCLocal/media/FfmpegHandles.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo::ffmpeg {

/// Decodes one stream of an open file from packets that somebody else demuxes. Private to the media layer:
/// not installed.
class StreamDecoder {
 public:
  enum class Result {
    frame,        ///< `frame` holds the next one
    needsPacket,  ///< `add` a packet, or `end` the stream
    ended,        ///< everything that was added has been decoded
  };

  /// @param fileStart  what counts as 0, in units of AV_TIME_BASE
  /// @return nothing when there is no decoder for the stream
  static std::optional<StreamDecoder> open(const AVStream& stream, std::int64_t fileStart);

  int index() const { return stream_->index; }
  const AVStream& stream() const { return *stream_; }
  bool hasPackets() const { return !packets_.empty(); }

  void add(Packet packet);
  void end() { ended_ = true; }

  /// Drops all packets and frames, for a new start at another place of the file.
  void flush();

  Result decode();

  /// The frame that `decode` gave last.
  const AVFrame& frame() const { return *frame_; }
  /// Since the start of the file, never negative.
  Microseconds timestamp() const { return timestamp_; }

  /// Makes the next `decode` give the present frame once more.
  void unread() { unread_ = true; }

  /// Moves the present frame's data to `target`.
  void takeFrame(AVFrame& target);

  /// Up to where packets have come so far, since the start of the file.
  Microseconds packetsEnd() const { return packetsEnd_; }

  /// How long the file says that the stream is; nothing when it does not say.
  std::optional<Microseconds> announcedLength() const;

  /// Whether something could not be decoded.
  bool isDamaged() const { return damaged_; }

 private:
  StreamDecoder(const AVStream& stream, std::int64_t fileStart, CodecContext codec);
  void send();
  void setTimestamp();
  Microseconds sinceStart(std::int64_t time) const;

  const AVStream* stream_;
  std::int64_t fileStart_;
  CodecContext codec_;
  std::deque<Packet> packets_;
  Microseconds packetsEnd_{0};
  Frame frame_;
  Microseconds timestamp_{0};
  Microseconds expected_{0};  // of the next frame, should it carry none
  bool ended_ = false;
  bool unread_ = false;
  bool damaged_ = false;
};

}  // namespace lumo::ffmpeg
