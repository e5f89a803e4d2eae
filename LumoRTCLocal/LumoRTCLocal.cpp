#include "LumoRTCLocal/LumoRTCLocal.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCProvider.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/ScriptedParticipant.h"
#include "LumoRTCLocal/media/CameraInput.h"
#include "LumoRTCLocal/media/SoundOutput.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/media/WavWriter.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/sdk/LocalEngine.h"
#include "LumoRTCLocal/sdk/LocalProvider.h"
#include "LumoRTCLocal/sdk/MachineAddress.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace {

constexpr std::uint32_t kLocalSource = 0;
constexpr std::size_t kLeastTidied = 64;

std::shared_ptr<const lumo::LocalContext> makeContext(const LumoRTCLocal::Options& options) {
  const auto context = std::make_shared<lumo::LocalContext>();
  context->userId = options.userId;
  context->networkType = options.networkType;
  context->ipAddress = options.ipAddress ? *options.ipAddress : lumo::machineAddress();
  context->timeline =
      options.pace == LumoRTCLocal::Pace::manual ? lumo::Timeline::manual() : lumo::Timeline::realTime();
  context->sdk = context->timeline->makeRunner("sdk");
  context->operations = std::make_shared<lumo::Operations>(context->timeline, context->sdk);
  context->renderGate = std::make_shared<lumo::CallbackGate>();
  context->audio = std::make_shared<lumo::AudioExchange>(context->timeline);
  context->server = std::make_shared<lumo::MediaServer>(context->timeline, context->sdk, context->audio);
  context->connection = context->server->makeConnection();
  context->speaker = std::make_shared<lumo::Speaker>();
  context->decoding = context->timeline->makeRunner("sound files");
  context->opening = context->timeline->makeRunner("open files");
  if (options.soundOutput) context->speaker->setOutput(lumo::SoundOutput::open());
  context->files = std::make_shared<lumo::FilePlayback>(context->audio, context->speaker);
  return context;
}

std::int64_t roomTypeFor(LumoRTCLocal::Role role) {
  return role == LumoRTCLocal::Role::member ? LMRTCRoomTypeNormal : LMRTCRoomTypeLive;
}

std::int64_t roleTypeFor(LumoRTCLocal::Role role) {
  return role == LumoRTCLocal::Role::audience ? LMRTCRoleTypeAudience : LMRTCRoleTypeBroadcaster;
}

LumoRTCLocal::JoinResult refusal(std::int64_t code) {
  return {code, std::string(lumo::localCodeText(code)), nullptr};
}

}  // namespace

struct LumoRTCLocal::State {
  explicit State(const Options& options)
      : pace(options.pace),
        context(makeContext(options)),
        cameras(
            std::make_shared<lumo::CameraPair>(std::make_unique<lumo::TestPictureSource>(kLocalSource),
                                               std::make_unique<lumo::TestPictureSource>(kBackCameraSource))),
        camera(std::make_shared<lumo::CameraPipeline>(context->timeline, "camera", cameras,
                                                      lumo::VideoFormat(), context->renderGate)),
        engine(std::make_shared<lumo::LocalEngine>(context, camera, cameras,
                                                   lumo::ScriptedParticipant::makeTone(kLocalSource))),
        provider(std::make_shared<lumo::LocalProvider>(engine, engine->audioMixer())) {}

  /// Lets `recorded`, the speaker or the microphone, write to another file.
  template <class Recorded>
  std::optional<std::string> record(lumo::Cell<std::shared_ptr<lumo::WavWriter>>& file,
                                    const std::string& path, Recorded& recorded);
  void keep(const std::shared_ptr<lumo::ScriptedParticipant>& participant);

  const Pace pace;
  const std::shared_ptr<const lumo::LocalContext> context;
  const std::shared_ptr<lumo::CameraPair> cameras;
  const std::shared_ptr<lumo::CameraPipeline> camera;
  const std::shared_ptr<lumo::LocalEngine> engine;
  const std::shared_ptr<lumo::LocalProvider> provider;

  /// Reads what participants publish; it has a speaker of its own, which nobody hears.
  const std::shared_ptr<lumo::FilePlayback> participantFiles =
      std::make_shared<lumo::FilePlayback>(context->audio, std::make_shared<lumo::Speaker>());
  lumo::Cell<std::shared_ptr<lumo::WavWriter>> speakerFile;
  lumo::Cell<std::shared_ptr<lumo::WavWriter>> microphoneFile;

  std::mutex mutex;  ///< guards what follows
  std::uint32_t lastSource = kLocalSource;
  std::vector<std::shared_ptr<lumo::ScriptedParticipant>> participants;
  std::size_t tidyAt = kLeastTidied;  ///< how many there are when those who have left are dropped
};

template <class Recorded>
std::optional<std::string> LumoRTCLocal::State::record(lumo::Cell<std::shared_ptr<lumo::WavWriter>>& file,
                                                       const std::string& path, Recorded& recorded) {
  recorded.setRecorder(nullptr);
  const auto former = file.exchange(nullptr);
  std::string error = former ? former->close() : std::string();
  if (!path.empty()) {
    auto created = lumo::WavWriter::create(*context->timeline, path);
    if (!created.writer) error = std::move(created.error);
    recorded.setRecorder(created.writer);
    file.set(std::move(created.writer));
  }
  if (error.empty()) return std::nullopt;
  return error;
}

void LumoRTCLocal::State::keep(const std::shared_ptr<lumo::ScriptedParticipant>& participant) {
  std::vector<std::shared_ptr<lumo::ScriptedParticipant>> gone;  // dropped after the lock
  const std::lock_guard lock(mutex);
  participants.push_back(participant);
  if (participants.size() < tidyAt) return;
  const auto left = std::partition(participants.begin(), participants.end(),
                                   [](const auto& kept) { return kept->isInRoom(); });
  gone.assign(std::move_iterator(left), std::move_iterator(participants.end()));
  participants.erase(left, participants.end());
  tidyAt = std::max(kLeastTidied, 2 * participants.size());
}

std::shared_ptr<LumoRTCLocal> LumoRTCLocal::install() { return install(Options()); }

std::shared_ptr<LumoRTCLocal> LumoRTCLocal::install(const Options& options) {
  std::shared_ptr<LumoRTCLocal> local(new LumoRTCLocal(std::make_unique<State>(options)));
  LMRTCProvider::install(local->state_->provider);
  return local;
}

LumoRTCLocal::LumoRTCLocal(std::unique_ptr<State> state) : state_(std::move(state)) {}

LumoRTCLocal::~LumoRTCLocal() {
  uninstall();
  if (state_->pace == Pace::manual) state_->context->operations->abandon();  // nobody can advance any more
}

void LumoRTCLocal::uninstall() {
  if (LMRTCProvider::installed() == state_->provider) LMRTCProvider::install(nullptr);
  state_->engine->unInit();
  recordSpeaker({});
  recordMicrophone({});
  std::vector<std::shared_ptr<lumo::ScriptedParticipant>> participants;
  {
    const std::lock_guard lock(state_->mutex);
    participants.swap(state_->participants);
  }
  for (const auto& participant : participants) participant->leave();
}

std::optional<std::string> LumoRTCLocal::setCamera(const std::string& path) {
  if (path.empty()) {
    state_->camera->setSource(state_->cameras);
    return std::nullopt;
  }
  auto opened = lumo::openCamera(path);
  if (!opened.source) return std::move(opened.error);
  state_->camera->setSource(std::move(opened.source));
  return std::nullopt;
}

std::optional<UIPoint> LumoRTCLocal::cameraFocusPosition() const {
  return state_->engine->camera().focusPosition();
}

std::optional<UIPoint> LumoRTCLocal::cameraExposurePosition() const {
  return state_->engine->camera().exposurePosition();
}

void LumoRTCLocal::setSpeaker(std::function<void(const lumo::AudioBlock&, lumo::Microseconds)> sink) {
  state_->context->speaker->setSink(std::move(sink));
}

std::optional<std::string> LumoRTCLocal::recordSpeaker(const std::string& path) {
  return state_->record(state_->speakerFile, path, *state_->context->speaker);
}

std::optional<std::string> LumoRTCLocal::recordMicrophone(const std::string& path) {
  return state_->record(state_->microphoneFile, path, *state_->engine->microphone());
}

LumoRTCLocal::JoinResult LumoRTCLocal::join(const std::string& roomId, const std::string& userId) {
  return join(roomId, userId, ParticipantOptions());
}

LumoRTCLocal::JoinResult LumoRTCLocal::join(const std::string& roomId, const std::string& userId,
                                            const ParticipantOptions& options) {
  if (!options.video.isValid()) return refusal(lumo::LocalCodeVideoFormat);
  lumo::CameraOpenResult camera;
  if (!options.camera.empty()) {
    camera = lumo::openCamera(options.camera);
    if (!camera.source) return {lumo::LocalCodeCameraFailed, std::move(camera.error), nullptr};
  }
  const lumo::LocalContext& context = *state_->context;
  const auto connection = context.server->makeConnection();
  connection->setModels(options.uplink, options.downlink);
  const auto joined = context.server->join(
      {roomId, userId, roomTypeFor(options.role), roleTypeFor(options.role), false, {}, {}, 0, connection});
  if (joined.code != lumo::LocalCodeSuccess) return refusal(joined.code);

  std::uint32_t number = 0;
  {
    const std::lock_guard lock(state_->mutex);
    number = options.sourceNumber ? *options.sourceNumber : ++state_->lastSource;
  }
  lumo::ScriptedParticipant::Parts parts{context.timeline,         context.server, context.audio,
                                         context.userId,           number,         options.video,
                                         std::move(camera.source), context.sdk,    context.decoding,
                                         state_->participantFiles, connection};
  const auto participant =
      std::make_shared<lumo::ScriptedParticipant>(std::move(parts), joined.member, userId);
  context.server->observeRemoval(joined.member, participant);
  state_->keep(participant);
  JoinResult result = refusal(lumo::LocalCodeSuccess);
  result.participant = participant;
  return result;
}

void LumoRTCLocal::setPushFailed(std::function<void(const std::string&, const std::string&)> sink) {
  state_->context->server->setPushFailed(std::move(sink));
}

void LumoRTCLocal::setNetwork(const lumo::NetworkModel& up, const lumo::NetworkModel& down) {
  state_->context->connection->setModels(up, down);
}

std::size_t LumoRTCLocal::advance(lumo::Microseconds duration) {
  return state_->context->timeline->advance(duration);
}

lumo::Microseconds LumoRTCLocal::now() const { return state_->context->timeline->now(); }

std::int64_t LumoRTCLocal::failNext(const std::string& operation, std::int64_t code, std::int32_t times) {
  return state_->context->operations->failNext(operation, code, times);
}

std::int64_t LumoRTCLocal::delayNext(const std::string& operation, lumo::Microseconds duration) {
  return state_->context->operations->delayNext(operation, duration);
}
