#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCFileVideoOutputStream.h"
#include "LumoRTCLocal/media/VideoFormat.h"
#include "LumoRTCLocal/sdk/CameraPipeline.h"
#include "LumoRTCLocal/sdk/FileReading.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalOutputStream.h"
#include "LumoRTCLocal/sdk/LocalStream.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// A media file that is published under a tag. It is opened, away from the SDK's thread, each time that it is
/// published; then its pictures, and its sound unless that replaces the microphone, enter the room together
/// and the file is read from its start. A file that cannot be opened or has no picture never enters the room.
/// Any thread; the delegate is called on the SDK's thread.
class LocalFileStream : public LocalStream<LMRTCFileVideoOutputStream>,
                        public LocalOutput,
                        public std::enable_shared_from_this<LocalFileStream> {
 public:
  struct Settings {
    std::string path;
    std::string tag;
    bool replacesMicrophone = false;  ///< as long as it is read, and has sound
    bool isPlayedBack = false;        ///< also while it is muted
    VideoFormat format;
  };
  /// How the stream gets into the room, and out of it when it has failed. Called on the SDK's thread.
  struct Room {
    std::function<bool(const Publications& publications)> enter;
    std::function<void()> drop;
  };

  LocalFileStream(std::shared_ptr<const LocalContext> context, Settings settings);
  ~LocalFileStream() override;

  /// Opens the file, enters the room and reads. Not while it is published.
  void start(Room room);
  /// Whether it is published: from `start` until it is detached or has failed.
  bool isStarted() const;
  /// What is open in the room: nothing before the file has been opened.
  Publications publications() const;

  void setDelegate(std::weak_ptr<LMRTCFileVideoOutputStreamDelegate> delegate) override;
  /// The stream stays published, without pictures and sound.
  void stop() override;
  /// A muted stream sends neither pictures nor sound, and is read on. A microphone that it replaces stays
  /// replaced.
  void setIsMute(bool mute) override;
  void setVideoSendBufferCallback(SendBufferCallback callback) override;
  void setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) override;
  /// Bit rates are without effect: pictures go uncompressed from member to member.
  void setVideoConfig(const LMRTCVideoStreamConfig& config) override;

  std::shared_ptr<Publication> makePublication() override;
  /// Null takes the stream out of the room and stops it.
  void attach(const std::shared_ptr<Publication>& publication) override;

 private:
  using Delegate = LMRTCFileVideoOutputStreamDelegate;
  using Event = void (Delegate::*)(const Delegate::Stream& stream);

  void open(std::uint64_t run);
  void begin(std::uint64_t run, const std::shared_ptr<FileReading>& reading);
  void fail(std::uint64_t run, const Room& room);
  void ended(std::uint64_t run);
  Publications makePublications(const FileReading& reading);
  void stopLocked();
  void setGainsLocked();
  void tell(Event event);

  const std::shared_ptr<const LocalContext> context_;
  const Settings settings_;
  const std::shared_ptr<CameraPipeline> pipeline_;

  mutable std::mutex mutex_;  ///< guards what follows, and starts and stops the reading
  std::weak_ptr<Delegate> delegate_;
  std::uint64_t run_ = 0;  ///< counts the publishings and their ends; what belongs to an earlier one is stale
  bool isStarted_ = false;
  bool isStopped_ = false;
  Room room_;
  Publications publications_;
  std::shared_ptr<FileReading> reading_;  ///< null: not being read
};

}  // namespace lumo
