#include "tests/stress/World.h"

// Everything that the SDK does by itself: its events, in any order, and its frames.

namespace lumo::stress {
namespace {

/// What an event may be about. User and stream are of the room or of the other room.
struct Scene {
  Worker& worker;
  fake::Engine& engine;
  fake::Mixer& mixer;
  std::shared_ptr<fake::Room> room;
  std::shared_ptr<fake::OtherRoom> sub;
  std::shared_ptr<fake::FileOutput> file;
  std::shared_ptr<LMRTCRemoteUser> user;
  std::shared_ptr<LMRTCInputStream> stream;
  std::string id;
  Int n;
  bool flag;
};

struct Event {
  std::string_view name;
  void (*fire)(const Scene& scene);
};

#define EVENT(source, needed, call) \
  Event {                           \
#call, [](const Scene& s) { \
      const auto listener = s.source; \
      if (listener && (needed)) listener->call; \
    }       \
  }
#define OF_ENGINE(call) EVENT(engine.events(), true, call)
#define OF_ROOM(call) EVENT(room ? s.room->events() : nullptr, s.user&& s.stream, call)
#define OF_SUB(call) EVENT(sub ? s.sub->events() : nullptr, s.user&& s.stream, call)
#define OF_FILE(call) EVENT(file ? s.file->events() : nullptr, true, call)
#define OF_MIXER(call) EVENT(mixer.events(), true, call)
#define OF_REPORT(call) EVENT(engine.statusDelegate.get().lock(), s.stream, call)
#define OF_PROBE(call) EVENT(engine.probeDelegate.get().lock(), true, call)

LMRTCStatusForm form(const Scene& s) {
  LMRTCStatusForm form;
  for (const Int kind : {0, 1, 2}) {
    for (const auto* type : {LumoRTCMediaTypeAudio, LumoRTCMediaTypeVideo}) {
      form.recvStats.push_back({.mediaType = type,
                                .codecName = "opus",
                                .mediaStreamType = kind,
                                .streamId = s.stream->streamId(),
                                .userId = s.stream->userId()});
    }
  }
  form.sendStats = form.recvStats;
  return form;
}
std::vector<LMRTCLiveAudioStatus> levels(const Scene& s) {
  std::vector<LMRTCLiveAudioStatus> all(1);
  all.front().updateUserId(s.stream->userId(), s.stream->streamId());
  return all;
}

void frames(const Scene& s) {
  const auto play = [](const LMRTCAudioDataCallback& hook) {
    if (hook) hook({});
  };
  const auto show = [](const auto& hook) {
    if (hook) hook(std::make_shared<CMSampleBuffer>());
  };
  switch (s.n) {
    case 0:
      return play(s.engine.microphone->recorded.get());
    case 1:
      return play(s.engine.microphone->willSend.get());
    case 2:
      return show(s.engine.camera->willSend.get());
    case 3:
      if (s.room) play(s.room->received.get());
      break;
    case 4:
      if (s.file) show(s.file->willSend.get());
      break;
    default:
      if (const auto audio = std::dynamic_pointer_cast<fake::AudioInput>(s.stream))
        play(audio->audioData.get());
      const auto video = std::dynamic_pointer_cast<fake::VideoInput>(s.stream);
      if (!video) return;
      play(video->audioData.get());
      if (const auto listener = video->events()) listener->willRenderCVPixelBufferRef(nullptr, video);
  }
}

constexpr std::array kEvents = {
    OF_ENGINE(didKicked("r1", 3)),
    OF_ENGINE(didRequestJoinOtherRoom("r2", s.id, "x")),
    OF_ENGINE(didCancelRequestOtherRoom("r2", s.id, "x")),
    OF_ENGINE(didResponseJoinOtherRoom("r1", s.flag ? "me" : "u1", "r2", s.id, s.n == 0, "x")),
    OF_ROOM(didJoinUser(s.user)),
    OF_ROOM(didLeaveUser(s.user)),
    OF_ROOM(didOfflineUser(s.user)),
    OF_ROOM(didReportFirstFrame(s.stream, s.n)),
    OF_ROOM(didPublishStreams(s.user->remoteStreams())),
    OF_ROOM(didUnpublishStreams(s.user->remoteStreams())),
    OF_ROOM(didPublishLiveStreams(s.room->live)),
    OF_ROOM(didUnpublishLiveStreams(s.room->live)),
    OF_ROOM(didPublishCDNStream(s.room->cdn)),
    OF_ROOM(didUnpublishCDNStream(s.room->cdn)),
    OF_ROOM(didAudioMute(s.stream, s.flag)),
    OF_ROOM(didVideoEnable(s.stream, s.flag)),
    OF_ROOM(didReceiveMessage("x")),
    OF_ROOM(didSwitchRoleWithUser(s.user, s.n)),
    OF_ROOM(didReceiveSEI("x", s.id)),
    OF_ROOM(didReceiveLiveStreamSEI("x")),
    OF_SUB(didJoinUser(s.sub, s.user)),
    OF_SUB(didLeaveUser(s.sub, s.user)),
    OF_SUB(didOfflineUser(s.sub, s.user)),
    OF_SUB(didReportFirstFrame(s.sub, s.stream, s.n)),
    OF_SUB(didPublishStreams(s.sub, s.user->remoteStreams())),
    OF_SUB(didUnpublishStreams(s.sub, s.user->remoteStreams())),
    OF_SUB(didAudioMute(s.sub, s.stream, s.flag)),
    OF_SUB(didVideoEnable(s.sub, s.stream, s.flag)),
    OF_SUB(didReceiveMessage(s.sub, "x")),
    OF_SUB(didReceiveSEI(s.sub, "x", s.id)),
    OF_FILE(fileVideoOutputStreamDidStartRead(s.file)),
    OF_FILE(fileVideoOutputStreamDidReadCompleted(s.file)),
    OF_FILE(fileVideoOutputStreamDidFailed(s.file)),
    OF_MIXER(didReportPlayingProgress(0.5F)),
    OF_MIXER(didAudioMixingStateChanged(2, 4)),
    OF_REPORT(didReportStatusForm(form(s))),
    OF_REPORT(didReportLiveAudioStatus(levels(s))),
    OF_PROBE(didReportProbeForms({{1, s.n, {}}, {2, s.n, {}}})),
    OF_PROBE(didRTCProbeComplete()),
    OF_PROBE(didRTCProbeInterrput(7)),
    Event{"frames", frames},
    Event{"frames", frames},
    Event{"frames", frames},
    Event{"frames", frames},
};

}  // namespace

void fireEvent(Worker& worker) {
  World& world = worker.world();
  Scene s{worker,
          *world.sdk->engine,
          *world.sdk->mixer,
          worker.oneOf(world.rooms),
          worker.oneOf(world.subs),
          worker.oneOf(world.files),
          {},
          {},
          worker.chance(2) ? "u1" : "me",
          worker.below(8),
          worker.chance(2)};
  if (s.room && (!s.sub || s.flag)) {
    s.user = worker.oneOf(s.room->users);
  } else if (s.sub) {
    s.user = worker.oneOf(s.sub->users);
  }
  if (s.user) s.stream = worker.oneOf(s.user->remoteStreams());
  const auto& event = kEvents[static_cast<std::size_t>(worker.below(std::ssize(kEvents)))];
  worker.note(event.name);
  event.fire(s);
}

}  // namespace lumo::stress
