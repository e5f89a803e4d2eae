#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LumoRTCI420Buffer.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/Timeline.h"

namespace lumo {

/// How a stream is encoded.
struct StreamFormat {
  std::int32_t width = 360;           ///< pixels, even
  std::int32_t height = 640;          ///< pixels, even
  std::int32_t framesPerSecond = 15;  ///< what is announced; pictures go out at the times they carry
  std::int32_t videoBitrate = 800;    ///< kilobits per second
  std::int32_t audioBitrate = 64;     ///< kilobits per second
  bool hasPicture = true;             ///< false: sound only
};

/// Whether one can write to an address, as far as the address itself tells.
enum class StreamAddress {
  usable,
  malformed,         ///< no protocol, or nothing behind it; udp needs a host and a port
  unknownProtocol,   ///< none of rtmp, udp and file
  unknownContainer,  ///< a file whose extension is none of .flv, .ts, .mp4 and .mkv
};

/// Encodes pictures and sound (H.264 and AAC) and sends them to one address: FLV to rtmp://, MPEG-TS to
/// udp://, and the container of the extension to file:///. It works on a runner of its own; what comes faster
/// than it can be encoded and sent is dropped. The stream has one size: other pictures are fitted into it
/// between black bars. Every operation may be called on any thread.
class StreamWriter {
 public:
  /// Called on the writer's runner, or while the writer is destroyed, without a lock. From within them, the
  /// writer may be destroyed.
  struct Events {
    /// Once: the address is open, or, when `error` is not empty, it cannot be opened.
    std::function<void(const std::string& error)> opened;
    /// At most once, after a successful `opened`: the stream has ended with an error, if only that of its
    /// end.
    std::function<void(const std::string& error)> failed;
  };

  static StreamAddress check(const std::string& address);

  /// Starts opening `address`, which must be usable. What is written before it is open is dropped. An address
  /// that does not answer within 5 seconds is an error.
  StreamWriter(Timeline& timeline, std::string address, const StreamFormat& format, Events events);
  /// As `finish`, in the call; an address that no longer takes data delays it by a second at most.
  ~StreamWriter();
  StreamWriter(const StreamWriter&) = delete;
  StreamWriter& operator=(const StreamWriter&) = delete;

  void writePicture(std::shared_ptr<const LumoRTCI420Buffer> picture, Microseconds time);
  /// @param time  when the block ended
  void writeSound(const AudioBlock& block, Microseconds time);
  /// @param kilobitsPerSecond  of the pictures from now on, at least 1
  void setVideoBitrate(std::int32_t kilobitsPerSecond);
  /// Sends what is still waiting and closes the address, then calls `done` on the writer's runner.
  /// @param done  told whether the stream is whole: it was open and has never failed
  void finish(std::function<void(bool isWhole)> done);

 private:
  struct State;

  const std::shared_ptr<State> state_;
  std::unique_ptr<Runner> runner_;
};

}  // namespace lumo
