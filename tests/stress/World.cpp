#include "tests/stress/World.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <iostream>
#include <thread>

namespace lumo::stress {
namespace {

const std::vector<std::string> kUserIds = {"u1", "u2", "u3", "me", "nobody"};
constexpr int kDeepest = 3;

thread_local std::shared_ptr<Ticket> ticket;  // what calls of the SDK belong to

/// Runs inside a callback of an engine.
void hear(const LifePtr& life, const std::string& callback);
/// Runs inside any code of the host.
void reenter();

auto callbacksOf(LMRTCIWAudioFrameDelegate& host) { return std::tie(host.onAudioFrame); }
auto callbacksOf(LMRTCIWSampleBufferVideoFrameDelegate& host) { return std::tie(host.onSampleBuffer); }
auto callbacksOf(LMRTCIWPixelBufferVideoFrameDelegate& host) { return std::tie(host.onPixelBuffer); }
auto callbacksOf(LMRTCIWNetworkProbeDelegate& host) {
  return std::tie(host.onNetworkProbeUpLinkStats, host.onNetworkProbeDownLinkStats,
                  host.onNetworkProbeFinished);
}
auto callbacksOf(LMRTCIWStatsDelegate& host) {
  return std::tie(host.onNetworkStats, host.onRemoteAudioStats, host.onLiveMixMemberAudioStats);
}

/// Callbacks of the host for one engine.
template <class Callbacks>
struct Host : Callbacks, fake::Counted {
  explicit Host(LifePtr of) : life(std::move(of)) {
    if constexpr (std::is_same_v<Callbacks, LMRTCIWEngineDelegate>) {
      forEachCallback(*this, [this](const std::string& name, auto& field) { set(name, field); });
    } else {
      std::apply([this](auto&... fields) { (set("a frame or figure", fields), ...); }, callbacksOf(*this));
    }
  }
  template <class Result, class... Parameters>
  void set(const std::string& name, std::function<Result(Parameters...)>& field) {
    field = [this, name](const auto&... arguments) -> Result {
      hear(life, name);
      if constexpr (!std::is_void_v<Result>) return std::get<0>(std::tie(arguments...));
    };
  }

  const LifePtr life;
};
/// A view of the host: told by operations, on the thread that calls them.
struct View : LMRTCIWViewDelegate, fake::Counted {
  explicit View(const LifePtr&) {}
  Int getViewType() const override { return LMRTCIWViewTypeFlutter; }
  void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>&) override { reenter(); }
  void removeLocalView() override { reenter(); }
  void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>&) override { reenter(); }
  void removeRemoteView() override { reenter(); }
  void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>&) override { reenter(); }
  void removeInnerCdnView() override { reenter(); }
};

/// One thread of a run.
class Worker : public Random {
 public:
  Worker(World& world, std::uint64_t seed, int index)
      : Random(seed * 64 + static_cast<std::uint64_t>(index)), world_(world), seed_(seed), index_(index) {}

  void run(double seconds) {
    ofThread = this;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (int i = 0; i % 64 != 0 || std::chrono::steady_clock::now() < end; ++i) {
      step();
      for (const auto& [life, engine] : world_.follow ? world_.lives : World::Lives())
        compare(*life, *engine);
    }
    kept_ = {};
    world_.steps += step_;
  }

  /// Lets everything end that is under way and destroys the engines; nothing else may run any more.
  void end() {
    ofThread = this;
    depth_ = kDeepest;
    while (!world_.pending.empty()) complete();
    for (const auto& [life, engine] : std::exchange(world_.lives, {})) engine->destroy();
    world_.listener = nullptr;
    world_.given = {};
  }

  /// Ends the process with a report unless `holds`.
  void require(bool holds, const std::string& what) const {
    if (holds) return;
    static std::mutex once;
    once.lock();  // for good: the first failure is the one to look at
    std::cerr << "FAILED: " << what << "\n  seed " << seed_ << ", thread " << index_ << ", step " << step_
              << "; the last steps:\n";
    for (auto i = step_ - std::min<std::uint64_t>(step_, notes_.size()); i < step_; ++i)
      std::cerr << "  " << i << " " << notes_[i % notes_.size()] << "\n";
    std::_Exit(1);
  }

  void hear(const LifePtr& life, const std::string& callback) {
    require(!life->ended && life != destroyedOnThread_, "a callback after destroy: " + callback);
    if (ticket && ticket->operation.callback == callback) ++ticket->heard;
    ++callbacksOfThread_;
    reenter();
    --callbacksOfThread_;
    require(!life->ended, "destroy has not waited for: " + callback);
  }

  void reenter() {
    if (depth_ >= kDeepest || !chance(6)) return;
    const auto outer = std::exchange(ticket, nullptr);
    ++depth_;
    if (chance(10)) {  // blocks for ever if the engine holds a lock during the host's code
      std::jthread([this] {
        ofThread = this;
        step();
      });
    } else {
      step();
    }
    --depth_;
    ticket = outer;
  }

  static inline thread_local Worker* ofThread = nullptr;

 private:
  /// Does one random thing: calls an operation, completes one, fires an event, or changes what is there.
  void step() {
    const auto dice = below(1000);
    if (dice < 550) return operate();
    if (dice < 840) return complete();
    if (dice < 970) return fireEvent(world_, *this, note());
    if (dice < 990) return listen();
    if (dice < 991) return destroy();
    create();
  }

  std::string_view& note() { return notes_[step_++ % notes_.size()]; }

  /// Replaces the listener, or removes it.
  void listen() {
    note() = "listener";
    const std::lock_guard lock(world_.mutex);
    if (world_.lives.empty()) return;
    const auto& [life, engine] = world_.lives.back();
    const auto listener = chance(4) ? nullptr : std::make_shared<Host<LMRTCIWEngineDelegate>>(life);
    if (!listener) {
      life->heard = false;
      ++life->changes;
    }
    if (listener || chance(2)) engine->setEngineDelegate(listener);  // or it just dies
    world_.listener = listener;
    life->heard = listener != nullptr;
  }

  /// Creations (1) exclude destructions (-1); nobody waits. @return whether it may begin
  bool enter(int direction) {
    for (int now = world_.changing; now * direction >= 0;) {
      if (world_.changing.compare_exchange_weak(now, now + direction)) return true;
    }
    return false;
  }

  void create() {
    if (!enter(1)) return;
    note() = "create";
    const auto engine = LMRTCIWEngine::create(chance(4) ? nullptr : std::make_shared<LMRTCIWEngineSetup>());
    {
      const std::lock_guard lock(world_.mutex);
      auto& lives = world_.lives;
      if (lives.empty() || lives.back().second != engine) {
        require(lives.empty() || lives.back().first->destroyed, "create made another engine");
        if (lives.size() == 3) lives.erase(lives.begin());
        lives.emplace_back(std::make_shared<Life>(), engine);
        std::erase_if(world_.engines, [](const auto& weak) { return weak.expired(); });
        world_.engines.push_back(engine);
      }
    }
    world_.changing -= 1;
    listen();
  }

  void destroy() {
    if (callbacksOfThread_ == 0 && depth_ > 0) return;  // would wait for the callback that waits for it
    const auto [life, engine] = anEngine(4);
    if (!life || !enter(-1)) return;
    note() = "destroy";
    life->destroyed = true;
    ++life->changes;
    if (world_.follow) life->model = Model{.destroyed = true, .observers = life->model.observers};
    engine->destroy();
    if (callbacksOfThread_ == 0) life->ended = true;
    destroyedOnThread_ = life;
    world_.changing += 1;
  }

  /// The current engine, or any, once in a while.
  World::Lives::value_type anEngine(std::size_t anyOneIn) {
    const std::lock_guard lock(world_.mutex);
    return chance(anyOneIn) || world_.lives.empty() ? oneOf(world_.lives) : world_.lives.back();
  }

  /// An object of the host: often the last one, or one that goes unless the engine keeps it.
  template <class Object, class Base>
  void give(std::shared_ptr<Base>& given, std::shared_ptr<Base>& kept, const LifePtr& life) {
    if (chance(4)) return;
    given = kept && chance(2) ? kept : std::make_shared<Object>(life);
    if (chance(2)) kept = given;
  }

  Args draw(const LifePtr& life) {
    Args a;
    a.user = oneOf(kUserIds);
    a.tag = chance(2) ? "t1" : "t2";
    a.room = chance(2) ? "r1" : "r2";
    if (!chance(4)) a.text = a.user;
    for (auto count = below(4); count > 0; --count) a.users.push_back(oneOf(kUserIds));
    a.type = static_cast<Int>(below(5)) - 1;
    a.n = static_cast<Int>(below(4));
    a.flag = chance(2);
    const LMRTCIWRoomSetup setup = {.mediaType = 2, .role = static_cast<Int>(below(4))};
    if (!chance(8)) a.setup = std::make_shared<LMRTCIWRoomSetup>(setup);
    if (!chance(4)) a.config = std::make_shared<LMRTCIWVideoConfig>();
    if (kept_.first != life) kept_ = {life, {}};
    auto& kept = kept_.second;
    give<View>(a.view, kept.view, life);
    give<Host<LMRTCIWAudioFrameDelegate>>(a.audio, kept.audio, life);
    give<Host<LMRTCIWSampleBufferVideoFrameDelegate>>(a.sample, kept.sample, life);
    give<Host<LMRTCIWPixelBufferVideoFrameDelegate>>(a.pixel, kept.pixel, life);
    give<Host<LMRTCIWStatsDelegate>>(a.stats, kept.stats, life);
    give<Host<LMRTCIWNetworkProbeDelegate>>(a.probe, kept.probe, life);
    const auto room = life->model.room.lock();
    a.role = life->model.roleHeld();
    a.live = room && room->me && room->me->nextLiveInfo.get();
    return a;
  }

  /// Makes a call for an operation, lets the model follow. @return whether the engine had a listener all the
  /// time
  template <class Call>
  bool follow(const std::shared_ptr<Ticket>& of, Operation::Change change, Int code, const Call& call) {
    auto& life = *of->life;
    const int changes = life.changes;
    const bool hears = life.hears();
    const bool isLate = of->operation.callback == "onSubRoomLeft";  // the room is forgotten after callbacks
    const bool isFollowed = world_.follow && change;
    if (isFollowed && !isLate) change(life.model, of->args, code);
    ticket = of;
    call();
    ticket = nullptr;
    if (isFollowed && isLate) change(life.model, of->args, code);
    return hears && changes == life.changes;
  }

  void operate() {
    const auto& operation = operations()[below(operations().size())];
    const auto [life, engine] = anEngine(10);
    if (!life) return;
    note() = operation.name;
    const auto made = std::make_shared<Ticket>(Ticket{operation, life, draw(life)});
    offer(world_, *this, operation.name, made->args);
    const auto& checks = operation.checks;
    const auto fails = [&of = *life, &made](const Check& check) {
      return !check.holds(of.model, made->args);
    };
    const auto failed = std::ranges::find_if(checks, fails);
    const Int expected = failed == checks.end() ? 0 : failed->code;
    Int code = 0;
    const bool hears = follow(made, operation.returned, expected, [&, &called = engine] {
      code = std::min<Int>(operation.call(*called, made->args), 0);
    });
    static_cast<Objects&>(made->args) = {};  // they are the engine's now, or nobody's

    const std::string outcome = std::string(operation.name) + " returned " + std::to_string(code);
    require(code == 0 || std::ranges::find(checks, code, &Check::code) != checks.end(), outcome);
    require(!world_.follow || code == expected, outcome + ", not " + std::to_string(expected));
    const std::lock_guard lock(world_.mutex);
    const std::size_t asks = code == 0 && !operation.callback.empty() ? 1 : 0;
    require(made->asked <= asks, outcome + " and was passed on too often");
    require(!hears || made->asked == asks, outcome + " and was not passed on");
  }

  void complete() {
    std::pair<std::shared_ptr<Ticket>, World::Completion> owed;
    {
      const std::lock_guard lock(world_.mutex);
      auto& pending = world_.pending;
      const auto place = below(20);  // what waits takes its time, the more so the less waits
      if (place >= pending.size()) return;
      std::swap(pending[place], pending.back());
      owed = std::move(pending.back());
      pending.pop_back();
    }
    const Int code = !chance(4) ? 0 : chance(2) ? 7 : fake::LocalUser::kKicked;
    note() = "completion";
    if (chance(50)) return;  // it is lost
    const auto& [of, completion] = owed;
    if (!of) return completion(code);
    const auto& [operation, life, args, asked, heard] = *of;
    note() = operation.name;
    const auto change = life->destroyed ? nullptr : operation.completed;
    const bool hears = follow(of, change, code, [&, &call = completion] { call(code); });
    const std::size_t count = operation.count ? operation.count(args, code) : 1;
    require(heard <= count, std::string(operation.name) + " completed more than once");
    require(!hears || heard == count, std::string(operation.name) + " did not tell its result");
  }

  /// Compares what the engine holds with the model.
  void compare(const Life& life, const LMRTCIWEngine& engine) const {
    const Model& model = life.model;
    const auto setup = engine.iwRoomSetup();
    require(engine.room() == model.room.lock(), "the engine holds another room");
    require((engine.liveInfo() != nullptr) == model.live, "the engine holds a live handle, or none");
    require(setup ? model.setup && setup->role == model.role : !model.setup, "the engine has another role");
    require(engine.subs() == model.subs, "the engine holds other sub-rooms");
    require(engine.effectSoundIdDict() == model.effects, "the engine holds other effects");
    Held held = model.strong;
    for (const auto* weak : {&model.views, &model.observers}) {
      for (const auto& [name, object] : *weak) held[name] = object.lock().get();
    }
    for (const auto& [name, object] : heldBy(engine))
      require(std::exchange(held[name], nullptr) == object, "the engine holds another: " + name);
    for (const auto& [name, object] : held) require(!object, "the engine does not hold: " + name);
  }

  inline static thread_local int callbacksOfThread_ = 0;
  inline static thread_local LifePtr destroyedOnThread_;  // its callbacks on the thread have ended

  World& world_;
  const std::uint64_t seed_;
  const int index_;
  int depth_ = 0;
  std::pair<LifePtr, Objects> kept_;  ///< what was given last
  std::uint64_t step_ = 0;
  std::array<std::string_view, 32> notes_;
};

void hear(const LifePtr& life, const std::string& callback) { Worker::ofThread->hear(life, callback); }
void reenter() { Worker::ofThread->reenter(); }

}  // namespace

void World::owe(Completion completion) {
  const std::lock_guard lock(mutex);
  if (ticket) ++ticket->asked;
  pending.emplace_back(ticket, std::move(completion));
}

void run(std::uint64_t seed, double seconds, int threads) {
  const auto world = std::make_shared<World>(threads == 1);
  world->sdk = std::make_shared<fake::Provider>(world);
  LMRTCProvider::install(world->sdk);
  MainQueue::setExecutor([&world](const MainQueue::Task& task) { world->owe([task](Int) { task(); }); });
  Console::setSink({});
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
  LMFwLog::getInstance().setThreshold(seed % 2 == 0 ? 0 : 4);  // silence shares less between threads

  std::cout << "seed " << seed << ", " << threads << " threads" << std::endl;
  std::deque<Worker> workers;
  {
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i)
      running.emplace_back(&Worker::run, &workers.emplace_back(*world, seed, i), seconds);
  }
  workers.front().end();
  LMRTCProvider::install(nullptr);
  world->sdk = nullptr;
  for (const auto& engine : world->engines)
    workers.front().require(engine.expired(), "an engine is still alive");
  workers.front().require(fake::Counted::alive() == 0, "objects are still alive");
  std::cout << world->steps << " steps" << std::endl;
}

}  // namespace lumo::stress
