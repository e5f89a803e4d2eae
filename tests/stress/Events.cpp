#include <algorithm>
#include <iterator>

#include "tests/stress/World.h"

// Everything that the SDK does by itself: its events, in any order, and its frames.

namespace lumo::stress {
namespace {

/// What an event may be about, and who is told. User and stream are of the room or of the other room.
struct Scene : World::Given {
  World& world;
  std::string id;
  Int n;
  bool flag;
  std::shared_ptr<LMRTCRemoteUser> user = {};
  std::shared_ptr<LMRTCInputStream> stream = {};

  auto ofEngine() const { return world.sdk->engine->events(); }
  auto ofRoom() const { return room && stream ? room->events() : nullptr; }
  auto ofSub() const { return sub && stream ? sub->events() : nullptr; }
  auto ofFile() const { return file ? file->events() : nullptr; }
  auto ofMixer() const { return world.sdk->mixer->events(); }
  auto ofReport() const { return stream ? world.sdk->engine->statusDelegate.get().lock() : nullptr; }
  auto ofProbe() const { return world.sdk->engine->probeDelegate.get().lock(); }
};

#define EVENT(listener, call)                                             \
  {                                                                       \
#call, [](const Scene& s) { if (const auto to = s.listener()) to->call; } \
  }

LMRTCStatusForm form(const Scene& s) {
  LMRTCStreamStatus status;
  status.mediaType = s.flag ? LumoRTCMediaTypeAudio : LumoRTCMediaTypeVideo;
  status.mediaStreamType = s.n % 3;
  status.streamId = s.stream->streamId();
  status.userId = s.stream->userId();
  LMRTCStatusForm form;
  form.sendStats = form.recvStats = {status};
  return form;
}
void dropRooms(const Scene& s) {
  if (s.n > 0) return;  // not often
  const std::lock_guard lock(s.world.mutex);
  s.world.given = {};
}

void frames(const Scene& s) {
  const auto play = [](const auto& hook) {
    if (const auto call = hook.get()) call({});
  };
  play(s.world.sdk->engine->microphone->recorded);
  play(s.world.sdk->engine->microphone->willSend);
  play(s.world.sdk->engine->camera->willSend);
  if (s.room) play(s.room->received);
  if (s.file) play(s.file->willSend);
  if (const auto audio = std::dynamic_pointer_cast<fake::AudioInput>(s.stream)) play(audio->audioData);
  const auto video = std::dynamic_pointer_cast<fake::VideoInput>(s.stream);
  if (!video) return;
  play(video->audioData);
  if (const auto listener = video->events()) listener->willRenderCVPixelBufferRef(nullptr, video);
}

const std::pair<std::string_view, void (*)(const Scene&)> kEvents[] = {
    EVENT(ofEngine, didKicked("r1", 3)),
    EVENT(ofEngine, didRequestJoinOtherRoom("r2", s.id, "x")),
    EVENT(ofEngine, didCancelRequestOtherRoom("r2", s.id, "x")),
    EVENT(ofEngine, didResponseJoinOtherRoom("r1", s.flag ? "me" : "u1", "r2", s.id, s.n == 0, "x")),
    EVENT(ofRoom, didJoinUser(s.user)),
    EVENT(ofRoom, didLeaveUser(s.user)),
    EVENT(ofRoom, didOfflineUser(s.user)),
    EVENT(ofRoom, didReportFirstFrame(s.stream, s.n)),
    EVENT(ofRoom, didPublishStreams(s.user->remoteStreams())),
    EVENT(ofRoom, didUnpublishStreams(s.user->remoteStreams())),
    EVENT(ofRoom, didPublishLiveStreams(s.room->live)),
    EVENT(ofRoom, didUnpublishLiveStreams(s.room->live)),
    EVENT(ofRoom, didPublishCDNStream(s.room->cdn)),
    EVENT(ofRoom, didUnpublishCDNStream(s.room->cdn)),
    EVENT(ofRoom, didAudioMute(s.stream, s.flag)),
    EVENT(ofRoom, didVideoEnable(s.stream, s.flag)),
    EVENT(ofRoom, didReceiveMessage("x")),
    EVENT(ofRoom, didSwitchRoleWithUser(s.user, s.n)),
    EVENT(ofRoom, didReceiveSEI("x", s.id)),
    EVENT(ofRoom, didReceiveLiveStreamSEI("x")),
    EVENT(ofSub, didJoinUser(s.sub, s.user)),
    EVENT(ofSub, didLeaveUser(s.sub, s.user)),
    EVENT(ofSub, didOfflineUser(s.sub, s.user)),
    EVENT(ofSub, didReportFirstFrame(s.sub, s.stream, s.n)),
    EVENT(ofSub, didPublishStreams(s.sub, s.user->remoteStreams())),
    EVENT(ofSub, didUnpublishStreams(s.sub, s.user->remoteStreams())),
    EVENT(ofSub, didAudioMute(s.sub, s.stream, s.flag)),
    EVENT(ofSub, didVideoEnable(s.sub, s.stream, s.flag)),
    EVENT(ofSub, didReceiveMessage(s.sub, "x")),
    EVENT(ofSub, didReceiveSEI(s.sub, "x", s.id)),
    EVENT(ofFile, fileVideoOutputStreamDidStartRead(s.file)),
    EVENT(ofFile, fileVideoOutputStreamDidReadCompleted(s.file)),
    EVENT(ofFile, fileVideoOutputStreamDidFailed(s.file)),
    EVENT(ofMixer, didReportPlayingProgress(0.5F)),
    EVENT(ofMixer, didAudioMixingStateChanged(2, 4)),
    EVENT(ofReport, didReportStatusForm(form(s))),
    EVENT(ofReport, didReportLiveAudioStatus({})),
    EVENT(ofProbe, didReportProbeForms({{1, s.n, {}}, {2, s.n, {}}})),
    EVENT(ofProbe, didRTCProbeComplete()),
    EVENT(ofProbe, didRTCProbeInterrput(7)),
    {"frames", frames},
    {"rooms go", dropRooms},
};

using Users = std::vector<std::shared_ptr<LMRTCRemoteUser>>;

Users newUsers(const fake::Shared& context, Random& random) {
  Users all;
  for (const auto* id : {"u1", "u2", "u3"}) {
    fake::RemoteUser::Streams streams;
    for (const auto* tag : {kLMRTCDefaultStreamTag, "t1", "t2"}) {
      const Int kind = tag != kLMRTCDefaultStreamTag, type = !random.chance(3), state = random.chance(2);
      if (random.chance(2))
        streams.push_back(std::make_shared<fake::AudioInput>(context, id, tag, 0, kind, state));
      if (random.chance(2))
        streams.push_back(std::make_shared<fake::VideoInput>(context, id, tag, type, kind, state));
    }
    if (!random.chance(4)) all.push_back(std::make_shared<fake::RemoteUser>(id, streams));
  }
  return all;
}

std::shared_ptr<fake::Room> newRoom(const fake::Shared& context, Random& random, const std::string& id) {
  const auto room = std::make_shared<fake::Room>(context, id);
  room->users = newUsers(context, random);
  if (random.chance(2)) room->others = {"r3", "r4"};
  for (const auto& user : newUsers(context, random))
    std::ranges::copy(user->remoteStreams(), std::back_inserter(room->live));
  if (random.chance(2)) room->cdn = std::make_shared<fake::CdnInput>(context, "cdn");
  if (random.chance(2)) room->me->nextLiveInfo.set(std::make_shared<fake::LiveInfo>(context));
  if (random.chance(8)) room->me = nullptr;
  return room;
}

}  // namespace

void fireEvent(World& world, Random& random, std::string_view& note) {
  std::unique_lock lock(world.mutex);
  Scene s{world.given, world, random.chance(2) ? "u1" : "me", static_cast<Int>(random.below(8)),
          random.chance(2)};
  lock.unlock();
  if (s.room) s.user = random.oneOf(s.room->users);
  if (s.sub && s.flag) s.user = random.oneOf(s.sub->users);
  if (s.user) s.stream = random.oneOf(s.user->remoteStreams());
  const auto& [name, fire] = kEvents[random.below(std::size(kEvents))];
  note = name;
  fire(s);
}

void offer(World& world, Random& random, std::string_view operation, Args& a) {
  const auto& [context, engine] = std::tie(world.sdk->context, world.sdk->engine);
  const std::lock_guard lock(world.mutex);
  auto& [room, sub, file] = world.given;
  if (operation == "joinRoom" && !random.chance(8)) {
    if (!room || random.chance(4)) room = newRoom(context, random, a.room);
    a.joined = room;
  } else if (operation == "joinSubRoom" && !random.chance(8)) {
    a.sub = sub = std::make_shared<fake::OtherRoom>(context, a.room);
    sub->users = newUsers(context, random);
  } else if (operation == "createCustomStreamFromFile" && !random.chance(4)) {
    a.file = file = std::make_shared<fake::FileOutput>(context, a.tag);
  }
  engine->nextRoom.set(a.joined.lock());
  engine->nextOtherRoom.set(a.sub);
  engine->nextFile.set(a.file);
}

}  // namespace lumo::stress
