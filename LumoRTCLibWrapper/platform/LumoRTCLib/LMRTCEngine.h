#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class LMRTCAudioOutputStream;
class LMRTCCameraVideoOutputStream;
class LMRTCConfig;
class LMRTCEngineEventDelegate;
class LMRTCRoom;
class LMRTCRoomConfig;

/// The SDK's engine: one per process, owned by the SDK. Operations may be called on any thread; each
/// completion is called once, later, on the SDK's thread.
class LMRTCEngine {
 public:
  using JoinCompletion = std::function<void(std::int64_t code, const std::shared_ptr<LMRTCRoom>& room)>;
  using Completion = std::function<void(std::int64_t code)>;

  virtual ~LMRTCEngine() = default;

  /// The engine of the installed provider; null when no provider is installed.
  static std::shared_ptr<LMRTCEngine> sharedInstance();

  /// Who hears of the engine's events; held weakly.
  virtual void setDelegate(std::weak_ptr<LMRTCEngineEventDelegate> delegate) = 0;

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

  /// The microphone stream; the same object for the life of the engine.
  virtual std::shared_ptr<LMRTCAudioOutputStream> defaultAudioStream() const = 0;
  /// The camera stream; the same object for the life of the engine.
  virtual std::shared_ptr<LMRTCCameraVideoOutputStream> defaultVideoStream() const = 0;
};
