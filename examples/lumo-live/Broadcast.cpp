#include "examples/lumo-live/Broadcast.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "LumoRTCLibWrapper/model/LMRTCIWEngineSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWRoomSetup.h"
#include "LumoRTCLibWrapper/model/LMRTCIWTypes.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "examples/support/ContactSheet.h"
#include "examples/support/Names.h"

namespace {

constexpr char kLinkedHost[] = "Rosa";
constexpr std::int64_t kMedia = LMRTCIWMediaTypeAudioVideo;
constexpr std::int64_t kGrid = 3;  // layout modes and the render mode, as the host numbers them
constexpr std::int64_t kWhole = 2;

/// The local user over the whole width, Anna in the lower left corner.
std::vector<LMRTCIWCustomLayout> customLayouts(const std::string& localUserId) {
  LMRTCIWCustomLayout large(localUserId);
  large.width = 360;
  large.height = 480;
  LMRTCIWCustomLayout small(kNames[0]);
  small.x = 20;
  small.y = 400;
  small.width = 150;
  small.height = 200;
  return {large, small};
}

/// The local user and the host of the linked room side by side, in the landscape format.
std::vector<LMRTCIWCustomLayout> sideBySide(const std::string& localUserId) {
  LMRTCIWCustomLayout left(localUserId);
  left.width = 320;
  left.height = 360;
  LMRTCIWCustomLayout right(kLinkedHost);
  right.x = 320;
  right.width = 320;
  right.height = 360;
  return {left, right};
}

}  // namespace

Broadcast::Broadcast(const LiveOptions& options, std::shared_ptr<LumoRTCLocal> local)
    : options_(options),
      local_(std::move(local)),
      delegate_(std::make_shared<LMRTCIWEngineDelegate>()),
      engine_(LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>())),
      mixView_(LMRTCIWView::create({0, 0, 360, 640})),
      cdnView_(LMRTCIWView::create({0, 0, 480, 848})) {
  log_.fill(*delegate_);
  answers_.watch(*delegate_);
  engine_->setEngineDelegate(delegate_);
  local_->setPushFailed(
      [this](const std::string&, const std::string& error) { log_.action("push failed: " + error); });
}

Broadcast::~Broadcast() {
  if (linkedHost_) linkedHost_->onInvitation({});
  local_->setPushFailed({});
  engine_->destroy();
  local_->uninstall();
}

bool Broadcast::run() {
  bringBroadcasters();
  watchTheMix();
  goOnTheAir();
  stepThroughLayouts();
  if (!options_.linkedRoomId.empty()) linkRooms();
  showInnerCdn();
  goBackToTheAudience();
  act("leaveRoom", "onRoomLeft", [this] { return engine_->leaveRoom(); });
  return isAsPlanned_;
}

template <class Operation>
void Broadcast::act(const std::string& text, const char* answer, Operation operation) {
  log_.action(text);
  std::int64_t code = operation();
  if (code == 0 && answer) {
    const auto answered = answers_.next(answer);
    if (!answered) log_.action(std::string(answer) + " has not come");
    code = answered.value_or(-1);
  }
  if (code == 0) return;
  isAsPlanned_ = false;
  log_.action(text + " fails with code " + std::to_string(code));
}

void Broadcast::bringBroadcasters() {
  for (std::size_t i = 0; i < options_.broadcasters; ++i) {
    act(std::string(kNames[i]) + " joins and goes on the air", nullptr, [&, this] {
      const auto joined = local_->join(
          options_.roomId, kNames[i],
          {.role = LumoRTCLocal::Role::broadcaster, .sourceNumber = static_cast<std::uint32_t>(i) + 1});
      if (!joined.participant) return joined.code;
      broadcasters_.push_back(joined.participant);
      return joined.participant->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo);
    });
  }
}

void Broadcast::watchTheMix() {
  const auto setup = std::make_shared<LMRTCIWRoomSetup>();
  setup->role = LMRTCIWRoleLiveAudience;
  act("joinRoom as audience", "onRoomJoined", [&] { return engine_->joinRoom(options_.roomId, setup); });
  act("subscribeLiveMix", "onLiveMixSubscribed", [this] { return engine_->subscribeLiveMix(kMedia); });
  act("setLiveMixView", nullptr, [this] { return engine_->setLiveMixView(mixView_); });
  show("audience", *mixView_);
}

void Broadcast::goOnTheAir() {
  act("switchLiveRole to broadcaster", "onLiveRoleSwitched",
      [this] { return engine_->switchLiveRole(LMRTCIWRoleLiveBroadcaster); });
  act("publish", "onPublished", [this] { return engine_->publish(kMedia); });
  for (const std::string& address : options_.addresses)
    act("addLiveCdn " + address, "onLiveCdnAdded", [&] { return engine_->addLiveCdn(address); });
  show("broadcaster", *mixView_);
}

void Broadcast::stepThroughLayouts() {
  act("setLiveMixLayoutMode grid", "onLiveMixLayoutModeSet",
      [this] { return engine_->setLiveMixLayoutMode(kGrid); });
  show("grid", *mixView_);
  act("setLiveMixRenderMode whole", "onLiveMixRenderModeSet",
      [this] { return engine_->setLiveMixRenderMode(kWhole); });
  act("setLiveMixBackgroundColor 0x204060", "onLiveMixBackgroundColorSet",
      [this] { return engine_->setLiveMixBackgroundColor(0x204060); });
  show("grid-whole", *mixView_);
  act("setLiveMixCustomLayouts", "onLiveMixCustomLayoutsSet",
      [this] { return engine_->setLiveMixCustomLayouts(customLayouts("you")); });
  show("custom", *mixView_);
  act("setLiveMixLayoutMode grid", "onLiveMixLayoutModeSet",
      [this] { return engine_->setLiveMixLayoutMode(kGrid); });
  act("setLiveMixVideoResolution 640 x 360", "onLiveMixVideoResolutionSet",
      [this] { return engine_->setLiveMixVideoResolution(640, 360); });
  show("landscape", *mixView_);
}

void Broadcast::linkRooms() {
  const std::string& roomId = options_.linkedRoomId;
  bringLinkedHost();
  act("requestJoinSubRoom with automatic layout", "onJoinSubRoomRequestResponseReceived",
      [&, this] { return engine_->requestJoinSubRoom(roomId, kLinkedHost, true, "Sing with us"); });
  show("linked", *mixView_);
  act("joinSubRoom", "onSubRoomJoined", [&, this] { return engine_->joinSubRoom(roomId); });
  act("setLiveMixCustomLayouts side by side", "onLiveMixCustomLayoutsSet",
      [this] { return engine_->setLiveMixCustomLayouts(sideBySide("you")); });
  show("side-by-side", *mixView_);
  act("setLiveMixLayoutMode grid", "onLiveMixLayoutModeSet",
      [this] { return engine_->setLiveMixLayoutMode(kGrid); });
  act("leaveSubRoom and end the link", "onSubRoomLeft",
      [&, this] { return engine_->leaveSubRoom(roomId, true); });
  show("unlinked", *mixView_);
}

void Broadcast::bringLinkedHost() {
  const std::string& roomId = options_.linkedRoomId;
  act(std::string(kLinkedHost) + " joins room " + roomId + " and goes on the air", nullptr, [&, this] {
    const auto source = static_cast<std::uint32_t>(options_.broadcasters) + 1;
    const auto joined =
        local_->join(roomId, kLinkedHost, {.role = LumoRTCLocal::Role::broadcaster, .sourceNumber = source});
    if (!joined.participant) return joined.code;
    linkedHost_ = joined.participant;
    linkedHost_->onInvitation([this, host = std::weak_ptr(linkedHost_)](const auto& invitation) {
      const auto invited = host.lock();
      if (!invited || invitation.cancelled) return;
      log_.action(std::string(kLinkedHost) + " is invited by " + invitation.userId + " and accepts");
      invited->answer(invitation.roomId, invitation.userId, true, "With pleasure", true);
    });
    return linkedHost_->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo);
  });
}

void Broadcast::showInnerCdn() {
  act("enableLiveMixInnerCdnStream", "onLiveMixInnerCdnStreamEnabled",
      [this] { return engine_->enableLiveMixInnerCdnStream(true); });
  act("setLocalLiveMixInnerCdnVideoResolution 480 x 848", "onLocalLiveMixInnerCdnVideoResolutionSet",
      [this] { return engine_->setLocalLiveMixInnerCdnVideoResolution(480, 848); });
  act("subscribeLiveMixInnerCdnStream", "onLiveMixInnerCdnStreamSubscribed",
      [this] { return engine_->subscribeLiveMixInnerCdnStream(); });
  act("setLiveMixInnerCdnStreamView", nullptr,
      [this] { return engine_->setLiveMixInnerCdnStreamView(cdnView_); });
  show("inner-cdn", *cdnView_);
}

void Broadcast::goBackToTheAudience() {
  for (const std::string& address : options_.addresses)
    act("removeLiveCdn " + address, "onLiveCdnRemoved", [&] { return engine_->removeLiveCdn(address); });
  act("switchLiveRole to audience", "onLiveRoleSwitched",
      [this] { return engine_->switchLiveRole(LMRTCIWRoleLiveAudience); });
  show("audience-again", *mixView_);
}

void Broadcast::show(const std::string& name, const LMRTCIWView& view) {
  std::this_thread::sleep_for(std::chrono::duration<double>(options_.seconds));
  ++steps_;
  const auto video = std::dynamic_pointer_cast<lumo::LocalVideoView>(view.rtcVideoView());
  const auto picture = video ? video->picture() : nullptr;
  if (!picture) {
    isAsPlanned_ = false;
    return log_.action(name + " shows no picture");
  }
  log_.action(name + " shows " + std::to_string(picture->width()) + " x " +
              std::to_string(picture->height()));
  if (options_.pictures.empty()) return;
  lumo::Bitmap bitmap{picture->width(), picture->height(), {}};
  lumo::paint(*picture, 0, LMRTCVideoFillModeStretch, false, bitmap);
  const auto path = std::filesystem::path(options_.pictures) / (std::to_string(steps_) + "-" + name + ".png");
  const std::string error = writeContactSheet(path.string(), {{name, std::move(bitmap)}});
  if (error.empty()) return;
  isAsPlanned_ = false;
  log_.action(error);
}
