#pragma once

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

// A host, an SDK and a model of the engine between them, for random runs.

namespace lumo::stress {

using fake::Int;
using Rooms = std::map<std::string, std::shared_ptr<fake::OtherRoom>>;
/// What an engine holds, by name: objects as their addresses.
using Snapshot = std::map<std::string, std::uintptr_t>;

template <class Object>
std::uintptr_t addressOf(const std::shared_ptr<Object>& object) {
  if constexpr (std::is_polymorphic_v<Object>) {
    return reinterpret_cast<std::uintptr_t>(dynamic_cast<const void*>(object.get()));
  } else {
    return reinterpret_cast<std::uintptr_t>(object.get());
  }
}

/// What an engine has to know and to hold. Followed in runs of one thread only.
struct Model {
  bool destroyed = false, setup = false, live = false, file = false;
  Int role = 0;
  std::weak_ptr<fake::Room> room;
  Rooms subs;
  Snapshot strong;
  std::map<std::string, std::weak_ptr<const void>> weak;

  bool joined() const { return room.lock() && room.lock()->me; }
  Int roleHeld() const { return setup ? role : 0; }
  template <class Object>
  void keep(const std::string& name, const std::shared_ptr<Object>& object) {
    if (object) {
      strong[name] = addressOf(object);
    } else {
      strong.erase(name);
    }
  }
  void destroy();
  Snapshot snapshot() const;
};

/// An engine from its creation on, also after its destruction, as the host sees it.
struct Life {
  explicit Life(int number) : id(number) {}

  const int id;
  std::atomic<bool> ended = false;      ///< no callback may run any more
  std::atomic<bool> destroyed = false;  ///< or about to be
  std::atomic<bool> heard = false;      ///< whether a listener is installed
  std::atomic<int> changes = 0;         ///< of the last two to false
  std::atomic<int> inside = 0;          ///< callbacks that run
  std::mutex mutex;                     ///< guards the listener
  std::shared_ptr<LMRTCIWEngineDelegate> listener;
  bool forgotten = false;  ///< it gets no listener any more; guarded by `mutex`
  Model model;

  bool hears() const { return heard && !destroyed; }
};
using LifePtr = std::shared_ptr<Life>;

/// Callbacks of the host for one engine, all of them set.
template <class Callbacks>
struct Host : Callbacks, fake::Counted {
  explicit Host(LifePtr of);
  const LifePtr life;
};
/// A view of the host: told by operations, on the thread that calls them.
struct View : LMRTCIWViewDelegate, fake::Counted {
  explicit View(LifePtr of) : life(std::move(of)) {}
  const LifePtr life;
  Int getViewType() const override { return LMRTCIWViewTypeFlutter; }
  void setLocalView(const std::shared_ptr<LMRTCVideoOutputStream>&) override { tell(); }
  void removeLocalView() override { tell(); }
  void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>&) override { tell(); }
  void removeRemoteView() override { tell(); }
  void setInnerCdnView(const std::shared_ptr<LMRTCCDNInputStream>&) override { tell(); }
  void removeInnerCdnView() override { tell(); }
  static void tell();
};

/// What engines are given to call, for one operation or in one thread's hands. Any of them goes at any time.
struct Objects {
  std::shared_ptr<View> view;
  std::shared_ptr<Host<LMRTCIWAudioFrameDelegate>> audio;
  std::shared_ptr<Host<LMRTCIWSampleBufferVideoFrameDelegate>> sample;
  std::shared_ptr<Host<LMRTCIWPixelBufferVideoFrameDelegate>> pixel;
  std::shared_ptr<Host<LMRTCIWStatsDelegate>> stats;
  std::shared_ptr<Host<LMRTCIWNetworkProbeDelegate>> probe;
  std::shared_ptr<fake::FileOutput> file;
};

/// Arguments for any operation. What is absent is null.
struct Args : Objects {
  std::string user, tag, room;
  std::optional<std::string> text;
  std::vector<std::string> users;
  Int type = 0, n = 0, seed = 0;
  bool flag = false, other = false;
  Int role = 0;       ///< held at the call
  bool live = false;  ///< whether a live publication of the room has a handle
  std::shared_ptr<LMRTCIWRoomSetup> setup;
  std::shared_ptr<LMRTCIWVideoConfig> config;
  std::weak_ptr<fake::Room> joined;  ///< what a join delivers, if the SDK still has it
  std::shared_ptr<fake::OtherRoom> sub;
};

/// A condition of an operation, and what it returns when that does not hold.
struct Check {
  Int code;
  bool (*holds)(const Model& model, const Args& args);
};

/// One operation of the engine: its conditions in their order, what it changes, and its result's callback.
struct Operation {
  std::string_view name;
  Int (*call)(LMRTCIWEngine& engine, const Args& args);
  std::vector<Check> checks;
  std::string_view callback = {};
  /// What an accepted call changes at once, and its completion later.
  void (*accepted)(Model& model, const Args& args) = nullptr;
  void (*completed)(Model& model, const Args& args, Int code) = nullptr;
  /// How often the callback comes, when it is not once.
  std::size_t (*count)(const Args& args, Int code) = nullptr;
  bool changesAnyway = false;  ///< also when another check than the first has failed

  /// What the call has to return.
  Int expected(const Model& model, const Args& args) const;
  bool mayReturn(Int code) const;
};
const std::vector<Operation>& operations();

/// An accepted operation that waits for its completion.
struct Ticket {
  const Operation& operation;
  const LifePtr life;
  Args args;
  std::size_t asked = 0, heard = 0;
};

/// What is shared by all threads of a run: the engines, the rooms of the SDK, and what it owes.
struct World : fake::Context {
  struct Owed {
    std::shared_ptr<Ticket> ticket;
    Completion completion;
  };
  struct Held {
    LifePtr life;
    std::shared_ptr<LMRTCIWEngine> engine;
  };

  explicit World(bool followed) : Context(nullptr), follow(followed) {}
  void owe(Completion completion) override;
  void post(MainQueue::Task task);
  /// Creations (1) exclude destructions (-1); nobody waits. @return whether it may begin
  bool enter(int direction);
  Held current();

  const bool follow;                    ///< whether the model is followed
  std::shared_ptr<fake::Provider> sdk;  ///< set once, before the threads start
  std::atomic<int> changing = 0, made = 0;
  std::atomic<bool> mainBusy = false;
  std::vector<Held> lives;  ///< the last one is the current one; like all that follows, guarded by `mutex`
  std::vector<std::weak_ptr<LMRTCIWEngine>> engines;
  std::vector<std::shared_ptr<fake::Room>> rooms;
  std::vector<std::shared_ptr<fake::OtherRoom>> subs;
  std::vector<std::shared_ptr<fake::FileOutput>> files;
  std::vector<Owed> pending;
  std::deque<Owed> mainTasks;
};

/// One thread of a run, with its own random numbers.
class Worker {
 public:
  Worker(World& world, std::uint64_t seed, int index)
      : world_(world), seed_(seed), index_(index), random_(seed * 64 + static_cast<std::uint64_t>(index)) {}

  /// Does one random thing: calls an operation, completes one, fires an event, or changes what is there.
  void step();
  void run(double seconds);
  /// Lets everything end that is under way and destroys the engines; nothing else may run any more.
  void end();
  /// Ends the process with a report unless `holds`.
  void require(bool holds, std::string_view what) const;
  /// Runs inside a callback of an engine.
  void hear(Life& life, std::string_view callback);
  /// Runs inside any code of the host.
  void reenter();
  void note(std::string_view what) { notes_[step_++ % notes_.size()] = what; }
  [[noreturn]] void fail(std::string_view what) const;

  Int below(Int limit) { return static_cast<Int>(random_() % static_cast<std::uint64_t>(limit)); }
  bool chance(Int oneIn) { return below(oneIn) == 0; }
  template <class Objects>
  auto oneOf(const Objects& objects) {
    const std::lock_guard lock(world_.mutex);
    return objects.empty() ? typename Objects::value_type()
                           : objects[static_cast<std::size_t>(below(std::ssize(objects)))];
  }
  World& world() { return world_; }
  std::uint64_t steps() const { return step_; }
  std::shared_ptr<Ticket> ticket;  ///< what the thread's engine calls belong to

 private:
  Args draw(const Operation& operation, const LifePtr& life);
  void operate();
  void complete();
  void runMain();
  bool owesMuch() const;
  void finish(const World::Owed& owed, Int code);
  void listen();
  void forget(const World::Held& held);
  /// Replaces the listener, or removes it: null.
  void setListener(const World::Held& held, const std::shared_ptr<LMRTCIWEngineDelegate>& listener);
  void create();
  void destroy();
  void dropRooms();
  void finishSubRoom();
  void compare();
  template <class Object>
  std::shared_ptr<Object> some(std::shared_ptr<Object> Objects::*slot, const LifePtr& life);
  std::vector<std::shared_ptr<LMRTCRemoteUser>> users();

  World& world_;
  const std::uint64_t seed_;
  const int index_;
  std::mt19937_64 random_;
  int depth_ = 0;
  std::array<Objects, 4> objects_;
  std::atomic<std::uint64_t> step_ = 0;
  std::array<std::string_view, 32> notes_;
};

/// Lets the SDK do something by itself: an event, or a frame.
void fireEvent(Worker& worker);

}  // namespace lumo::stress
