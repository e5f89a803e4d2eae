#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
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
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {

using namespace std::chrono_literals;
using Media = LumoRTCLocal::Media;
using ParticipantPtr = std::shared_ptr<LumoRTCLocal::Participant>;

inline constexpr std::int64_t kAudio = LMRTCIWMediaTypeAudio;
inline constexpr std::int64_t kVideo = LMRTCIWMediaTypeVideo;
inline constexpr std::int64_t kBoth = LMRTCIWMediaTypeAudioVideo;

using Lines = std::vector<std::string>;
using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

/// Collects sound and tells how loud tones are in it.
struct SoundMeter {
  void add(const AudioBlock& block) {
    samples.insert(samples.end(), block.samples.begin(), block.samples.end());
  }
  LumoRTCLocal::Participant::AudioSink sink() {
    return [this](const std::string&, const AudioBlock& block, Microseconds) { add(block); };
  }
  /// In tenths of `full`, such as that of every microphone; "-" when there was no sound at all.
  std::string tenths(double frequencyHz, double full = 0.2) const {
    return samples.empty() ? "-" : std::to_string(std::lround(toneLevel(samples, frequencyHz) / full * 10));
  }

  std::vector<std::int16_t> samples;
};

/// Collects what a participant gets of the local user's pictures.
struct Receiver {
  LumoRTCLocal::Participant::VideoSink sink() {
    return [this](const std::string&, const LMRTCVideoFrame& frame) {
      picture = frame.rtcVideoFrame->buffer->toI420();
      rotation = frame.rotation;
      ++frames;
    };
  }

  Picture picture;
  std::int32_t rotation = 0;
  int frames = 0;
};

/// What a test picture says; source number 99 when it is none.
inline TestPictureReading readingOf(const Picture& picture) {
  return (picture ? readTestPicture(*picture) : std::nullopt).value_or(TestPictureReading{99, 0});
}

inline bool isNear(const YuvColor& a, const YuvColor& b, int tolerance) {
  return std::abs(a.y - b.y) <= tolerance && std::abs(a.u - b.u) <= tolerance &&
         std::abs(a.v - b.v) <= tolerance;
}

inline std::shared_ptr<LocalVideoView> nativeView(const std::shared_ptr<LMRTCIWView>& view) {
  return std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView());
}

/// What a host does, and what comes of it.
struct Step {
  const char* what;
  std::function<void()> act;
  std::string outcome;
};

/// A host's engine on LumoRTCLocal, at manual pace unless asked; nothing of either may outlive the test. The
/// sound that the speaker plays is kept in `speaker`, what listeners are told in `lines`.
class CallTest : public ::testing::Test {
 protected:
  explicit CallTest(const LumoRTCLocal::Options& options = {LumoRTCLocal::Pace::manual, "me"})
      : local(LumoRTCLocal::install(options)) {
    LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
    Console::setSink({});
    MainQueue::setOwnThread(false);
    local->setSpeaker([this](const AudioBlock& block, Microseconds) { speaker.add(block); });
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

  /// Writes down what a listener is told: a word and the arguments.
  template <class... Values>
  void line(std::string text, const Values&... values) {
    ((text += " " + word(values)), ...);
    lines.push_back(text);
  }
  /// For a field of a listener: writes down every call.
  auto recorded(const std::string& what) {
    return [this, what](const auto&... all) { line(what, all...); };
  }
  /// The lines since the last call.
  Lines told() {
    advance(0us);
    return std::exchange(lines, {});
  }
  std::string lastTold() {
    const Lines all = told();
    return all.empty() ? "" : all.back();
  }

  void join(std::int64_t role = LMRTCIWRoleMeetingMember) {
    const auto setup = std::make_shared<LMRTCIWRoomSetup>();
    setup->role = role;
    ASSERT_EQ(0, engine->joinRoom("r", setup));
    advance(0us);
  }
  void publish(std::int64_t mediaType) {
    ASSERT_EQ(0, engine->publish(mediaType));
    advance(0us);
  }
  ParticipantPtr add(const std::string& userId) { return local->join("r", userId).participant; }
  ParticipantPtr addPublishing(const std::string& userId, Media media) {
    auto participant = add(userId);
    EXPECT_EQ(0, participant->publish(kLMRTCDefaultStreamTag, media));
    return participant;
  }

  const std::shared_ptr<LumoRTCLocal> local;
  std::shared_ptr<LMRTCIWEngineDelegate> delegate = std::make_shared<LMRTCIWEngineDelegate>();
  std::shared_ptr<LMRTCIWEngine> engine;
  SoundMeter speaker;
  Lines lines;

 private:
  static std::string word(std::int64_t value) { return std::to_string(value); }
  static std::string word(const std::string& value) { return value; }
};

}  // namespace lumo::test
