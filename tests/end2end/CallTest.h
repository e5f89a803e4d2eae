#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoIMLibCore/LMFwLog.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/system/Console.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {

using namespace std::chrono_literals;
using Media = LumoRTCLocal::Media;
using ParticipantPtr = std::shared_ptr<LumoRTCLocal::Participant>;

inline constexpr std::int64_t kAudio = LMRTCIWMediaTypeAudio;
inline constexpr std::int64_t kVideo = LMRTCIWMediaTypeVideo;
inline constexpr std::int64_t kBoth = LMRTCIWMediaTypeAudioVideo;

/// Collects sound and tells how loud tones are in it.
struct SoundMeter {
  void add(const AudioBlock& block) {
    samples.insert(samples.end(), block.samples.begin(), block.samples.end());
  }
  /// In tenths of `full`; "-" when there was no sound at all.
  std::string tenths(double frequencyHz, double full) const {
    return samples.empty() ? "-" : std::to_string(std::lround(toneLevel(samples, frequencyHz) / full * 10));
  }

  std::vector<std::int16_t> samples;
};

/// What a host does, and what comes of it.
struct Step {
  const char* what;
  std::function<void()> act;
  std::string outcome;
};

/// What the listeners have told, one line for each call: a word and the arguments.
class LineRecorder {
 public:
  template <class... Values>
  void line(std::string text, const Values&... values) {
    ((text += " " + word(values)), ...);
    lines.push_back(text);
  }

  std::vector<std::string> lines;

 private:
  static std::string word(std::int64_t value) { return std::to_string(value); }
  static std::string word(const std::string& value) { return value; }
};

/// A host's engine on LumoRTCLocal at manual pace; nothing of either may outlive the test.
class CallTest : public ::testing::Test {
 protected:
  CallTest() {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    Console::setSink({});
    MainQueue::setOwnThread(false);
    engine = LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>());
    engine->setEngineDelegate(delegate);
  }

  ~CallTest() override {
    const std::weak_ptr<LMRTCIWEngine> weak = engine;
    engine->destroy();
    engine.reset();
    local->setSpeaker({});
    local->uninstall();
    advance(1s);
    EXPECT_TRUE(weak.expired());
  }

  /// Moves time forward, and runs what was posted to the main queue.
  void advance(Microseconds duration) {
    local->advance(duration);
    MainQueue::runPending();
  }

  static void run(const std::vector<Step>& steps, const std::function<std::string()>& outcome) {
    for (const Step& step : steps) {
      step.act();
      EXPECT_EQ(step.outcome, outcome()) << step.what;
    }
  }

  void join() {
    ASSERT_EQ(0, engine->joinRoom("r", std::make_shared<LMRTCIWRoomSetup>()));
    advance(0us);
  }
  void publish(std::int64_t mediaType) {
    ASSERT_EQ(0, engine->publish(mediaType));
    advance(0us);
  }
  ParticipantPtr add(const std::string& userId) { return local->join("r", userId).participant; }
  ParticipantPtr addPublishing(const std::string& userId, Media media,
                               const std::string& tag = kLMRTCDefaultStreamTag) {
    auto participant = add(userId);
    EXPECT_EQ(0, participant->publish(tag, media));
    return participant;
  }

  std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install({LumoRTCLocal::Pace::manual, "me"});
  std::shared_ptr<LMRTCIWEngineDelegate> delegate = std::make_shared<LMRTCIWEngineDelegate>();
  std::shared_ptr<LMRTCIWEngine> engine;
};

}  // namespace lumo::test
