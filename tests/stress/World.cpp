#include "tests/stress/World.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <thread>

#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"

namespace lumo::stress {
namespace {

constexpr std::array<const char*, 5> kUserIds = {"u1", "u2", "u3", "me", "nobody"};
constexpr Int kMostPending = 200;
constexpr int kDeepest = 3;

thread_local int callbacksOfThread = 0;
thread_local std::set<int> destroyedOnThread;  // lives; their callbacks on the thread have ended
thread_local Worker* workerOfThread = nullptr;

/// An object that any host has, and that may go at any moment.
template <class Object>
void replaceOne(std::vector<Object>& objects, std::size_t place, Object object) {
  if (objects.size() <= place) objects.resize(place + 1);
  objects[place] = std::move(object);
}

/// Sets a callback that tells the thread's worker.
template <class Result, class... Parameters>
void set(std::function<Result(Parameters...)>& field, Life& life, std::string name) {
  field = [&life, name = std::move(name)](const auto&... arguments) -> Result {
    workerOfThread->hear(life, name);
    if constexpr (!std::is_void_v<Result>) return std::get<0>(std::tie(arguments...));
  };
}
/// Sets all callbacks of an object of the host.
template <class Callbacks>
void setAll(Callbacks& host, Life& life) {
  const auto all = [&life](auto&... fields) { (set(fields, life, "a frame or figure"), ...); };
  if constexpr (std::is_same_v<Callbacks, LMRTCIWEngineDelegate>) {
    forEachCallback(host, [&life](const std::string& name, auto& field) { set(field, life, name); });
  } else if constexpr (std::is_same_v<Callbacks, LMRTCIWStatsDelegate>) {
    auto& [net, la, lv, lca, lcv, ra, rv, rca, rcv, ma, mv, mm, mc] = host;
    all(net, la, lv, lca, lcv, ra, rv, rca, rcv, ma, mv, mm, mc);
  } else if constexpr (std::is_same_v<Callbacks, LMRTCIWNetworkProbeDelegate>) {
    auto& [up, down, finished] = host;
    all(up, down, finished);
  } else {
    auto& [field] = host;
    all(field);
  }
}

template <class Map>
void add(Snapshot& snapshot, const std::string& prefix, const Map& map) {
  for (const auto& [key, object] : map) snapshot[prefix + key] = addressOf(object);
}
void addOne(Snapshot& snapshot, const std::string& name, std::uintptr_t value) {
  if (value != 0) snapshot[name] = value;
}

/// What the engine holds.
Snapshot snapshotOf(const LMRTCIWEngine& engine) {
  Snapshot all;
  add(all, "view ", engine.remoteVideoViewDict());
  add(all, "local ", engine.localCustomViews());
  add(all, "custom ", engine.remoteCustomViews());
  add(all, "sub ", engine.subs());
  add(all, "sound ", engine.remoteAudioReceivedDelegates());
  add(all, "sound ", engine.remoteCustomAudioProcessedDelegates());
  add(all, "pictures ", engine.remoteVideoProcessedDelegates());
  add(all, "pictures ", engine.remoteCustomVideoProcessedDelegates());
  add(all, "own ", engine.localCustomVideoProcessedDelegates());
  for (const auto& [id, file] : engine.effectSoundIdDict()) all["effect " + std::to_string(id)] = 1;
  for (const auto& [tag, custom] : engine.customStreams()) all["tag " + tag] = addressOf(custom->stream);
  addOne(all, "camera", addressOf(engine.iwLocalVideoView()));
  addOne(all, "mix", addressOf(engine.iwLiveMixVideoView()));
  addOne(all, "cdn", addressOf(engine.iwLiveMixInnerCdnVideoView()));
  addOne(all, "stats", addressOf(engine.statsDelegate_()));
  addOne(all, "probe", addressOf(engine.probeTestDelegate_()));
  addOne(all, "captured", addressOf(engine.localAudioCapturedDelegate_()));
  addOne(all, "sent", addressOf(engine.localAudioMixedDelegate_()));
  addOne(all, "received", addressOf(engine.remoteAudioMixedDelegate_()));
  addOne(all, "processed", addressOf(engine.localVideoProcessedDelegate_()));
  addOne(all, "room", addressOf(engine.room()));
  addOne(all, "live", engine.liveInfo() ? 1 : 0);
  const auto setup = engine.iwRoomSetup();
  addOne(all, "setup", setup ? 1 + static_cast<std::uintptr_t>(setup->role) : 0);
  return all;
}

}  // namespace

void View::tell() { workerOfThread->reenter(); }

template <class Callbacks>
Host<Callbacks>::Host(LifePtr of) : life(std::move(of)) {
  setAll<Callbacks>(*this, *life);
}

// The model

void Model::destroy() {
  const auto observers = std::exchange(*this, Model()).weak;
  destroyed = true;
  for (const auto& name : {"stats", "probe", "captured", "sent", "received", "processed"}) {
    if (const auto place = observers.find(name); place != observers.end()) weak.insert(*place);
  }
}

Snapshot Model::snapshot() const {
  Snapshot all = strong;
  add(all, "sub ", subs);
  for (const auto& [name, object] : weak) {
    addOne(all, name, reinterpret_cast<std::uintptr_t>(object.lock().get()));
  }
  addOne(all, "room", addressOf(room.lock()));
  addOne(all, "live", live ? 1 : 0);
  addOne(all, "setup", setup ? 1 + static_cast<std::uintptr_t>(role) : 0);
  return all;
}

Int Operation::expected(const Model& model, const Args& args) const {
  const auto failed = std::ranges::find_if(checks, [&](const Check& c) { return !c.holds(model, args); });
  return failed == checks.end() ? 0 : failed->code;
}

bool Operation::mayReturn(Int code) const {
  return code == 0 || std::ranges::find(checks, code, &Check::code) != checks.end();
}

// The world

void World::owe(Completion completion) {
  const auto& ticket = workerOfThread->ticket;
  const std::lock_guard lock(mutex);
  if (ticket) ++ticket->asked;
  pending.push_back({ticket, std::move(completion)});
}

void World::post(MainQueue::Task task) {
  const auto& ticket = workerOfThread->ticket;
  const std::lock_guard lock(mutex);
  if (ticket) ++ticket->asked;
  mainTasks.push_back({ticket, [task = std::move(task)](Int) { task(); }});
}

bool World::enter(int direction) {
  for (int now = changing; now * direction >= 0;) {
    if (changing.compare_exchange_weak(now, now + direction)) return true;
  }
  return false;
}

World::Held World::current() {
  const std::lock_guard lock(mutex);
  return lives.empty() ? Held() : lives.back();
}

// The worker

void Worker::require(bool holds, std::string_view what) const {
  if (!holds) fail(what);
}

void Worker::fail(std::string_view what) const {
  static std::mutex once;
  once.lock();  // for good: the first failure is the one to look at
  std::fprintf(stderr, "FAILED: %s\n  seed %llu, thread %d, step %llu; the last steps:\n",
               std::string(what).c_str(), static_cast<unsigned long long>(seed_), index_,
               static_cast<unsigned long long>(step_.load()));
  const std::uint64_t count = std::min<std::uint64_t>(step_, notes_.size());
  for (std::uint64_t i = step_ - count; i < step_; ++i) {
    std::fprintf(stderr, "  %llu %s\n", static_cast<unsigned long long>(i),
                 std::string(notes_[i % notes_.size()]).c_str());
  }
  std::fflush(stderr);
  std::_Exit(1);
}

void Worker::run(double seconds) {
  workerOfThread = this;
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  for (int i = 0; i % 64 != 0 || std::chrono::steady_clock::now() < end; ++i) {
    step();
    if (world_.follow) compare();
  }
}

void Worker::end() {
  workerOfThread = this;
  depth_ = kDeepest;
  while (!world_.pending.empty()) complete();
  while (!world_.mainTasks.empty()) runMain();
  for (auto& [life, engine] : std::exchange(world_.lives, {})) {
    engine->destroy();
    forget({life, engine});
  }
  world_.rooms.clear();
  world_.subs.clear();
  world_.files.clear();
}

void Worker::step() {
  const Int dice = below(1000);
  if (dice < 600 && owesMuch()) return complete();
  if (dice < 620) return operate();
  if (dice < 780) return complete();
  if (dice < 840) return runMain();
  if (dice < 970) return fireEvent(*this);
  if (dice < 985) return listen();
  if (dice < 990) return dropRooms();
  if (dice < 993) return destroy();
  if (dice < 995) return finishSubRoom();
  create();
}

bool Worker::owesMuch() const {
  const std::lock_guard lock(world_.mutex);
  return std::ssize(world_.pending) > kMostPending;
}

void Worker::compare() {
  for (const auto& [life, engine] : world_.lives) {
    const auto expected = life->model.snapshot(), actual = snapshotOf(*engine);
    for (const auto& [name, value] : expected) {
      require(actual.contains(name) && actual.at(name) == value, "the engine does not hold: " + name);
    }
    for (const auto& [name, value] : actual) require(expected.contains(name), "the engine holds: " + name);
  }
}

void Worker::hear(Life& life, std::string_view callback) {
  require(!life.ended && !destroyedOnThread.contains(life.id),
          "a callback after destroy: " + std::string(callback));
  ++life.inside;
  ++callbacksOfThread;
  if (ticket && ticket->operation.callback == callback) ++ticket->heard;
  reenter();
  --callbacksOfThread;
  --life.inside;
  require(!life.ended, "destroy has not waited for: " + std::string(callback));
}

void Worker::reenter() {
  if (depth_ >= kDeepest || !chance(6)) return;
  const auto outer = std::exchange(ticket, nullptr);
  ++depth_;
  if (chance(10)) {  // blocks for ever if the engine holds a lock during the host's code
    std::thread([this] {
      workerOfThread = this;
      step();
    }).join();
  } else {
    step();
  }
  --depth_;
  ticket = outer;
}

template <class Object>
std::shared_ptr<Object> Worker::some(std::shared_ptr<Object> Objects::*slot, const LifePtr& life) {
  auto& object = objects_[static_cast<std::size_t>(below(4))].*slot;
  if (chance(4)) return nullptr;
  if (!object || object->life != life || chance(4)) object = std::make_shared<Object>(life);
  return object;
}

std::vector<std::shared_ptr<LMRTCRemoteUser>> Worker::users() {
  std::vector<std::shared_ptr<LMRTCRemoteUser>> all;
  const auto& context = world_.sdk->context;
  for (const auto* id : {"u1", "u2", "u3"}) {
    fake::RemoteUser::Streams streams;
    for (const auto* tag : {kLMRTCDefaultStreamTag, "t1", "t2"}) {
      const Int kind =
          tag == kLMRTCDefaultStreamTag ? LMRTCMediaStreamTypeNormal : LMRTCMediaStreamTypeCustom;
      if (chance(2))
        streams.push_back(std::make_shared<fake::AudioInput>(context, id, tag, 0, kind, below(2)));
      if (chance(2))
        streams.push_back(std::make_shared<fake::VideoInput>(context, id, tag, 1, kind, below(2)));
      if (chance(4))
        streams.push_back(std::make_shared<fake::VideoInput>(context, id, tag, 0, kind, below(2)));
    }
    if (!chance(4)) all.push_back(std::make_shared<fake::RemoteUser>(id, streams));
  }
  return all;
}

Args Worker::draw(const Operation& operation, const LifePtr& life) {
  Args a;
  const auto userId = [this] { return std::string(kUserIds[static_cast<std::size_t>(below(5))]); };
  a.user = userId();
  a.tag = chance(2) ? "t1" : "t2";
  a.room = chance(2) ? "r1" : "r2";
  if (!chance(4)) a.text = a.user;
  for (Int count = below(4); count > 0; --count) a.users.push_back(userId());
  a.type = below(5) - 1;
  a.n = below(4);
  a.seed = below(60);
  a.flag = chance(2);
  a.other = chance(2);
  a.view = some(&Objects::view, life);
  a.audio = some(&Objects::audio, life);
  a.sample = some(&Objects::sample, life);
  a.pixel = some(&Objects::pixel, life);
  a.stats = some(&Objects::stats, life);
  a.probe = some(&Objects::probe, life);
  if (!chance(8))
    a.setup = std::make_shared<LMRTCIWRoomSetup>(LMRTCIWRoomSetup{.mediaType = 2, .role = below(4)});
  if (!chance(4)) a.config = std::make_shared<LMRTCIWVideoConfig>();
  if (world_.follow) {
    const auto main = life->model.room.lock();
    a.role = life->model.roleHeld();
    a.live = main && main->me && main->me->nextLiveInfo.get();
  }
  const auto& context = world_.sdk->context;
  const auto place = static_cast<std::size_t>(below(4));
  auto& engine = *world_.sdk->engine;
  std::shared_ptr<fake::Room> room;
  if (operation.name == "joinRoom" && !chance(8)) {
    room = std::make_shared<fake::Room>(context, a.room);
    room->users = users();
    if (chance(2)) room->others = {"r3", "r4"};
    for (const auto& user : users()) std::ranges::copy(user->remoteStreams(), std::back_inserter(room->live));
    if (chance(2)) room->cdn = std::make_shared<fake::CdnInput>(context, "cdn");
    if (chance(2)) room->me->nextLiveInfo.set(std::make_shared<fake::LiveInfo>(context));
    if (chance(8)) room->me = nullptr;
    engine.nextRoom.set(room);
    a.joined = room;
  } else if (operation.name == "joinSubRoom" && !chance(8)) {
    a.sub = std::make_shared<fake::OtherRoom>(context, a.room);
    a.sub->users = users();
    engine.nextOtherRoom.set(a.sub);
  } else if (operation.name == "createCustomStreamFromFile" && !chance(4)) {
    a.file = std::make_shared<fake::FileOutput>(context, a.tag);
    engine.nextFile.set(a.file);
  }
  const std::lock_guard lock(world_.mutex);
  if (room) replaceOne(world_.rooms, place, room);
  if (a.sub) replaceOne(world_.subs, place, a.sub);
  if (a.file) replaceOne(world_.files, place, a.file);
  return a;
}

void Worker::operate() {
  const auto& all = operations();
  const auto& operation = all[static_cast<std::size_t>(below(std::ssize(all)))];
  const auto [life, engine] = chance(10) ? oneOf(world_.lives) : world_.current();
  if (!life) return;
  note(operation.name);
  const auto made = std::make_shared<Ticket>(Ticket{operation, life, draw(operation, life)});
  const int changes = life->changes;
  const bool hears = life->hears();
  const Int expected = operation.expected(life->model, made->args);
  if (world_.follow && operation.accepted) {
    const bool reached = !operation.checks.empty() && expected != operation.checks.front().code;
    if (expected == 0 || (operation.changesAnyway && reached)) operation.accepted(life->model, made->args);
  }
  ticket = made;
  const Int code = operation.call(*engine, made->args);
  ticket = nullptr;
  static_cast<Objects&>(made->args) = {};  // they are the engine's now, or nobody's
  world_.sdk->engine->nextRoom.set(nullptr);
  world_.sdk->engine->nextOtherRoom.set(nullptr);
  world_.sdk->engine->nextFile.set(nullptr);
  const std::string name(operation.name);
  require(operation.mayReturn(code), name + " returned " + std::to_string(code));
  if (world_.follow) {
    require(code == expected,
            name + " returned " + std::to_string(code) + ", not " + std::to_string(expected));
  }
  const std::lock_guard lock(world_.mutex);
  const bool asks = code == 0 && !operation.callback.empty();
  require(made->asked <= (asks ? 1U : 0U), name + " was passed on too often");
  if (asks && hears && changes == life->changes) require(made->asked == 1, name + " was not passed on");
}

void Worker::complete() {
  World::Owed owed;
  {
    const std::lock_guard lock(world_.mutex);
    if (world_.pending.empty()) return;
    std::swap(world_.pending[static_cast<std::size_t>(below(std::ssize(world_.pending)))],
              world_.pending.back());
    owed = std::move(world_.pending.back());
    world_.pending.pop_back();
  }
  note("completion");
  const bool lost = chance(50);
  const Int code = !chance(4) ? 0 : chance(2) ? 7 : fake::LocalUser::kKicked;
  if (!lost) finish(owed, code);
}

void Worker::runMain() {
  if (world_.mainBusy.exchange(true)) return;
  World::Owed owed;
  {
    const std::lock_guard lock(world_.mutex);
    if (!world_.mainTasks.empty()) {
      owed = std::move(world_.mainTasks.front());
      world_.mainTasks.pop_front();
    }
  }
  note("main queue");
  if (owed.completion) finish(owed, 0);
  world_.mainBusy = false;
}

void Worker::finish(const World::Owed& owed, Int code) {
  if (!owed.ticket) return owed.completion(code);
  const auto& [operation, life, args, asked, heard] = *owed.ticket;
  note(operation.name);
  const int changes = life->changes;
  const bool hears = life->hears();
  const bool late = operation.name == "leaveSubRoom";  // the room is forgotten after the callback
  const bool followed = world_.follow && operation.completed;
  if (followed && !late) operation.completed(life->model, args, code);
  ticket = owed.ticket;
  owed.completion(code);
  ticket = nullptr;
  if (followed && late) operation.completed(life->model, args, code);

  const std::string name(operation.name);
  const std::size_t count = operation.count ? operation.count(args, code) : 1;
  require(heard <= count, name + " completed more than once");
  if (hears && changes == life->changes) require(heard == count, name + " did not tell its result");
}

void Worker::listen() {
  const auto held = world_.current();
  if (!held.life) return;
  note("listener");
  setListener(held, chance(4) ? nullptr : std::make_shared<Host<LMRTCIWEngineDelegate>>(held.life));
}

void Worker::setListener(const World::Held& held, const std::shared_ptr<LMRTCIWEngineDelegate>& listener) {
  auto& [life, engine] = held;
  std::shared_ptr<LMRTCIWEngineDelegate> old;
  const std::lock_guard lock(life->mutex);
  if (listener && life->forgotten) return;
  if (!listener) {
    life->heard = false;
    ++life->changes;
  }
  if (listener || chance(2)) engine->setEngineDelegate(listener);  // or it just dies
  old = std::exchange(life->listener, listener);
  if (listener) life->heard = true;
}

void Worker::forget(const World::Held& held) {
  setListener(held, nullptr);
  const std::lock_guard lock(held.life->mutex);
  held.life->forgotten = true;
  held.life->listener = nullptr;
}

void Worker::dropRooms() {
  note("rooms go");
  std::vector<std::shared_ptr<fake::Room>> rooms;
  const std::lock_guard lock(world_.mutex);
  rooms.swap(world_.rooms);
}

void Worker::finishSubRoom() {
  const auto [life, engine] = world_.current();
  const auto listener = world_.sdk->engine->events();
  if (!listener) return;
  note("didFinishOtherRoom");
  Args args;
  args.room = chance(2) ? "r1" : "r2";
  const auto leave = std::ranges::find(operations(), "leaveSubRoom", &Operation::name);
  ticket = std::make_shared<Ticket>(Ticket{*leave, life, args});
  listener->didFinishOtherRoom(args.room, "u1");  // the engine leaves the room, and forgets it
  ticket = nullptr;
  if (world_.follow) life->model.subs.erase(args.room);
}

void Worker::create() {
  const auto before = world_.current();
  if (!world_.enter(1)) return;
  note("create");
  const auto setup = chance(4) ? nullptr : std::make_shared<LMRTCIWEngineSetup>();
  auto engine = LMRTCIWEngine::create(setup);
  World::Held oldest;
  {
    const std::lock_guard lock(world_.mutex);
    const bool known = !world_.lives.empty() && world_.lives.back().engine == engine;
    require(known || world_.lives.empty() || world_.lives.back().life->destroyed,
            "create made another engine");
    if (!known) {
      std::erase_if(world_.engines, [](const auto& weak) { return weak.expired(); });
      world_.engines.push_back(engine);
      world_.lives.push_back({std::make_shared<Life>(world_.made++), engine});
      if (world_.lives.size() > 3) {
        oldest = world_.lives.front();
        world_.lives.erase(world_.lives.begin());
      }
    }
  }
  world_.changing -= 1;
  if (oldest.life) forget(oldest);
  if (!before.life || before.engine != engine) listen();
}

void Worker::destroy() {
  if (callbacksOfThread == 0 && depth_ > 0) return;  // would wait for the callback that waits for this thread
  const auto [life, engine] = chance(4) ? oneOf(world_.lives) : world_.current();
  if (!life || !world_.enter(-1)) return;
  note("destroy");
  life->destroyed = true;
  ++life->changes;
  if (world_.follow) life->model.destroy();
  engine->destroy();
  if (callbacksOfThread == 0) {
    life->ended = true;
    require(life->inside == 0, "destroy has not waited for a callback");
  }
  destroyedOnThread.insert(life->id);
  world_.changing += 1;
}

}  // namespace lumo::stress
