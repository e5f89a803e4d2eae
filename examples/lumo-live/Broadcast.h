#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLocal/LumoRTCLocal.h"
#include "examples/lumo-live/Answers.h"
#include "examples/lumo-live/Options.h"
#include "examples/support/CallbackLog.h"

class LMRTCIWEngine;
class LMRTCIWView;
struct LMRTCIWEngineDelegate;

/// A live room with scripted broadcasters, and the local user who watches its mix, goes on the air, steers
/// the mix, links the room with another one where that is asked for, and goes back to the audience. One
/// thread.
class Broadcast {
 public:
  /// @param local  the installed media SDK
  Broadcast(const LiveOptions& options, std::shared_ptr<LumoRTCLocal> local);
  ~Broadcast();
  Broadcast(const Broadcast&) = delete;
  Broadcast& operator=(const Broadcast&) = delete;

  /// Runs all steps.
  /// @return whether everything went as planned
  bool run();

 private:
  /// Prints `text` and runs an operation. With the name of a callback, waits for that one.
  template <class Operation>
  void act(const std::string& text, const char* answer, Operation operation);
  void bringBroadcasters();
  void watchTheMix();
  void goOnTheAir();
  void stepThroughLayouts();
  void linkRooms();
  void bringLinkedHost();
  void showInnerCdn();
  void goBackToTheAudience();
  /// Lets the step last, then writes a picture of what `view` shows.
  void show(const std::string& name, const LMRTCIWView& view);

  const LiveOptions& options_;
  const std::shared_ptr<LumoRTCLocal> local_;
  const CallbackLog log_;
  Answers answers_;
  const std::shared_ptr<LMRTCIWEngineDelegate> delegate_;
  const std::shared_ptr<LMRTCIWEngine> engine_;
  const std::shared_ptr<LMRTCIWView> mixView_;
  const std::shared_ptr<LMRTCIWView> cdnView_;
  std::vector<std::shared_ptr<LumoRTCLocal::Participant>> broadcasters_;
  std::shared_ptr<LumoRTCLocal::Participant> linkedHost_;
  int steps_ = 0;
  bool isAsPlanned_ = true;
};
