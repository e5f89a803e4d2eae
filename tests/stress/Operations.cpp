#include <algorithm>

#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "tests/stress/World.h"

// All operations of the engine, each with what it depends on and what it changes.

namespace lumo::stress {
namespace {

using Engine = LMRTCIWEngine;
using Stream = std::shared_ptr<LMRTCInputStream>;

constexpr LMRTCIWAudioConfig kAudioConfig;
const std::shared_ptr<const UIImage> kPicture = std::make_shared<UIImage>();

#define CALL(...) [](Engine& e, [[maybe_unused]] const Args& a) -> Int { return __VA_ARGS__; }
#define OP(name, arguments, ...) Operation(#name, CALL(e.name arguments), __VA_ARGS__)
#define RUN(...) \
  [](Engine& e, [[maybe_unused]] const Args& a) -> Int { return static_cast<void>(__VA_ARGS__), 0; }
#define IF(...) \
  []([[maybe_unused]] const Model& m, [[maybe_unused]] const Args& a) -> bool { return __VA_ARGS__; }
#define THEN(...) [](Model& m, [[maybe_unused]] const Args& a) { __VA_ARGS__; }

std::shared_ptr<LMRTCRemoteUser> mainUser(const Model& m, const Args& a) {
  const auto room = m.room.lock();
  return room ? room->getRemoteUser(a.user) : nullptr;
}
std::shared_ptr<LMRTCRemoteUser> anyUser(const Model& m, const Args& a) {
  auto user = mainUser(m, a);
  for (const auto& [id, room] : m.subs) {
    if (!user) user = room->getRemoteUser(a.user);
  }
  return user;
}
bool isOf(const Stream& stream, Int type) { return type == 2 || stream->mediaType() == type; }
/// Whether the user, if there is one, has a stream of the kind and media type.
bool hasNormal(const std::shared_ptr<LMRTCRemoteUser>& user, Int type) {
  return user && std::ranges::any_of(user->remoteStreams(), [type](const Stream& stream) {
           return stream->mediaStreamType() == LMRTCMediaStreamTypeNormal && isOf(stream, type);
         });
}
bool hasTagged(const std::shared_ptr<LMRTCRemoteUser>& user, const Args& a, Int type, bool video) {
  return user && std::ranges::any_of(user->remoteStreams(), [&](const Stream& stream) {
           return stream->tag() == a.tag && isOf(stream, type) &&
                  (!video || std::dynamic_pointer_cast<LMRTCVideoInputStream>(stream));
         });
}
bool hasLive(const Model& m, Int type) {
  const auto room = m.room.lock();
  return room && std::ranges::any_of(room->live, [type](const Stream& stream) { return isOf(stream, type); });
}
bool hasNormalOfAny(const Model& m, const Args& a) {
  Args one = a;
  return std::ranges::any_of(a.users, [&](const std::string& id) {
    one.user = id;
    return hasNormal(anyUser(m, one), a.type);
  });
}
std::string effectOf(const Args& a) { return "effect " + std::to_string(a.n); }
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
const Check kMainUser = {kNobody, IF(mainUser(m, a) != nullptr)};
const Check kUser = {kNobody, IF(anyUser(m, a) != nullptr)};
const Check kTag = {kNoStream, IF(m.strong.contains("tag " + a.tag))};
const Check kCdn = {kNoStream, IF(m.room.lock()->cdn != nullptr)};
const Check kTagged = {kNoStream, IF(hasTagged(anyUser(m, a), a, a.type, false))};
const Check kNormalOfUser = {kBadParameter, IF(hasNormal(anyUser(m, a), a.type))};
const Check kNormal = {kBadParameter, IF(hasNormalOfAny(m, a))};
const Check kLiveStream = {kBadParameter, IF(hasLive(m, a.type == 0 || a.type == 1 ? a.type : 2))};
const Check kDefault = {kBadParameter, IF(!m.destroyed && a.type >= 0 && a.type <= 2)};
const Check kPublisher = {kBadParameter, IF(m.roleHeld() == 0 || m.roleHeld() == 1)};
const Check kEffect = {kBadParameter, IF(m.strong.contains(effectOf(a)))};
const Check kNoEffect = {kBadParameter, IF(!m.strong.contains(effectOf(a)))};
const Check kNever = {kNotSupported, IF(a.n < 0)};

/// One of the codes of calls that depend on the same.
Int oneOf(const Args& a, std::initializer_list<Int> codes) {
  return codes.begin()[static_cast<std::size_t>(a.seed) % codes.size()];
}

std::size_t perUser(const Args& a, Int) { return a.users.size(); }
std::size_t oneOnFailure(const Args&, Int code) { return code == 0 ? 0 : 1; }
std::size_t unlessKicked(const Args&, Int code) { return code == fake::LocalUser::kKicked ? 0 : 1; }

// What completions change.
void keepLive(Model& m, bool kept) {
  if (!m.destroyed) m.live = kept;
}
void published(Model& m, const Args& a, Int) {
  if (a.role == 1) keepLive(m, a.live);
}
void customPublished(Model& m, const Args& a, Int code) {
  if (a.role == 1 && code == 0) keepLive(m, a.live);
}
void roleSwitched(Model& m, const Args& a, Int code) {
  if (code == fake::LocalUser::kKicked) m.setup = m.live = false;
  if (code != 0 || m.destroyed) return;
  m.live = a.type == 1 && a.live;
  m.role = a.type;
}
void joined(Model& m, const Args& a, Int code) {
  if (code == 0 && !m.destroyed && a.joined.lock()) m.room = a.joined;
}
void subRoomJoined(Model& m, const Args& a, Int code) {
  if (code == 0 && !m.destroyed && a.sub) m.subs[a.room] = a.sub;
}
void subRoomLeft(Model& m, const Args& a, Int code) {
  if (code == 0) m.subs.erase(a.room);
}

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = {
    // Room and media
    OP(joinRoom, (a.room, a.setup), {{kBadParameter, IF(a.setup != nullptr)}}, "onRoomJoined",
       THEN(m.setup = true; m.role = a.setup->role), joined),
    OP(leaveRoom, (), {}, "onRoomLeft"),
    OP(setAudioConfig, (a.config ? &kAudioConfig : nullptr), {kConfig}),
    Operation("setVideoConfig",
              CALL(a.flag ? e.setVideoConfig(a.config.get()) : e.setVideoConfig(a.config.get(), a.other)),
              {kConfig}),
    OP(publish, (a.type), {kSetUp, kDefault, kPublisher}, "onPublished", nullptr, published),
    OP(unpublish, (a.type), {kJoined, kDefault, kPublisher}, "onUnpublished"),
    Operation("subscribe", CALL(a.flag ? e.subscribe(a.text, a.type) : e.subscribe(a.text, a.type, a.other)),
              {kText, kJoined, kNormalOfUser}, "onSubscribed"),
    Operation("subscribeWithUserIds",
              CALL(a.flag ? e.subscribeWithUserIds(a.users, a.type)
                          : e.subscribeWithUserIds(a.users, a.type, a.other)),
              {kJoined, kNormal}, "onSubscribed", nullptr, nullptr, perUser),
    OP(unsubscribe, (a.text, a.type), {kText, kJoined, kNormalOfUser}, "onUnsubscribed"),
    OP(unsubscribeWithUserIds, (a.users, a.type), {kJoined, {kNotJoined, kUsers.holds}, kNormal},
       "onUnsubscribed", nullptr, nullptr, perUser),
    Operation("subscribeLiveMix",
              CALL(a.flag ? e.subscribeLiveMix(a.type) : e.subscribeLiveMix(a.type, a.other)),
              {kJoined, kLiveStream}, "onLiveMixSubscribed"),
    OP(unsubscribeLiveMix, (a.type), {kJoined, kLiveStream}, "onLiveMixUnsubscribed"),
    OP(switchLiveRole, (a.type),
       {kSdk,
        kSetUp,
        {-21, IF(m.role != 0)},
        {kBadParameter, IF(m.role != a.type && (a.type == 1 || a.type == 2))}},
       "onLiveRoleSwitched", nullptr, roleSwitched, unlessKicked),

    // Several that are alike
    Operation("questions",
              RUN(e.getRemoteUser(a.user), e.getSessionId(), e.whichCamera(), e.isCameraFocusSupported(),
                  e.isCameraExposurePositionSupported(), e.getAudioMixingPlaybackVolume(),
                  e.getAudioMixingPublishVolume(), e.getAudioMixingPosition(),
                  e.getCustomStreams(e.getRemoteUser(a.user), a.tag, a.type), e.reset()),
              {}),
    Operation("devices",
              CALL(e.enableMicrophone(a.flag) | e.enableSpeaker(a.flag) | e.adjustLocalVolume(a.n) |
                   e.adjustRemoteVolume(a.n) | e.setCameraFocusPositionInPreview({}) |
                   e.setCameraExposurePositionInPreview({}) | e.setCameraCaptureOrientation(a.n) |
                   e.muteLocalStream(a.type, a.flag) | e.setAudioMixingPosition(0.5)),
              {}),
    Operation("remove views",
              CALL(e.removeLocalView() | e.removeLiveMixView() | e.removeLiveMixInnerCdnStreamView()), {}),
    Operation("one audio effect",
              CALL(oneOf(a, {e.playAudioEffect(a.n, 50, 1), e.pauseAudioEffect(a.n), e.resumeAudioEffect(a.n),
                             e.stopAudioEffect(a.n), e.adjustAudioEffect(a.n, 50),
                             std::min<Int>(e.getAudioEffectVolume(a.n), 0)})),
              {kJoined, kEffect}),
    Operation(
        "all audio effects",
        CALL(oneOf(a, {e.pauseAllAudioEffects(), e.resumeAllAudioEffects(), e.stopAllAudioEffects(),
                       e.adjustAllAudioEffectsVolume(50), std::min<Int>(e.getAllAudioEffectsVolume(), 0)})),
        {kJoined}),
    Operation("volume of mixing",
              CALL(oneOf(a, {e.adjustAudioMixingVolume(a.flag ? 100 : 101),
                             e.adjustAudioMixingPlaybackVolume(a.flag ? 100 : 101),
                             e.adjustAudioMixingPublishVolume(a.flag ? 100 : 101)})),
              {kFlag}),
    Operation("tests", CALL(oneOf(a, {e.startEchoTest(a.n), e.stopEchoTest(), e.preconnectToMediaServer()})),
              {kSdk}),

    // Views
    OP(setLocalViewWithViewDelegate, (a.view), {kView}, {}, THEN(m.weak["camera"] = a.view)),
    OP(setRemoteViewWithViewDelegate, (a.view, a.user), {kUser}, {}, THEN(m.keep("view " + a.user, a.view))),
    OP(removeRemoteView, (a.user), {{kBadParameter, IF(m.strong.contains("view " + a.user))}}),
    OP(setLiveMixViewWithViewDelegate, (a.view), {kView}, {}, THEN(m.weak["mix"] = a.view)),
    OP(setLiveMixInnerCdnStreamViewDelegate, (a.view), {kSdk, kView}, {}, THEN(m.weak["cdn"] = a.view)),

    // Devices and muting
    OP(enableCamera, (a.flag), {}, "onCameraEnabled"),
    OP(enableCamera, (a.flag, a.type), {{kBadParameter, IF(a.type >= 0)}}, "onCameraEnabled"),
    OP(switchCamera, (), {}, "onCameraSwitched"),
    OP(switchToCamera, (a.n), {kNever}),
    OP(muteRemoteStream, (a.user, a.type, a.flag),
       {kJoined, kUser, {kNoStream, IF(hasNormal(anyUser(m, a), a.type))}}),
    OP(muteAllRemoteAudioStreams, (a.flag), {kRoom}),
    OP(muteLiveMixStream, (a.type, a.flag), {kJoined, {kNoStream, IF(hasLive(m, a.type))}}),

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
    Operation("setLiveMixVideoBitrate",
              CALL(a.flag ? e.setLiveMixVideoBitrate(a.n) : e.setLiveMixVideoBitrate(a.n, a.other)),
              {kJoined, kLive}, "onLiveMixVideoBitrateSet"),
    Operation(
        "setLiveMixVideoResolution",
        CALL(a.flag ? e.setLiveMixVideoResolution(a.n, 9) : e.setLiveMixVideoResolution(a.n, 9, a.other)),
        {kJoined, kLive}, "onLiveMixVideoResolutionSet"),
    Operation("setLiveMixVideoFps",
              CALL(a.flag ? e.setLiveMixVideoFps(a.n) : e.setLiveMixVideoFps(a.n, a.other)), {kJoined, kLive},
              "onLiveMixVideoFpsSet"),
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
       THEN(m.strong[effectOf(a)] = 1)),
    OP(releaseAudioEffect, (a.n), {kJoined, kEffect}, {}, THEN(m.strong.erase(effectOf(a)))),
    Operation("startAudioMixing",
              CALL(a.flag ? e.startAudioMixing(a.text, a.n, true, 1)
                          : e.startAudioMixing(a.text, a.n, true, 1, 0.5)),
              {}, "onAudioMixingStarted", THEN(m.file = a.text.has_value())),
    OP(pauseAudioMixing, (), {}, "onAudioMixingPaused"),
    OP(resumeAudioMixing, (), {}, "onAudioMixingResume"),
    OP(stopAudioMixing, (), {}, "onAudioMixingStopped"),
    Operation("getAudioMixingDuration", CALL(std::min<Int>(e.getAudioMixingDuration(), 0)),
              {{kBadParameter, IF(m.file)}}),

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
       customPublished, oneOnFailure),
    OP(unpublishCustomStream, (a.tag), {kSetUp, kTag, kPublisher}, "onCustomStreamUnpublished"),
    OP(muteRemoteCustomStream, (a.user, a.tag, a.type, a.flag), {kSetUp, kUser, kTagged}),
    OP(setRemoteCustomStreamViewWithViewDelegate, (a.view, a.user, a.tag),
       {kSetUp, kView, kUser, {kNoStream, IF(hasTagged(anyUser(m, a), a, 1, true))}}, {},
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
    OP(responseJoinSubRoomRequest, (a.room, a.user, a.flag, a.other, "x"), {kSetUp},
       "onJoinSubRoomRequestResponded"),
    OP(joinSubRoom, (a.room), {kSdk}, "onSubRoomJoined", nullptr, subRoomJoined),
    OP(leaveSubRoom, (a.room, a.flag), {kSdk}, "onSubRoomLeft", nullptr, subRoomLeft),

    // Diagnostics
    OP(setWatermark, (a.flag ? kPicture : nullptr, 0, 0, 1), {kSdk, kFlag}, "onWatermarkSet"),
    OP(removeWatermark, (), {kSdk}, "onWatermarkRemoved"),
    OP(startNetworkProbe, (a.probe), {kSdk, {kBadParameter, IF(a.probe != nullptr)}}, "onNetworkProbeStarted",
       THEN(m.weak["probe"] = a.probe)),
    OP(stopNetworkProbe, (), {kSdk}, "onNetworkProbeStopped"),
    OP(enableSei, (a.flag), {kSdk, kJoined}, "onSeiEnabled"),
    OP(sendSei, ("x"), {kSdk, kJoined}),
    OP(setStatsDelegate, (a.stats), {kSdk}, {}, THEN(m.weak["stats"] = a.stats)),

    // Observers
    OP(setLocalAudioCapturedDelegate, (a.audio), {kSdk}, {}, THEN(m.weak["captured"] = a.audio)),
    OP(setLocalAudioMixedDelegate, (a.audio), {kSdk}, {}, THEN(m.weak["sent"] = a.audio)),
    OP(setRemoteAudioMixedDelegate, (a.audio), {kRoom}, {}, THEN(m.weak["received"] = a.audio)),
    OP(setLocalVideoProcessedDelegate, (a.sample), {kSdk}, {}, THEN(m.weak["processed"] = a.sample)),
    OP(setRemoteAudioReceivedDelegate, (a.audio, a.user), {kJoined, kMainUser}, {},
       THEN(if (hasNormal(mainUser(m, a), 0)) m.keep("sound " + a.user, a.audio))),
    OP(setRemoteVideoProcessedDelegate, (a.pixel, a.user), {kJoined, kMainUser}, {},
       THEN(if (hasNormal(mainUser(m, a), 1)) m.keep("pictures " + a.user, a.pixel))),
    OP(setLocalCustomVideoProcessedDelegate, (a.sample, a.tag), {kTag}, {},
       THEN(m.keep("own " + a.tag, a.sample))),
    OP(setRemoteCustomVideoProcessedDelegate, (a.pixel, a.user, a.tag),
       {kSetUp, kMainUser, {kNoStream, IF(hasTagged(mainUser(m, a), a, 1, true))}}, {},
       THEN(m.keep("pictures " + customOf(a), a.pixel)), nullptr, nullptr, true),
    OP(setRemoteCustomAudioReceivedDelegate, (a.audio, a.user, a.tag),
       {kSetUp, kMainUser, {kNoStream, IF(hasTagged(mainUser(m, a), a, 0, true))}}, {},
       THEN(m.keep("sound " + customOf(a), a.audio)), nullptr, nullptr, true),
  };
  return all;
}

}  // namespace lumo::stress
