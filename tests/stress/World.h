#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

// An SDK and a model of the engine on it, for random runs.

namespace lumo::stress {

using fake::Int;

/// The random numbers of one thread.
class Random {
 public:
  explicit Random(std::uint64_t seed) : numbers_(seed) {}
  std::size_t below(std::size_t limit) { return numbers_() % limit; }
  bool chance(std::size_t oneIn) { return below(oneIn) == 0; }
  template <class Objects>
  auto oneOf(const Objects& objects) {
    return objects.empty() ? typename Objects::value_type() : objects[below(objects.size())];
  }

 private:
  std::mt19937_64 numbers_;
};

/// What an engine has to know and to hold. Followed in runs of one thread only.
struct Model {
  bool destroyed = false, setup = false, live = false, file = false;
  Int role = 0;
  std::weak_ptr<fake::Room> room = {};
  std::map<std::string, std::shared_ptr<LMRTCOtherRoom>> subs = {};
  std::map<Int, std::string> effects = {};
  std::map<std::string, const void*> strong = {};
  std::map<std::string, std::weak_ptr<const void>> views = {}, observers = {};  ///< held weakly

  bool joined() const { return room.lock() && room.lock()->me; }
  Int roleHeld() const { return setup ? role : 0; }
  void keep(const std::string& name, const std::shared_ptr<const void>& object) {
    strong.erase(name);
    if (object) strong[name] = object.get();
  }
};

/// Listeners, views and streams by name.
using Held = std::map<std::string, const void*>;
Held heldBy(const LMRTCIWEngine& engine);

/// What engines are given to call. Any of it goes at any time.
struct Objects {
  std::shared_ptr<LMRTCIWViewDelegate> view;
  std::shared_ptr<LMRTCIWAudioFrameDelegate> audio;
  std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate> sample;
  std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate> pixel;
  std::shared_ptr<LMRTCIWStatsDelegate> stats;
  std::shared_ptr<LMRTCIWNetworkProbeDelegate> probe;
};

/// Arguments for any operation. What is absent is null.
struct Args : Objects {
  std::string user, tag, room;
  std::optional<std::string> text;
  std::vector<std::string> users;
  Int type = 0, n = 0;
  bool flag = false;
  Int role = 0;       ///< held at the call
  bool live = false;  ///< whether a live publication of the room has a handle
  std::shared_ptr<LMRTCIWRoomSetup> setup;
  std::shared_ptr<LMRTCIWVideoConfig> config;
  std::weak_ptr<fake::Room> joined;  ///< what a join delivers, if the SDK still has it
  std::shared_ptr<fake::OtherRoom> sub;
  std::shared_ptr<fake::FileOutput> file;
};

/// A condition of an operation, and what it returns when that does not hold.
struct Check {
  Int code;
  bool (*holds)(const Model& model, const Args& args);
};

/// One operation of the engine: its conditions in their order, its result's callback, and what it changes.
struct Operation {
  using Change = void (*)(Model& model, const Args& args, Int code);

  std::string_view name;
  Int (*call)(LMRTCIWEngine& engine, const Args& args);
  std::vector<Check> checks;
  std::string_view callback = {};
  Change returned = nullptr;   ///< what the call changes at once
  Change completed = nullptr;  ///< and its completion later
  /// How often the callback comes, when it is not once.
  std::size_t (*count)(const Args& args, Int code) = nullptr;
};
const std::vector<Operation>& operations();

/// An engine from its creation on, also after its destruction, as the host sees it.
struct Life {
  std::atomic<bool> ended = false;      ///< no callback may run any more
  std::atomic<bool> destroyed = false;  ///< or about to be
  std::atomic<bool> heard = false;      ///< whether a listener is installed
  std::atomic<int> changes = 0;         ///< of `hears` to false
  Model model;

  bool hears() const { return heard && !destroyed; }
};
using LifePtr = std::shared_ptr<Life>;

/// An accepted operation that waits for its completion.
struct Ticket {
  const Operation& operation;
  const LifePtr life;
  Args args;
  std::size_t asked = 0, heard = 0;
};

/// What is shared by all threads of a run: the engines, the rooms of the SDK, and what it owes.
struct World : fake::Context {
  /// What the SDK has delivered last, and what events are about.
  struct Given {
    std::shared_ptr<fake::Room> room;
    std::shared_ptr<fake::OtherRoom> sub;
    std::shared_ptr<fake::FileOutput> file;
  };
  using Lives = std::vector<std::pair<LifePtr, std::shared_ptr<LMRTCIWEngine>>>;

  explicit World(bool followed) : Context(nullptr), follow(followed) {}
  void owe(Completion completion) override;

  const bool follow;                    ///< whether the model is followed
  std::shared_ptr<fake::Provider> sdk;  ///< set once, before the threads start
  /// Creations, or destructions as a negative number, that run: the one excludes the other.
  std::atomic<int> changing = 0;
  std::atomic<std::uint64_t> steps = 0;
  std::vector<std::weak_ptr<LMRTCIWEngine>> engines;  ///< like all that follows, guarded by `mutex`
  Lives lives;                                        ///< the last one is the current one
  std::shared_ptr<LMRTCIWEngineDelegate> listener;    ///< the current one's
  Given given;
  std::vector<std::pair<std::shared_ptr<Ticket>, Completion>>
      pending;  ///< completions, and what goes to the main queue
};

/// Lets the SDK do something by itself: an event or a frame. @param note  is set to its name
void fireEvent(World& world, Random& random, std::string_view& note);
/// Makes what the SDK delivers to the operation, if all goes well.
void offer(World& world, Random& random, std::string_view operation, Args& args);

/// Calls engines at random on some threads. Ends the process with a report when a rule is broken.
void run(std::uint64_t seed, double seconds, int threads);

}  // namespace lumo::stress
