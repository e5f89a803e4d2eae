#include "examples/lumo-call/Call.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <utility>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWNetworkProbeDelegate.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWStatsDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWNetworkProbeStats.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioMixer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/system/MainQueue.h"
#include "examples/lumo-call/StatsTable.h"
#include "examples/support/PngImage.h"
#include "examples/support/Screen.h"

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kMedia = LMRTCIWMediaTypeAudioVideo;
constexpr lumo::Microseconds kPatience = 5s;  // for the end of a call that gets stuck
constexpr std::int64_t kEffect = 1;
constexpr std::int64_t kMixed = 1;  // with the microphone
constexpr std::uint64_t kEffectVolume = 70;
constexpr float kSecondsPerLine = 0.5F;
constexpr lumo::Microseconds kTick = 16ms;  // of the drawing loop
constexpr double kWatermarkX = 0.72;
constexpr double kWatermarkY = 0.03;
constexpr double kWatermarkZoom = 0.25;

constexpr std::uint32_t kLocalSource = 0;

/// What participant `number`, counted from 0, sends.
std::uint32_t sourceNumber(std::size_t number) { return static_cast<std::uint32_t>(number) + 1; }

double toneFrequency(std::uint32_t source) { return 300 + 100.0 * source; }

std::vector<double> toneFrequencies(std::size_t participants) {
  std::vector<double> frequencies;
  for (std::size_t i = 0; i < participants; ++i) frequencies.push_back(toneFrequency(sourceNumber(i)));
  return frequencies;
}

/// Every second participant comes after the local user.
bool isLate(std::size_t number) { return number % 2 == 1; }

/// Lets a task on the main queue follow the callback that a field holds.
template <class... Arguments>
void follow(std::function<void(Arguments...)>& field,
            std::type_identity_t<std::function<void(std::decay_t<Arguments>...)>> task) {
  field = [first = std::move(field), task = std::move(task)](Arguments... arguments) {
    first(arguments...);
    lumo::MainQueue::async(
        [task, ... arguments = std::decay_t<Arguments>(arguments)] { task(arguments...); });
  };
}

}  // namespace

Call::Call(const CallOptions& options, std::shared_ptr<LumoRTCLocal> local)
    : options_(options),
      local_(std::move(local)),
      delegate_(std::make_shared<LMRTCIWEngineDelegate>()),
      statsDelegate_(std::make_shared<LMRTCIWStatsDelegate>()),
      probeDelegate_(std::make_shared<LMRTCIWNetworkProbeDelegate>()),
      meter_(toneFrequencies(options.names.size())),
      ownMeter_({toneFrequency(kLocalSource)}),
      gallery_(options.surface),
      participants_(options.names.size()),
      musicSeconds_(options.music.empty() ? 0 : LMRTCAudioMixer::durationOfAudioFile(options.music)),
      main_(timeline_->makeRunner("main")) {
  log_.fill(*delegate_);
  stats_.fill(*statsDelegate_, kLocalUserId);
  answerCallbacks();
}

Call::~Call() = default;

bool Call::run() {
  lumo::MainQueue::setExecutor(
      [main = main_.get()](lumo::MainQueue::Task task) { main->post(std::move(task)); });
  local_->setSpeaker([this](const lumo::AudioBlock& block, lumo::Microseconds) {
    meter_.add(block);
    ownMeter_.add(block);
  });
  lumo::MainQueue::async([this] { start(); });
  const bool isAsPlanned = ended_.get_future().get();
  local_->setSpeaker({});
  stopRecording();
  local_->uninstall();
  lumo::MainQueue::setExecutor({});
  main_.reset();
  return isAsPlanned;
}

std::vector<Call::Heard> Call::heard() const {
  const auto levels = meter_.levels();
  std::vector<Heard> heard;
  for (std::size_t i = 0; i < levels.size(); ++i) heard.push_back({options_.names[i], levels[i]});
  return heard;
}

template <class Operation>
void Call::act(const std::string& text, Operation operation) const {
  log_.action(text);
  if (const std::int64_t code = operation(); code != 0)
    log_.action(text + " fails with code " + std::to_string(code));
}

void Call::answerCallbacks() {
  follow(delegate_->onRoomJoined, [this](std::int64_t code, const std::string&) {
    if (code != 0) return end(false);
    enterRoom();
  });
  follow(delegate_->onRemotePublished, [this](const std::string&, const std::string& userId,
                                              std::int64_t mediaType) { receive(userId, mediaType); });
  follow(delegate_->onUnpublished, [this](std::int64_t, std::int64_t, const std::string&) {
    if (engine_) act("leaveRoom", [this] { return engine_->leaveRoom(); });
  });
  follow(delegate_->onAudioEffectCreated, [this](std::int64_t effectId, std::int64_t, const std::string&) {
    if (engine_) act("playAudioEffect", [&] { return engine_->playAudioEffect(effectId, kEffectVolume, 2); });
  });
  delegate_->onAudioMixingProgressReported = [this, due = 0.0F](float seconds) mutable {
    if (seconds < due && static_cast<double>(seconds) < musicSeconds_) return;
    due = seconds + kSecondsPerLine;
    log_.progress("onAudioMixingProgressReported", static_cast<double>(seconds), musicSeconds_);
  };
  follow(delegate_->onSeiEnabled, [this](bool enabled, std::int64_t, const std::string&) {
    if (enabled) at(0.3, [this] { sendText(); });
  });
  follow(delegate_->onRoomLeft, [this](std::int64_t code, const std::string&) { end(code == 0); });
}

void Call::playSounds() {
  if (!options_.music.empty()) {
    act("startAudioMixing url=" + options_.music,
        [this] { return engine_->startAudioMixing(options_.music, kMixed, true, 1); });
  }
  if (options_.effect.empty()) return;
  act("createAudioEffect url=" + options_.effect,
      [this] { return engine_->createAudioEffect(options_.effect, kEffect); });
}

void Call::stopRecording() {
  for (const auto& problem : {local_->recordSpeaker({}), local_->recordMicrophone({})})
    if (problem) recordingProblem_ = *problem;
}

void Call::start() {
  engine_ = LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>());
  engine_->setEngineDelegate(delegate_);
  if (options_.stats || !options_.plot.empty()) engine_->setStatsDelegate(statsDelegate_);
  if (options_.echo > 0) return testEcho();
  probe();
}

void Call::testEcho() {
  act("startEchoTest timeInterval=" + std::to_string(options_.echo),
      [this] { return engine_->startEchoTest(options_.echo); });
  main_->postAt(timeline_->now() + 2 * std::chrono::seconds(options_.echo), [this] {
    act("stopEchoTest", [this] { return engine_->stopEchoTest(); });
    std::array<char, 64> heard{};
    std::snprintf(heard.data(), heard.size(), "the echo of the microphone came at %.2f of full scale",
                  ownMeter_.levels().front().highest);
    log_.action(heard.data());
    probe();
  });
}

void Call::probe() {
  if (!options_.probe) return begin();
  const auto print = [this](const char* direction) {
    return [this, direction](const LMRTCIWNetworkProbeStats& stats) {
      std::array<char, 96> text{};
      std::snprintf(text.data(), text.size(), "probe, %s: level %d, round trip %d ms, loss %.1f %%",
                    direction, static_cast<int>(stats.qualityLevel), static_cast<int>(stats.rtt),
                    static_cast<double>(stats.packetLostRate) * 100);
      log_.action(text.data());
    };
  };
  probeDelegate_->onNetworkProbeUpLinkStats = print("up");
  probeDelegate_->onNetworkProbeDownLinkStats = print("down");
  probeDelegate_->onNetworkProbeFinished = [this](std::int64_t, const std::string&) {
    lumo::MainQueue::async([this] { begin(); });
  };
  act("startNetworkProbe", [this] { return engine_->startNetworkProbe(probeDelegate_); });
}

void Call::begin() {
  for (std::size_t i = 0; i < participants_.size(); ++i) {
    if (!isLate(i)) bring(i);
  }
  planScript();
  draw();
  act("joinRoom roomId=" + options_.roomId,
      [this] { return engine_->joinRoom(options_.roomId, std::make_shared<LMRTCIWRoomSetup>()); });
}

void Call::planScript() {
  for (std::size_t i = 0; i < participants_.size(); ++i) {
    if (isLate(i)) at(0.15, [this, i] { bring(i); });
  }
  const auto script = [this](double fraction, std::size_t number, const char* what, auto operation) {
    at(fraction, [=, this] {
      if (const auto& participant = participants_[number])
        act(options_.names[number] + what, [&] { return operation(*participant); });
    });
  };
  if (!participants_.empty()) {
    const std::size_t last = participants_.size() - 1;
    script(0.4, 0, " mutes the microphone", [](auto& participant) { return participant.mute(true); });
    script(0.5, last, " switches the camera off",
           [](auto& participant) { return participant.disableVideo(true); });
    script(0.6, 0, " unmutes the microphone", [](auto& participant) { return participant.mute(false); });
    script(0.7, last, " switches the camera on",
           [](auto& participant) { return participant.disableVideo(false); });
  }
  at(1, [this] { leave(); });
}

void Call::bring(std::size_t number) {
  const std::string& name = options_.names[number];
  LumoRTCLocal::ParticipantOptions options;
  options.sourceNumber = sourceNumber(number);
  act(name + " joins the room", [&] {
    const auto joined = local_->join(options_.roomId, name, options);
    participants_[number] = joined.participant;
    return joined.code;
  });
  if (const auto& participant = participants_[number]) {
    // What the participants receive is not looked at: it is there for the statistics of what is sent.
    participant->onAudio([](const auto&, const auto&, auto) {});
    participant->onVideo([](const auto&, const auto&) {});
    participant->onSei(
        [this, name](const std::string& text) { log_.action(name + " gets the text: " + text); });
    act(name + " publishes microphone and camera",
        [&] { return participant->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo); });
  }
}

void Call::enterRoom() {
  if (!engine_) return;
  act("publish mediaType=" + std::to_string(kMedia), [this] { return engine_->publish(kMedia); });
  act("setLocalView",
      [this] { return engine_->setLocalViewWithViewDelegate(gallery_.surfaceOf(kLocalUserId).view()); });
  if (!options_.file.empty()) publishFile();
  if (!options_.watermark.empty()) setWatermark();
  if (!options_.sei.empty()) act("enableSei", [this] { return engine_->enableSei(true); });
  gallery_.layout();
  playSounds();
}

void Call::publishFile() {
  const std::string& tag = options_.tag;
  act("createCustomStreamFromFile tag=" + tag,
      [&] { return engine_->createCustomStreamFromFile(options_.file, tag, false, true); });
  act("setLocalCustomStreamView tag=" + tag, [&] {
    return engine_->setLocalCustomStreamViewWithViewDelegate(gallery_.surfaceOf(tag + " (file)").view(), tag);
  });
  act("publishCustomStream tag=" + tag, [&] { return engine_->publishCustomStream(tag); });
}

void Call::setWatermark() {
  act("setWatermark image=" + options_.watermark, [this] {
    return engine_->setWatermark(readPng(options_.watermark), kWatermarkX, kWatermarkY, kWatermarkZoom);
  });
}

void Call::sendText() {
  act("sendSei " + options_.sei, [this] { return engine_->sendSei(options_.sei); });
  for (const auto& participant : participants_)
    if (participant) participant->sendSei(participant->userId() + " has read: " + options_.sei);
}

void Call::receive(const std::string& userId, std::int64_t mediaType) {
  if (!engine_) return;
  act("subscribe userId=" + userId + " type=" + std::to_string(mediaType),
      [&] { return engine_->subscribe(userId, mediaType); });
  if (mediaType == LMRTCIWMediaTypeAudio) return;
  const Surface& surface = gallery_.surfaceOf(userId);
  if (surface.isBound()) engine_->removeRemoteView(userId);
  act("setRemoteView userId=" + userId,
      [&] { return engine_->setRemoteViewWithViewDelegate(surface.view(), userId); });
  gallery_.layout();
}

void Call::draw() {
  gallery_.tick();
  if (const auto report = options_.stats ? stats_.takeSettled() : std::nullopt)
    Screen::shared().block(statsTable(*report));
  main_->postAt(timeline_->now() + kTick, [this] { draw(); });
}

void Call::leave() {
  if (!engine_) return;
  main_->postAt(timeline_->now() + kPatience, [this] { end(false); });
  gallery_.tick();
  shown_ = gallery_.shown();
  act("unpublish mediaType=" + std::to_string(kMedia), [this] { return engine_->unpublish(kMedia); });
}

void Call::end(bool isAsPlanned) {
  if (std::exchange(hasEnded_, true)) return;
  log_.action("destroy");
  engine_->destroy();
  engine_.reset();
  participants_.clear();
  ended_.set_value(isAsPlanned);
}

void Call::at(double fraction, lumo::Runner::Task task) {
  const std::chrono::duration<double> delay(options_.seconds * fraction);
  main_->postAt(timeline_->now() + std::chrono::duration_cast<lumo::Microseconds>(delay), std::move(task));
}
