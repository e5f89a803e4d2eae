#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngineEventDelegate.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/sdk/ConnectionSetup.h"
#include "LumoRTCLocal/sdk/LocalAudioEffectManager.h"
#include "LumoRTCLocal/sdk/LocalAudioMixer.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalOutputStream.h"
#include "LumoRTCLocal/sdk/LocalRoom.h"
#include "LumoRTCLocal/sdk/NetworkProbe.h"
#include "LumoRTCLocal/sdk/StatusReporter.h"

namespace lumo {

/// The SDK's engine: the microphone, the camera, the sound files and the joined room.
class LocalEngine : public LMRTCEngine, public std::enable_shared_from_this<LocalEngine> {
 public:
  /// @param camera   what the camera stream captures with
  /// @param cameras  of the device, for its position
  LocalEngine(std::shared_ptr<const LocalContext> context, std::shared_ptr<CameraPipeline> camera,
              std::shared_ptr<CameraPair> cameras, std::unique_ptr<AudioSource> microphone);
  ~LocalEngine() override;

  void setDelegate(std::weak_ptr<LMRTCEngineEventDelegate> delegate) override;
  /// Without effect: the media server is in this process.
  void setMediaServerUrl(const std::string& url) override;
  /// Of the config, the interval of the status reports takes effect: nothing in this process is encrypted or
  /// mixed with other applications.
  void initWithConfig(const LMRTCConfig& config) override;
  /// Also stops what plays from files, takes the callbacks of microphone, camera and room away and brings the
  /// devices back to where they start. When it has returned no surface gets a frame any more; it waits for
  /// those that are being shown, unless the thread is itself in a callback of the host.
  void unInit() override;
  void joinRoom(const std::string& roomId, const LMRTCRoomConfig& config, JoinCompletion completion) override;
  void leaveRoom(Completion completion) override;
  std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const override { return microphone_; }
  std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const override { return camera_; }
  const LocalCamera& camera() const { return *camera_; }

  /// Lets the local user hear the microphone, as EchoTest. A second test takes the place of the first.
  /// Joining a room ends it, as does un-initialising the engine; without effect before it is initialised.
  void startEchoTest(double seconds) override;
  void stopEchoTest() override { microphone_->setEchoTest(nullptr); }

  void enableSpeaker(bool enabled) override { context_->speaker->setEnabled(enabled); }
  std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const override { return effects_; }
  const std::shared_ptr<LocalAudioMixer>& audioMixer() const { return mixer_; }
  const std::shared_ptr<LocalMicrophone>& microphone() const { return microphone_; }
  /// Nothing is opened before the stream is published. Null for the tag of microphone and camera.
  std::shared_ptr<LMRTCFileVideoOutputStream> createFileVideoOutputStream(
      const std::string& url, bool replaceAudio, bool playback, const std::string& tag,
      const LMRTCVideoStreamConfig& config) override;

  void joinOtherRoom(const std::string& roomId, JoinOtherCompletion completion) override;
  void leaveOtherRoom(const std::string& roomId, bool notifyFinished,
                      LeaveOtherCompletion completion) override;

  /// Reports come while a room is joined, until the engine is un-initialised.
  void setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) override;

  void setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate> delegate) override;
  /// Only outside of rooms; see NetworkProbe. Joining a room and un-initialising the engine interrupt it.
  void startRTCProbeTest(Completion completion) override;
  void stopRTCProbeTest(Completion completion) override;
  /// As ConnectionSetup; without effect before the engine is initialised.
  void preconnectMediaServer() override;

 private:
  std::int64_t enterRoom(const std::string& roomId, const LMRTCRoomConfig& config,
                         std::shared_ptr<LocalRoom>& joined);
  std::int64_t exitRoom();
  std::shared_ptr<LocalRoom> mainRoom();
  void roomKicked(const std::shared_ptr<LocalRoom>& room, std::optional<std::int64_t> reason);
  void close(const std::shared_ptr<LocalRoom>& room);

  const std::shared_ptr<const LocalContext> context_;
  const std::shared_ptr<CameraPipeline> pipeline_;
  const std::shared_ptr<LocalMicrophone> microphone_;
  const std::shared_ptr<LocalCamera> camera_;
  const std::shared_ptr<LocalAudioMixer> mixer_;
  const std::shared_ptr<LocalAudioEffectManager> effects_;
  const std::shared_ptr<StatusReporter> reporter_;
  const std::shared_ptr<NetworkProbe> probe_;
  ConnectionSetup setup_;
  WeakCell<LMRTCEngineEventDelegate> delegate_;

  std::mutex mutex_;  ///< guards the room, together with the session it was joined in
  std::shared_ptr<LocalRoom> room_;
};

}  // namespace lumo
