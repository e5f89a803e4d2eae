#include <algorithm>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "tests/stress/World.h"

// All operations of the engine, each with what it depends on and what it changes, and what an engine holds.

namespace lumo::stress {
namespace {

using Engine = LMRTCIWEngine;
using Streams = std::vector<std::shared_ptr<LMRTCInputStream>>;
using User = std::shared_ptr<LMRTCRemoteUser>;

constexpr LMRTCIWAudioConfig kAudioConfig;
const std::shared_ptr<const UIImage> kPicture = std::make_shared<UIImage>();

#define CALL(...) [](Engine& e, [[maybe_unused]] const Args& a) -> Int { return __VA_ARGS__; }
#define OP(name, arguments, ...) Operation(#name, CALL(e.name arguments), __VA_ARGS__)
#define IF(...) \
  []([[maybe_unused]] const Model& m, [[maybe_unused]] const Args& a) -> bool { return __VA_ARGS__; }
#define WHEN(condition, ...)                                                \
  [](Model& m, [[maybe_unused]] const Args& a, [[maybe_unused]] Int code) { \
    if (condition) {                                                        \
      __VA_ARGS__;                                                          \
    }                                                                       \
  }
#define THEN(...) WHEN(code == 0, __VA_ARGS__)

User mainUser(const Model& m, const std::string& id) {
  const auto room = m.room.lock();
  return room ? room->getRemoteUser(id) : nullptr;
}
User anyUser(const Model& m, const std::string& id) {
  auto user = mainUser(m, id);
  for (const auto& [name, room] : m.subs) {
    if (!user) user = room->getRemoteUser(id);
  }
  return user;
}
/// Whether there is a stream of the media type; 2 is either.
bool has(const Streams& streams, Int type) {
  return std::ranges::any_of(streams, [type](const auto& s) { return type == 2 || s->mediaType() == type; });
}
/// Whether the user, if there is one, has a stream of the tag and media type.
bool has(const User& user, const std::string& tag, Int type, bool video = false) {
  auto streams = user ? user->remoteStreams() : Streams();
  std::erase_if(streams, [&](const auto& stream) {
    return stream->tag() != tag || (video && !std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream));
  });
  return has(streams, type);
}
bool hasNormal(const User& user, Int type) { return has(user, kLMRTCDefaultStreamTag, type); }
bool hasNormalOfAny(const Model& m, const Args& a) {
  return std::ranges::any_of(a.users, [&](const auto& id) { return hasNormal(anyUser(m, id), a.type); });
}
std::string customOf(const Args& a) { return a.user + "@" + a.tag; }

// What operations check; most checks are those of many.
const Check kSdk = {kDestroyed, IF(!m.destroyed)};
const Check kRoom = {kNotJoined, IF(m.room.lock() != nullptr)};
const Check kJoined = {kNotJoined, IF(m.joined())};
const Check kSetUp = {kNotJoined, IF(m.joined() && m.setup)};
const Check kLive = {kBadParameter, IF(m.live)};
const Check kView = {kBadParameter, IF(a.view != nullptr)};
const Check kConfig = {kBadParameter, IF(a.config != nullptr)};
const Check kText = {kBadParameter, IF(a.text.has_value())};
const Check kFlag = {kBadParameter, IF(a.flag)};
const Check kUsers = {kBadParameter, IF(!a.users.empty())};
const Check kMainUser = {kNobody, IF(mainUser(m, a.user) != nullptr)};
const Check kUser = {kNobody, IF(anyUser(m, a.user) != nullptr)};
const Check kTag = {kNoStream, IF(m.strong.contains("tag " + a.tag))};
const Check kCdn = {kNoStream, IF(m.room.lock()->cdn != nullptr)};
const Check kTagged = {kNoStream, IF(has(anyUser(m, a.user), a.tag, a.type))};
const Check kNormalOfUser = {kBadParameter, IF(hasNormal(anyUser(m, a.user), a.type))};
const Check kNormal = {kBadParameter, IF(hasNormalOfAny(m, a))};
const Check kLiveStream = {kBadParameter, IF(has(m.room.lock()->live, a.type<0 || a.type> 1 ? 2 : a.type))};
const Check kDefault = {kBadParameter, IF(!m.destroyed && a.type >= 0 && a.type <= 2)};
const Check kPublisher = {kBadParameter, IF(m.roleHeld() == 0 || m.roleHeld() == 1)};
const Check kEffect = {kBadParameter, IF(m.effects.contains(a.n))};
const Check kNoEffect = {kBadParameter, IF(!m.effects.contains(a.n))};
const Check kLiveRoom = {-21, IF(m.role != 0)};
const Check kOtherRole = {kBadParameter, IF(m.role != a.type && (a.type == 1 || a.type == 2))};
const Check kNever = {kNotSupported, IF(a.n < 0)};

std::size_t perUser(const Args& a, Int) { return a.users.size(); }
std::size_t oneOnFailure(const Args&, Int code) { return code == 0 ? 0 : 1; }
std::size_t unlessKicked(const Args&, Int code) { return code == fake::LocalUser::kKicked ? 0 : 1; }

void roleSwitched(Model& m, const Args& a, Int code) {
  if (code == fake::LocalUser::kKicked) m.setup = m.live = false;
  if (code != 0) return;
  m.live = a.type == 1 && a.live;
  m.role = a.type;
}

/// The SDK ends a sub-room: the engine leaves it.
Int finishSubRoom(const Engine& engine, const std::string& room) {
  const auto sdk = std::dynamic_pointer_cast<fake::Engine>(engine.rtcEngine());
  const auto listener = sdk ? sdk->events() : nullptr;
  if (!listener) return kDestroyed;
  listener->didFinishOtherRoom(room, "u1");
  return 0;
}

}  // namespace

Held heldBy(const LMRTCIWEngine& engine) {
  Held all = {{"camera", engine.iwLocalVideoView().get()},
              {"mix", engine.iwLiveMixVideoView().get()},
              {"cdn", engine.iwLiveMixInnerCdnVideoView().get()},
              {"stats", engine.statsDelegate_().get()},
              {"probe", engine.probeTestDelegate_().get()},
              {"captured", engine.localAudioCapturedDelegate_().get()},
              {"sent", engine.localAudioMixedDelegate_().get()},
              {"received", engine.remoteAudioMixedDelegate_().get()},
              {"processed", engine.localVideoProcessedDelegate_().get()}};
  const auto add = [&all](const std::string& prefix, const auto& map) {
    for (const auto& [key, object] : map) all[prefix + key] = object.get();
  };
  add("view ", engine.remoteVideoViewDict());
  add("local ", engine.localCustomViews());
  add("custom ", engine.remoteCustomViews());
  add("sound ", engine.remoteAudioReceivedDelegates());
  add("sound ", engine.remoteCustomAudioProcessedDelegates());
  add("pictures ", engine.remoteVideoProcessedDelegates());
  add("pictures ", engine.remoteCustomVideoProcessedDelegates());
  add("own ", engine.localCustomVideoProcessedDelegates());
  for (const auto& [tag, custom] : engine.customStreams()) all["tag " + tag] = custom->stream.get();
  return all;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = {
    // Room and media
    OP(joinRoom, (a.room, a.setup), {{kBadParameter, IF(a.setup != nullptr)}}, "onRoomJoined",
       THEN(m.setup = true; m.role = a.setup->role), WHEN(code == 0 && a.joined.lock(), m.room = a.joined)),
    OP(leaveRoom, (), {}, "onRoomLeft"),
    OP(setAudioConfig, (a.config ? &kAudioConfig : nullptr), {kConfig}),
    OP(setVideoConfig, (a.config.get()), {kConfig}),
    OP(setVideoConfig, (a.config.get(), a.flag), {kConfig}),
    OP(publish, (a.type), {kSetUp, kDefault, kPublisher}, "onPublished", nullptr,
       WHEN(a.role == 1, m.live = a.live)),
    OP(unpublish, (a.type), {kJoined, kDefault, kPublisher}, "onUnpublished"),
    OP(subscribe, (a.text, a.type), {kText, kJoined, kNormalOfUser}, "onSubscribed"),
    OP(subscribe, (a.text, a.type, a.flag), {kText, kJoined, kNormalOfUser}, "onSubscribed"),
    OP(subscribeWithUserIds, (a.users, a.type), {kJoined, kNormal}, "onSubscribed", nullptr, nullptr,
       perUser),
    OP(subscribeWithUserIds, (a.users, a.type, a.flag), {kJoined, kNormal}, "onSubscribed", nullptr, nullptr,
       perUser),
    OP(unsubscribe, (a.text, a.type), {kText, kJoined, kNormalOfUser}, "onUnsubscribed"),
    OP(unsubscribeWithUserIds, (a.users, a.type), {kJoined, {kNotJoined, kUsers.holds}, kNormal},
       "onUnsubscribed", nullptr, nullptr, perUser),
    OP(subscribeLiveMix, (a.type), {kJoined, kLiveStream}, "onLiveMixSubscribed"),
    OP(subscribeLiveMix, (a.type, a.flag), {kJoined, kLiveStream}, "onLiveMixSubscribed"),
    OP(unsubscribeLiveMix, (a.type), {kJoined, kLiveStream}, "onLiveMixUnsubscribed"),
    OP(switchLiveRole, (a.type), {kSdk, kSetUp, kLiveRoom, kOtherRole}, "onLiveRoleSwitched", nullptr,
       roleSwitched, unlessKicked),

    // Several that are alike
    Operation(
        "questions",
        CALL((static_cast<void>(e.getRemoteUser(a.user)), e.getSessionId(), e.whichCamera(),
              e.isCameraFocusSupported(), e.isCameraExposurePositionSupported(),
              e.getAudioMixingPlaybackVolume(), e.getAudioMixingPublishVolume(), e.getAudioMixingPosition(),
              e.getCustomStreams(e.getRemoteUser(a.user), a.tag, a.type), e.reset(), 0)),
        {}),
    Operation("devices",
              CALL(e.enableMicrophone(a.flag) | e.enableSpeaker(a.flag) | e.adjustLocalVolume(a.n) |
                   e.adjustRemoteVolume(a.n) | e.setCameraFocusPositionInPreview({}) |
                   e.setCameraExposurePositionInPreview({}) | e.setCameraCaptureOrientation(a.n) |
                   e.muteLocalStream(a.type, a.flag) | e.setAudioMixingPosition(0.5)),
              {}),
    Operation("remove views",
              CALL(e.removeLocalView() | e.removeLiveMixView() | e.removeLiveMixInnerCdnStreamView()), {}),
    OP(startEchoTest, (a.n), {kSdk}),
    OP(stopEchoTest, (), {kSdk}),
    OP(preconnectToMediaServer, (), {kSdk}),

    // Views
    OP(setLocalViewWithViewDelegate, (a.view), {kView}, {}, THEN(m.views["camera"] = a.view)),
    OP(setRemoteViewWithViewDelegate, (a.view, a.user), {kUser}, {}, THEN(m.keep("view " + a.user, a.view))),
    OP(removeRemoteView, (a.user), {{kBadParameter, IF(m.strong.contains("view " + a.user))}}),
    OP(setLiveMixViewWithViewDelegate, (a.view), {kView}, {}, THEN(m.views["mix"] = a.view)),
    OP(setLiveMixInnerCdnStreamViewDelegate, (a.view), {kSdk, kView}, {}, THEN(m.views["cdn"] = a.view)),

    // Devices and muting
    OP(enableCamera, (a.flag), {}, "onCameraEnabled"),
    OP(enableCamera, (a.flag, a.type), {{kBadParameter, IF(a.type >= 0)}}, "onCameraEnabled"),
    OP(switchCamera, (), {}, "onCameraSwitched"),
    OP(switchToCamera, (a.n), {kNever}),
    OP(muteRemoteStream, (a.user, a.type, a.flag), {kJoined, kUser, {kNoStream, kNormalOfUser.holds}}),
    OP(muteAllRemoteAudioStreams, (a.flag), {kRoom}),
    OP(muteLiveMixStream, (a.type, a.flag), {kJoined, {kNoStream, IF(has(m.room.lock()->live, a.type))}}),

    // Live mix and CDN
    OP(setLiveMixLayoutMode, (a.n), {kJoined, kLive}, "onLiveMixLayoutModeSet"),
    OP(setLiveMixRenderMode, (a.n), {kJoined, kLive}, "onLiveMixRenderModeSet"),
    OP(setLiveMixBackgroundColor, (a.flag ? 0xFFFFFF : 0x1000000), {kJoined, kLive, kFlag},
       "onLiveMixBackgroundColorSet"),
    OP(setLiveMixBackgroundColorWithRed, (0, 9, a.flag ? 255 : 256), {kJoined, kLive, kFlag},
       "onLiveMixBackgroundColorSet"),
    OP(setLiveMixCustomLayouts, ({a.users.begin(), a.users.end()}), {kJoined, kLive, kUsers},
       "onLiveMixCustomLayoutsSet"),
    OP(setLiveMixCustomAudios, (a.users), {kJoined, kLive, kUsers}, "onLiveMixCustomAudiosSet"),
    OP(setLiveMixAudioBitrate, (a.n), {kJoined, kLive}, "onLiveMixAudioBitrateSet"),
    OP(setLiveMixVideoBitrate, (a.n), {kJoined, kLive}, "onLiveMixVideoBitrateSet"),
    OP(setLiveMixVideoBitrate, (a.n, a.flag), {kJoined, kLive}, "onLiveMixVideoBitrateSet"),
    OP(setLiveMixVideoResolution, (a.n, 9), {kJoined, kLive}, "onLiveMixVideoResolutionSet"),
    OP(setLiveMixVideoResolution, (a.n, 9, a.flag), {kJoined, kLive}, "onLiveMixVideoResolutionSet"),
    OP(setLiveMixVideoFps, (a.n), {kJoined, kLive}, "onLiveMixVideoFpsSet"),
    OP(setLiveMixVideoFps, (a.n, a.flag), {kJoined, kLive}, "onLiveMixVideoFpsSet"),
    OP(addLiveCdn, (a.user), {kJoined, kLive}, "onLiveCdnAdded"),
    OP(removeLiveCdn, (a.user), {kJoined, kLive}, "onLiveCdnRemoved"),
    OP(enableLiveMixInnerCdnStream, (a.flag), {kJoined, kLive}, "onLiveMixInnerCdnStreamEnabled"),
    OP(subscribeLiveMixInnerCdnStream, (), {kJoined, kCdn}, "onLiveMixInnerCdnStreamSubscribed"),
    OP(unsubscribeLiveMixInnerCdnStream, (), {kJoined, kCdn}, "onLiveMixInnerCdnStreamUnsubscribed"),
    OP(setLocalLiveMixInnerCdnVideoResolution, (a.flag ? 480 : 1, 640), {kSdk, kJoined, kCdn, kFlag},
       "onLocalLiveMixInnerCdnVideoResolutionSet"),
    OP(setLocalLiveMixInnerCdnVideoFps, (a.n), {kSdk, kJoined, kCdn}, "onLocalLiveMixInnerCdnVideoFpsSet"),
    OP(muteLiveMixInnerCdnStream, (a.flag), {kSdk, kJoined, kCdn}),

    // Audio effects and mixing
    OP(createAudioEffect, (a.text, a.n), {kJoined, kText, kNoEffect}, "onAudioEffectCreated",
       THEN(m.effects[a.n] = *a.text)),
    OP(releaseAudioEffect, (a.n), {kJoined, kEffect}, {}, THEN(m.effects.erase(a.n))),
    OP(playAudioEffect, (a.n, 50, 1), {kJoined, kEffect}),
    OP(pauseAudioEffect, (a.n), {kJoined, kEffect}),
    OP(resumeAudioEffect, (a.n), {kJoined, kEffect}),
    OP(stopAudioEffect, (a.n), {kJoined, kEffect}),
    OP(adjustAudioEffect, (a.n, 50), {kJoined, kEffect}),
    OP(getAudioEffectVolume, (a.n), {kJoined, kEffect}),
    OP(pauseAllAudioEffects, (), {kJoined}),
    OP(resumeAllAudioEffects, (), {kJoined}),
    OP(stopAllAudioEffects, (), {kJoined}),
    OP(adjustAllAudioEffectsVolume, (50), {kJoined}),
    OP(getAllAudioEffectsVolume, (), {kJoined}),
    OP(startAudioMixing, (a.text, a.n, true, 1), {}, "onAudioMixingStarted",
       THEN(m.file = a.text.has_value())),
    OP(startAudioMixing, (a.text, a.n, true, 1, 0.5), {}, "onAudioMixingStarted",
       THEN(m.file = a.text.has_value())),
    OP(adjustAudioMixingVolume, (a.flag ? 100 : 101), {kFlag}),
    OP(adjustAudioMixingPlaybackVolume, (a.flag ? 100 : 101), {kFlag}),
    OP(adjustAudioMixingPublishVolume, (a.flag ? 100 : 101), {kFlag}),
    OP(pauseAudioMixing, (), {}, "onAudioMixingPaused"),
    OP(resumeAudioMixing, (), {}, "onAudioMixingResume"),
    OP(stopAudioMixing, (), {}, "onAudioMixingStopped"),
    OP(getAudioMixingDuration, (), {{kBadParameter, IF(m.file)}}),

    // Custom streams
    OP(createCustomStreamFromFile, (a.text, a.tag, true, true),
       {kSetUp, kText, {LMRTCWrapperCodeCreateCustomStreamError, IF(a.file != nullptr)}}, {},
       THEN(m.keep("tag " + a.tag, a.file))),
    OP(setCustomStreamVideoConfig, (a.config.get(), a.tag), {kSetUp, kConfig, kTag}),
    OP(muteLocalCustomStream, (a.tag, a.flag), {kSetUp, kTag}),
    OP(setLocalCustomStreamViewWithViewDelegate, (a.view, a.tag), {kView, kTag}, {},
       THEN(m.keep("local " + a.tag, a.view))),
    OP(removeLocalCustomStreamView, (a.tag), {{kBadParameter, IF(m.strong.contains("local " + a.tag))}}),
    OP(publishCustomStream, (a.tag), {kSetUp, kTag, kPublisher}, "onCustomStreamPublished", nullptr,
       WHEN(code == 0 && a.role == 1, m.live = a.live), oneOnFailure),
    OP(unpublishCustomStream, (a.tag), {kSetUp, kTag, kPublisher}, "onCustomStreamUnpublished"),
    OP(muteRemoteCustomStream, (a.user, a.tag, a.type, a.flag), {kSetUp, kUser, kTagged}),
    OP(setRemoteCustomStreamViewWithViewDelegate, (a.view, a.user, a.tag),
       {kSetUp, kView, kUser, {kNoStream, IF(has(anyUser(m, a.user), a.tag, 1, true))}}, {},
       THEN(m.keep("custom " + customOf(a), a.view))),
    OP(removeRemoteCustomStreamView, (a.user, a.tag),
       {kSetUp, {kBadParameter, IF(m.strong.contains("custom " + customOf(a)))}}),
    OP(subscribeCustomStream, (a.user, a.tag, a.type, a.flag), {kSetUp, kUser, kTagged},
       "onCustomStreamSubscribed"),
    OP(unsubscribeCustomStream, (a.user, a.tag, a.type), {kSetUp, kUser, kTagged},
       "onCustomStreamUnsubscribed"),

    // Sub-rooms
    OP(requestJoinSubRoom, (a.room, a.user, a.flag, "x"), {kSetUp}, "onJoinSubRoomRequested"),
    OP(cancelJoinSubRoomRequest, (a.room, a.user, "x"), {kSetUp}, "onJoinSubRoomRequestCanceled"),
    OP(responseJoinSubRoomRequest, (a.room, a.user, a.flag, a.flag, "x"), {kSetUp},
       "onJoinSubRoomRequestResponded"),
    OP(joinSubRoom, (a.room), {kSdk}, "onSubRoomJoined", nullptr,
       WHEN(code == 0 && a.sub, m.subs[a.room] = a.sub)),
    OP(leaveSubRoom, (a.room, a.flag), {kSdk}, "onSubRoomLeft", nullptr, THEN(m.subs.erase(a.room))),
    Operation("didFinishOtherRoom", CALL(finishSubRoom(e, a.room)), {kSdk}, "onSubRoomLeft",
              THEN(m.subs.erase(a.room)), THEN(m.subs.erase(a.room))),

    // Diagnostics
    OP(setWatermark, (a.flag ? kPicture : nullptr, 0, 0, 1), {kSdk, kFlag}, "onWatermarkSet"),
    OP(removeWatermark, (), {kSdk}, "onWatermarkRemoved"),
    OP(startNetworkProbe, (a.probe), {kSdk, {kBadParameter, IF(a.probe != nullptr)}}, "onNetworkProbeStarted",
       THEN(m.observers["probe"] = a.probe)),
    OP(stopNetworkProbe, (), {kSdk}, "onNetworkProbeStopped"),
    OP(enableSei, (a.flag), {kSdk, kJoined}, "onSeiEnabled"),
    OP(sendSei, ("x"), {kSdk, kJoined}),
    OP(setStatsDelegate, (a.stats), {kSdk}, {}, THEN(m.observers["stats"] = a.stats)),

    // Observers
    OP(setLocalAudioCapturedDelegate, (a.audio), {kSdk}, {}, THEN(m.observers["captured"] = a.audio)),
    OP(setLocalAudioMixedDelegate, (a.audio), {kSdk}, {}, THEN(m.observers["sent"] = a.audio)),
    OP(setRemoteAudioMixedDelegate, (a.audio), {kRoom}, {}, THEN(m.observers["received"] = a.audio)),
    OP(setLocalVideoProcessedDelegate, (a.sample), {kSdk}, {}, THEN(m.observers["processed"] = a.sample)),
    OP(setRemoteAudioReceivedDelegate, (a.audio, a.user), {kJoined, kMainUser}, {},
       WHEN(code == 0 && hasNormal(mainUser(m, a.user), 0), m.keep("sound " + a.user, a.audio))),
    OP(setRemoteVideoProcessedDelegate, (a.pixel, a.user), {kJoined, kMainUser}, {},
       WHEN(code == 0 && hasNormal(mainUser(m, a.user), 1), m.keep("pictures " + a.user, a.pixel))),
    OP(setLocalCustomVideoProcessedDelegate, (a.sample, a.tag), {kTag}, {},
       THEN(m.keep("own " + a.tag, a.sample))),
    OP(setRemoteCustomVideoProcessedDelegate, (a.pixel, a.user, a.tag),
       {kSetUp, kMainUser, {kNoStream, IF(has(mainUser(m, a.user), a.tag, 1, true))}}, {},
       WHEN(code != kNotJoined, m.keep("pictures " + customOf(a), a.pixel))),
    OP(setRemoteCustomAudioReceivedDelegate, (a.audio, a.user, a.tag),
       {kSetUp, kMainUser, {kNoStream, IF(has(mainUser(m, a.user), a.tag, 0, true))}}, {},
       WHEN(code != kNotJoined, m.keep("sound " + customOf(a), a.audio))),
  };
  return all;
}

}  // namespace lumo::stress
