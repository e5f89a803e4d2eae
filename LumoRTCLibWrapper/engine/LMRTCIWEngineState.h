#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLibWrapper/util/LMIWLockedMap.h"

class LMRTCEngine;
class LMRTCIWViewDelegate;
class LMRTCLiveInfo;
class LMRTCOtherRoom;
class LMRTCRoom;
struct LMRTCIWAudioFrameDelegate;
struct LMRTCIWCustomStream;
struct LMRTCIWEngineDelegate;
struct LMRTCIWEngineSetup;
struct LMRTCIWNetworkProbeDelegate;
struct LMRTCIWPixelBufferVideoFrameDelegate;
struct LMRTCIWRoomSetup;
struct LMRTCIWSampleBufferVideoFrameDelegate;
struct LMRTCIWStatsDelegate;

/// The properties of LMRTCIWEngine. Each is a cell that getters and setters copy out and in, so any thread
/// may use them at any time; a weak property reads as null once its object is gone. Map properties are read
/// and replaced as a whole here; the engine's operations change their entries.
class LMRTCIWEngineState {
 public:
  template <class Value>
  using TextMap = std::map<std::string, Value>;
  using View = std::shared_ptr<LMRTCIWViewDelegate>;

  /// The host's listener; weak.
  std::shared_ptr<LMRTCIWEngineDelegate> engineDelegate() const { return engineDelegate_.get(); }
  void setEngineDelegate(const std::shared_ptr<LMRTCIWEngineDelegate>& value) { engineDelegate_.set(value); }

  /// What the engine was created with.
  std::shared_ptr<LMRTCIWEngineSetup> iwEngineSetup() const { return iwEngineSetup_.get(); }
  void setIwEngineSetup(std::shared_ptr<LMRTCIWEngineSetup> value) { iwEngineSetup_.set(std::move(value)); }

  /// The SDK's engine; weak.
  std::shared_ptr<LMRTCEngine> rtcEngine() const { return rtcEngine_.get(); }
  void setRtcEngine(const std::shared_ptr<LMRTCEngine>& value) { rtcEngine_.set(value); }

  /// The joined main room; weak, so null once the SDK has released it after leaving.
  std::shared_ptr<LMRTCRoom> room() const { return room_.get(); }
  void setRoom(const std::shared_ptr<LMRTCRoom>& value) { room_.set(value); }

  /// The setup of the last join.
  std::shared_ptr<LMRTCIWRoomSetup> iwRoomSetup() const { return iwRoomSetup_.get(); }
  void setIwRoomSetup(std::shared_ptr<LMRTCIWRoomSetup> value) { iwRoomSetup_.set(std::move(value)); }

  /// The control handle of the current live publication.
  std::shared_ptr<LMRTCLiveInfo> liveInfo() const { return liveInfo_.get(); }
  void setLiveInfo(std::shared_ptr<LMRTCLiveInfo> value) { liveInfo_.set(std::move(value)); }

  /// The views bound to the camera, the live mix and the inner CDN stream; weak.
  View iwLocalVideoView() const { return iwLocalVideoView_.get(); }
  void setIwLocalVideoView(const View& value) { iwLocalVideoView_.set(value); }
  View iwLiveMixVideoView() const { return iwLiveMixVideoView_.get(); }
  void setIwLiveMixVideoView(const View& value) { iwLiveMixVideoView_.set(value); }
  View iwLiveMixInnerCdnVideoView() const { return iwLiveMixInnerCdnVideoView_.get(); }
  void setIwLiveMixInnerCdnVideoView(const View& value) { iwLiveMixInnerCdnVideoView_.set(value); }

  /// Views by user id.
  TextMap<View> remoteVideoViewDict() const { return remoteVideoViewDict_.get(); }
  void setRemoteVideoViewDict(TextMap<View> value) { remoteVideoViewDict_.set(std::move(value)); }
  /// Views of the local user's custom streams by tag.
  TextMap<View> localCustomViews() const { return localCustomViews_.get(); }
  void setLocalCustomViews(TextMap<View> value) { localCustomViews_.set(std::move(value)); }
  /// Views of remote custom streams by "user@tag".
  TextMap<View> remoteCustomViews() const { return remoteCustomViews_.get(); }
  void setRemoteCustomViews(TextMap<View> value) { remoteCustomViews_.set(std::move(value)); }

  /// Files of the created audio effects by effect id.
  std::map<std::int64_t, std::string> effectSoundIdDict() const { return effectSoundIdDict_.get(); }
  void setEffectSoundIdDict(std::map<std::int64_t, std::string> value) {
    effectSoundIdDict_.set(std::move(value));
  }

  /// The local user's custom streams by tag.
  TextMap<std::shared_ptr<LMRTCIWCustomStream>> customStreams() const { return customStreams_.get(); }
  void setCustomStreams(TextMap<std::shared_ptr<LMRTCIWCustomStream>> value) {
    customStreams_.set(std::move(value));
  }

  /// The joined other rooms by room id.
  TextMap<std::shared_ptr<LMRTCOtherRoom>> subs() const { return subs_.get(); }
  void setSubs(TextMap<std::shared_ptr<LMRTCOtherRoom>> value) { subs_.set(std::move(value)); }

  /// Single observers; weak.
  std::shared_ptr<LMRTCIWStatsDelegate> statsDelegate_() const { return statsObserver_.get(); }
  void setStatsDelegate_(const std::shared_ptr<LMRTCIWStatsDelegate>& value) { statsObserver_.set(value); }
  std::shared_ptr<LMRTCIWNetworkProbeDelegate> probeTestDelegate_() const { return probeTestObserver_.get(); }
  void setProbeTestDelegate_(const std::shared_ptr<LMRTCIWNetworkProbeDelegate>& value) {
    probeTestObserver_.set(value);
  }
  std::shared_ptr<LMRTCIWAudioFrameDelegate> localAudioCapturedDelegate_() const {
    return localAudioCapturedObserver_.get();
  }
  void setLocalAudioCapturedDelegate_(const std::shared_ptr<LMRTCIWAudioFrameDelegate>& value) {
    localAudioCapturedObserver_.set(value);
  }
  std::shared_ptr<LMRTCIWAudioFrameDelegate> localAudioMixedDelegate_() const {
    return localAudioMixedObserver_.get();
  }
  void setLocalAudioMixedDelegate_(const std::shared_ptr<LMRTCIWAudioFrameDelegate>& value) {
    localAudioMixedObserver_.set(value);
  }
  std::shared_ptr<LMRTCIWAudioFrameDelegate> remoteAudioMixedDelegate_() const {
    return remoteAudioMixedObserver_.get();
  }
  void setRemoteAudioMixedDelegate_(const std::shared_ptr<LMRTCIWAudioFrameDelegate>& value) {
    remoteAudioMixedObserver_.set(value);
  }
  std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate> localVideoProcessedDelegate_() const {
    return localVideoProcessedObserver_.get();
  }
  void setLocalVideoProcessedDelegate_(const std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate>& value) {
    localVideoProcessedObserver_.set(value);
  }

  /// Keyed observers: by user id, by tag, or by "user@tag" for remote custom streams.
  using AudioObservers = TextMap<std::shared_ptr<LMRTCIWAudioFrameDelegate>>;
  using SampleObservers = TextMap<std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate>>;
  using PixelObservers = TextMap<std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate>>;
  AudioObservers remoteAudioReceivedDelegates() const { return remoteAudioReceivedDelegates_.get(); }
  void setRemoteAudioReceivedDelegates(AudioObservers value) {
    remoteAudioReceivedDelegates_.set(std::move(value));
  }
  PixelObservers remoteVideoProcessedDelegates() const { return remoteVideoProcessedDelegates_.get(); }
  void setRemoteVideoProcessedDelegates(PixelObservers value) {
    remoteVideoProcessedDelegates_.set(std::move(value));
  }
  SampleObservers localCustomVideoProcessedDelegates() const {
    return localCustomVideoProcessedDelegates_.get();
  }
  void setLocalCustomVideoProcessedDelegates(SampleObservers value) {
    localCustomVideoProcessedDelegates_.set(std::move(value));
  }
  PixelObservers remoteCustomVideoProcessedDelegates() const {
    return remoteCustomVideoProcessedDelegates_.get();
  }
  void setRemoteCustomVideoProcessedDelegates(PixelObservers value) {
    remoteCustomVideoProcessedDelegates_.set(std::move(value));
  }
  AudioObservers remoteCustomAudioProcessedDelegates() const {
    return remoteCustomAudioProcessedDelegates_.get();
  }
  void setRemoteCustomAudioProcessedDelegates(AudioObservers value) {
    remoteCustomAudioProcessedDelegates_.set(std::move(value));
  }

  /// The last progress of audio mixing that the SDK reported, in the SDK's unit.
  double audioMixPlayProgress() const { return audioMixPlayProgress_; }
  void setAudioMixPlayProgress(double value) { audioMixPlayProgress_ = value; }
  /// The file that audio mixing was last started with.
  std::optional<std::string> audioMixingFileUrl() const { return audioMixingFileUrl_.get(); }
  void setAudioMixingFileUrl(std::optional<std::string> value) { audioMixingFileUrl_.set(std::move(value)); }

  /// Reserved; LMRTCIWEngine::getSessionId reads the room's own.
  std::optional<std::string> sessionId() const { return sessionId_.get(); }
  void setSessionId(std::optional<std::string> value) { sessionId_.set(std::move(value)); }

  /// Whether the inner CDN stream is switched on, as the server last confirmed.
  bool innerCdnStateCache() const { return innerCdnStateCache_; }
  void setInnerCdnStateCache(bool value) { innerCdnStateCache_ = value; }
  /// The inner CDN stream's size preset; -1 when it was not set.
  std::int64_t innerCDNVideoResolution() const { return innerCDNVideoResolution_; }
  void setInnerCDNVideoResolution(std::int64_t value) { innerCDNVideoResolution_ = value; }
  /// The inner CDN stream's frame-rate value; -1 when it was not set.
  std::int64_t innerCDNVideoFps() const { return innerCDNVideoFps_; }
  void setInnerCDNVideoFps(std::int64_t value) { innerCDNVideoFps_ = value; }

 protected:
  LMRTCIWEngineState() = default;
  ~LMRTCIWEngineState() = default;

  template <class Value>
  using TextMapCell = lumo::LockedMap<std::string, Value>;

  lumo::WeakCell<LMRTCIWEngineDelegate> engineDelegate_;
  lumo::Cell<std::shared_ptr<LMRTCIWEngineSetup>> iwEngineSetup_;
  lumo::WeakCell<LMRTCEngine> rtcEngine_;
  lumo::WeakCell<LMRTCRoom> room_;
  lumo::Cell<std::shared_ptr<LMRTCIWRoomSetup>> iwRoomSetup_;
  lumo::Cell<std::shared_ptr<LMRTCLiveInfo>> liveInfo_;

  lumo::WeakCell<LMRTCIWViewDelegate> iwLocalVideoView_;
  lumo::WeakCell<LMRTCIWViewDelegate> iwLiveMixVideoView_;
  lumo::WeakCell<LMRTCIWViewDelegate> iwLiveMixInnerCdnVideoView_;
  TextMapCell<View> remoteVideoViewDict_;
  TextMapCell<View> localCustomViews_;
  TextMapCell<View> remoteCustomViews_;

  lumo::LockedMap<std::int64_t, std::string> effectSoundIdDict_;
  TextMapCell<std::shared_ptr<LMRTCIWCustomStream>> customStreams_;
  TextMapCell<std::shared_ptr<LMRTCOtherRoom>> subs_;

  lumo::WeakCell<LMRTCIWStatsDelegate> statsObserver_;
  lumo::WeakCell<LMRTCIWNetworkProbeDelegate> probeTestObserver_;
  lumo::WeakCell<LMRTCIWAudioFrameDelegate> localAudioCapturedObserver_;
  lumo::WeakCell<LMRTCIWAudioFrameDelegate> localAudioMixedObserver_;
  lumo::WeakCell<LMRTCIWAudioFrameDelegate> remoteAudioMixedObserver_;
  lumo::WeakCell<LMRTCIWSampleBufferVideoFrameDelegate> localVideoProcessedObserver_;
  TextMapCell<std::shared_ptr<LMRTCIWAudioFrameDelegate>> remoteAudioReceivedDelegates_;
  TextMapCell<std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate>> remoteVideoProcessedDelegates_;
  TextMapCell<std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate>> localCustomVideoProcessedDelegates_;
  TextMapCell<std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate>> remoteCustomVideoProcessedDelegates_;
  TextMapCell<std::shared_ptr<LMRTCIWAudioFrameDelegate>> remoteCustomAudioProcessedDelegates_;

  std::atomic<double> audioMixPlayProgress_ = 0;
  lumo::Cell<std::optional<std::string>> audioMixingFileUrl_;
  lumo::Cell<std::optional<std::string>> sessionId_;
  std::atomic<bool> innerCdnStateCache_ = false;
  std::atomic<std::int64_t> innerCDNVideoResolution_ = -1;
  std::atomic<std::int64_t> innerCDNVideoFps_ = -1;
};
