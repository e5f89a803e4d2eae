#pragma once

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "examples/lumo-call/Gallery.h"
#include "examples/lumo-call/LevelMeter.h"
#include "examples/lumo-call/Options.h"
#include "examples/lumo-call/StatsReports.h"
#include "examples/support/CallbackLog.h"

class LMRTCIWEngine;
struct LMRTCIWEngineDelegate;
struct LMRTCIWNetworkProbeDelegate;
struct LMRTCIWStatsDelegate;

/// One call from the first participant's joining to the destruction of the engine, as a host would program
/// it: what the engine reports is answered on the main queue, which here is a thread of its own.
class Call {
 public:
  /// @param local  the installed media SDK
  Call(const CallOptions& options, std::shared_ptr<LumoRTCLocal> local);
  ~Call();

  /// Runs the call on the main queue and waits for its end.
  /// @return whether it went as planned
  bool run();

  /// What the surfaces showed at the end of the call.
  const std::vector<Gallery::Shown>& shown() const { return shown_; }

  struct Heard {
    std::string name;
    LevelMeter::Level level;
  };
  /// How loud each participant arrived.
  std::vector<Heard> heard() const;

  /// The statistics of the call, as far as the options ask for any.
  std::vector<StatsReport> statsReports() const { return stats_.all(); }

  /// What is wrong with the recordings, for people; empty when nothing is.
  const std::string& recordingProblem() const { return recordingProblem_; }

 private:
  using Participant = std::shared_ptr<LumoRTCLocal::Participant>;

  void answerCallbacks();
  void start();
  void testEcho();
  void probe();
  void begin();
  void planScript();
  void bring(std::size_t number);
  void enterRoom();
  void publishFile();
  void setWatermark();
  void sendText();
  void receive(const std::string& userId, std::int64_t mediaType);
  void playSounds();
  void stopRecording();
  /// Draws, now and in every tick to come.
  void draw();
  void leave();
  void end(bool isAsPlanned);

  /// Runs `task` on the main queue, at a fraction of the call's duration.
  void at(double fraction, lumo::Runner::Task task);
  /// Prints `text` and runs an operation; its code is printed when it is not 0.
  template <class Operation>
  void act(const std::string& text, Operation operation) const;

  const CallOptions& options_;
  const std::shared_ptr<LumoRTCLocal> local_;
  const std::shared_ptr<LMRTCIWEngineDelegate> delegate_;
  const std::shared_ptr<LMRTCIWStatsDelegate> statsDelegate_;
  const std::shared_ptr<LMRTCIWNetworkProbeDelegate> probeDelegate_;
  StatsReports stats_;
  CallbackLog log_;
  LevelMeter meter_;
  LevelMeter ownMeter_;
  Gallery gallery_;
  std::shared_ptr<LMRTCIWEngine> engine_;
  std::vector<Participant> participants_;  // null: not there yet
  std::vector<Gallery::Shown> shown_;
  std::string recordingProblem_;
  const double musicSeconds_;  // 0: no music, or it does not say how long it is
  std::promise<bool> ended_;
  bool hasEnded_ = false;
  const std::shared_ptr<lumo::Timeline> timeline_ = lumo::Timeline::realTime();
  std::unique_ptr<lumo::Runner> main_;
};
