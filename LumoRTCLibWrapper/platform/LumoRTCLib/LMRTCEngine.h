#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class LMRTCAudioEffectManager;
class LMRTCAudioOutputStream;
class LMRTCCameraVideoOutputStream;
class LMRTCConfig;
class LMRTCEngineEventDelegate;
class LMRTCFileVideoOutputStream;
class LMRTCOtherRoom;
class LMRTCProbeTestDelegate;
class LMRTCRoom;
class LMRTCRoomConfig;
class LMRTCStatusReportDelegate;
class LMRTCVideoStreamConfig;

/// The SDK's engine: one per process, owned by the SDK. Operations may be called on any thread; each
/// completion is called once, later, on the SDK's thread.
class LMRTCEngine {
 public:
  using JoinCompletion = std::function<void(std::int64_t code, const std::shared_ptr<LMRTCRoom>& room)>;
  using Completion = std::function<void(std::int64_t code)>;
  using JoinOtherCompletion =
      std::function<void(std::int64_t code, const std::shared_ptr<LMRTCOtherRoom>& room)>;
  using LeaveOtherCompletion = std::function<void(bool success, std::int64_t code)>;

  virtual ~LMRTCEngine() = default;

  /// The engine of the installed provider; null when no provider is installed.
  static std::shared_ptr<LMRTCEngine> sharedInstance();

  /// Who hears of the engine's events; held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCEngineEventDelegate> delegate) = 0;

  /// Who hears of status reports; held weakly, null ends them.
  virtual void setStatusReportDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) = 0;

  /// Address of the media server; call before `initWithConfig`.
  virtual void setMediaServerUrl(const std::string& url) = 0;
  virtual void initWithConfig(const LMRTCConfig& config) = 0;
  /// Ends all media and leaves every room. The engine can be initialised again.
  virtual void unInit() = 0;

  /// Joins the main room. The completion gets the room when `code` is 0.
  virtual void joinRoom(const std::string& roomId, const LMRTCRoomConfig& config,
                        JoinCompletion completion) = 0;
  /// Leaves the main room.
  virtual void leaveRoom(Completion completion) = 0;

  /// Joins another room beside the main one. The completion gets the room when `code` is 0.
  virtual void joinOtherRoom(const std::string& roomId, JoinOtherCompletion completion) = 0;
  /// @param notifyFinished  whether the link of the two rooms ends for everybody
  virtual void leaveOtherRoom(const std::string& roomId, bool notifyFinished,
                              LeaveOtherCompletion completion) = 0;

  /// A media file as a stream that can be published under `tag`; null when the SDK cannot make one.
  /// @param url           path or file URL
  /// @param replaceAudio  whether the file's sound replaces the microphone
  /// @param playback      whether the file's sound is played locally
  virtual std::shared_ptr<LMRTCFileVideoOutputStream> createFileVideoOutputStream(
      const std::string& url, bool replaceAudio, bool playback, const std::string& tag,
      const LMRTCVideoStreamConfig& config) = 0;

  virtual std::shared_ptr<LMRTCAudioEffectManager> audioEffectManager() const = 0;

  /// Records the microphone for `seconds` and then plays it back, again and again.
  virtual void startEchoTest(double seconds) = 0;
  virtual void stopEchoTest() = 0;

  /// Who hears of the network probe; held weakly.
  virtual void setProbeTestDelegate(std::weak_ptr<LMRTCProbeTestDelegate> delegate) = 0;
  virtual void startRTCProbeTest(Completion completion) = 0;
  virtual void stopRTCProbeTest(Completion completion) = 0;

  /// Connects to the media server ahead of the next join, which then takes less time.
  virtual void preconnectMediaServer() = 0;

  /// Whether received sound is played.
  virtual void enableSpeaker(bool enabled) = 0;

  /// The microphone stream; the same object for the life of the engine.
  virtual std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const = 0;
  /// The camera stream; the same object for the life of the engine.
  virtual std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const = 0;
};
