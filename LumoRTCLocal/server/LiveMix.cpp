#include "LumoRTCLocal/server/LiveMix.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/MixLayout.h"

namespace lumo {
namespace {

constexpr char kLiveTag[] = "live";
constexpr char kCdnTag[] = "cdn";

}  // namespace

MixInput::MixInput(std::shared_ptr<Publication> publication, bool isGuest, std::shared_ptr<AudioMix> sum)
    : publication_(std::move(publication)),
      isGuest_(isGuest),
      stream_{publication_->name().userId, publication_->name().tag},
      sum_(std::move(sum)) {}

bool MixInput::isVideo() const { return publication_->name().mediaType == LMRTCMediaTypeVideo; }

LMRTCVideoFrame MixInput::newest() {
  if (!publication_->isEnabled()) clear();  // so that a camera does not come back with an old picture
  return newest_.get();
}

void MixInput::receiveAudio(const AudioBlock& block, Microseconds /*time*/) {
  if (heard_.load(std::memory_order_relaxed)) sum_->add(block);
}

std::shared_ptr<LiveMix> LiveMix::create(const std::string& roomId, bool hasPicture,
                                         std::shared_ptr<Timeline> timeline,
                                         std::shared_ptr<AudioExchange> exchange,
                                         MixPushes::Failed pushFailed) {
  const std::shared_ptr<LiveMix> mix(
      new LiveMix(roomId, hasPicture, std::move(timeline), std::move(exchange), std::move(pushFailed)));
  mix->makeStreams(roomId);
  return mix;
}

LiveMix::LiveMix(const std::string& roomId, bool hasPicture, std::shared_ptr<Timeline> timeline,
                 std::shared_ptr<AudioExchange> exchange, MixPushes::Failed pushFailed)
    : hasPicture_(hasPicture),
      timeline_(std::move(timeline)),
      exchange_(std::move(exchange)),
      pushes_(std::make_shared<MixPushes>(timeline_, std::move(pushFailed))),
      inputs_(std::make_shared<const Inputs>()),
      settings_(std::make_shared<const MixSettings>()),
      runner_(timeline_->makeRunner("mix " + roomId)) {}

void LiveMix::makeStreams(const std::string& roomId) {
  const auto make = [&](const char* tag, std::int64_t mediaType, std::int64_t streamType) {
    return Publication::create({roomId, tag, mediaType, streamType}, true, nullptr,
                               [weak = weak_from_this()](const auto&) {
                                 if (const auto self = weak.lock()) self->update();
                               });
  };
  audio_ = make(kLiveTag, LMRTCMediaTypeAudio, LMRTCMediaStreamTypeLive);
  video_ = make(kLiveTag, LMRTCMediaTypeVideo, LMRTCMediaStreamTypeLive);
  cdn_ = make(kCdnTag, LMRTCMediaTypeVideo, LMRTCMediaStreamTypeCdn);
  streams_.push_back(audio_);
  if (hasPicture_) streams_.push_back(video_);
}

void LiveMix::add(const std::shared_ptr<Publication>& publication, bool isGuest) {
  const std::lock_guard lock(mutex_);
  const auto input = std::make_shared<MixInput>(publication, isGuest, sum_);
  input->setHeard(settings_.get()->hears(input->stream()));
  Inputs inputs = *inputs_.get();
  inputs.insert(isGuest ? inputs.end() : std::ranges::find_if(inputs, &MixInput::isGuest), input);
  inputs_.set(std::make_shared<const Inputs>(std::move(inputs)));
}

void LiveMix::remove(const Publication& publication) {
  const std::lock_guard lock(mutex_);
  Inputs inputs = *inputs_.get();
  std::erase_if(inputs,
                [&publication](const auto& input) { return input->publication().get() == &publication; });
  inputs_.set(std::make_shared<const Inputs>(std::move(inputs)));
}

bool LiveMix::wants(std::int64_t mediaType) const {
  if (mediaType == LMRTCMediaTypeAudio) return isSoundWanted();
  return isWanted(kNormal) || isWanted(kTiny) || isWanted(kCdn);
}

bool LiveMix::isSoundWanted() const { return audio_->isWanted() || cdn_->isWanted() || !pushes_->isEmpty(); }

bool LiveMix::isWanted(std::size_t size) const {
  if (!hasPicture_) return false;
  if (size == kNormal) return video_->isNormalWanted() || !pushes_->isEmpty();
  return size == kTiny ? video_->isTinyWanted() : cdn_->isWanted();
}

/// Replaces the settings by a copy to which `apply` answers 0.
template <class Change>
std::int64_t LiveMix::change(Change apply) {
  {
    const std::lock_guard lock(mutex_);
    const auto former = settings_.get();
    auto settings = std::make_shared<MixSettings>(*former);
    if (const std::int64_t code = apply(*settings)) return code;
    for (std::size_t size = 0; size < kSizes; ++size) {
      if (formatOf(size, *settings).framesPerSecond != formatOf(size, *former).framesPerSecond)
        outputs_[size].running = false;  // onto another grid
    }
    for (const auto& input : *inputs_.get()) input->setHeard(settings->hears(input->stream()));
    pushes_->setVideoBitrate(settings->videoBitrate);
    settings_.set(std::move(settings));
  }
  update();
  return 0;
}

std::int64_t LiveMix::configure(const LMRTCMixConfig& config) {
  return change([&config](MixSettings& settings) { return settings.apply(config); });
}

std::int64_t LiveMix::configureCdn(std::int64_t preset, std::int64_t fpsValue) {
  return change([=](MixSettings& settings) { return settings.applyCdn(preset, fpsValue); });
}

StreamFormat LiveMix::pushFormat() const {
  const auto settings = settings_.get();
  return {settings->picture.width, settings->picture.height, settings->picture.framesPerSecond,
          settings->videoBitrate,  settings->audioBitrate,   hasPicture_};
}

void LiveMix::update() {
  const std::lock_guard lock(mutex_);
  const bool rested = std::ranges::none_of(outputs_, &Output::running);
  for (std::size_t size = 0; size < kSizes; ++size) {
    if (outputs_[size].running || !isWanted(size)) continue;
    if (rested) {
      for (const auto& input : *inputs_.get()) input->clear();
    }
    startLocked(size);
  }
  const bool listens = isSoundWanted();
  if (std::exchange(listening_, listens) == listens) return;
  // Ahead of the speaker, which plays what the mix sends.
  if (listens) {
    exchange_->addListener(shared_from_this(), AudioExchange::Place::ahead);
  } else {
    exchange_->removeListener(shared_from_this());
  }
}

void LiveMix::startLocked(std::size_t size) {
  Output& output = outputs_[size];
  output.running = true;
  ++output.run;
  output.grid = FrameGrid(timeline_->now());
  schedule(size, output.run, output.grid.start());
}

void LiveMix::schedule(std::size_t size, std::uint64_t run, Microseconds time) {
  // The runner ends before the mix does, so that its tasks need no owner; two words also fit into the task
  // without an allocation.
  const std::uint64_t ticket = run * kSizes + size;
  runner_->postAt(time, [this, ticket] { tick(ticket % kSizes, ticket / kSizes); });
}

void LiveMix::tick(std::size_t size, std::uint64_t run) {
  const auto self = weak_from_this().lock();
  if (!self) return;
  Output& output = outputs_[size];
  {
    const std::lock_guard lock(mutex_);
    if (run != output.run || !output.running) return;
    output.running = isWanted(size);
    if (!output.running) return;
  }
  const auto settings = settings_.get();
  const Microseconds time = timeline_->now();
  send(size, compose(size, *settings), time);

  const std::lock_guard lock(mutex_);
  if (run != output.run || !output.running) return;
  const std::int32_t frameRate = formatOf(size, *settings).framesPerSecond;
  schedule(size, run, output.grid.next(timeline_->now(), frameRate));
}

std::shared_ptr<const LumoRTCI420Buffer> LiveMix::compose(std::size_t size, const MixSettings& settings) {
  const VideoFormat& format = formatOf(size, settings);
  pictures_.clear();
  shown_.clear();
  tiles_.clear();
  const auto inputs = inputs_.get();
  for (const auto& input : *inputs) {
    if (!input->isVideo()) continue;
    const LMRTCVideoFrame frame = input->newest();
    shown_.push_back(input.get());
    pictures_.push_back(frame.rtcVideoFrame ? frame.rtcVideoFrame->buffer->toI420() : nullptr);
    tiles_.push_back({pictures_.back().get(), frame.rotation, {}});
  }
  placeTiles(settings, format);
  auto mixed = outputs_[size].mixer.mix(
      tiles_, {format.width, format.height, settings.background, settings.showWhole});
  pictures_.clear();  // their memory goes back to their owners
  return mixed;
}

void LiveMix::placeTiles(const MixSettings& settings, const VideoFormat& format) {
  if (settings.layoutMode == LMRTCMixLayoutModeCustom) return placeCustom(settings, format);
  if (settings.layoutMode == LMRTCMixLayoutModeAdaptive) {
    placeInGrid(tiles_.size(), format.width, format.height, places_);
  } else {
    placeSuspended(tiles_.size(), format.width, format.height, places_);
  }
  for (std::size_t i = 0; i < tiles_.size(); ++i) tiles_[i].place = places_[i];
}

void LiveMix::placeCustom(const MixSettings& settings, const VideoFormat& format) {
  const std::size_t streams = tiles_.size();
  for (const MixPlacement& placement : settings.placements) {
    if (!settings.customMode) break;
    const auto found = std::ranges::find(shown_, placement.stream, &MixInput::stream);
    if (found == shown_.end()) continue;
    const auto scaledTo = [](std::int32_t value, std::int32_t length, std::int32_t from) {
      return static_cast<std::int32_t>(std::int64_t{value} * length / from);
    };
    MixTile tile = tiles_[static_cast<std::size_t>(found - shown_.begin())];
    tile.place = {scaledTo(placement.place.x, format.width, settings.picture.width),
                  scaledTo(placement.place.y, format.height, settings.picture.height),
                  scaledTo(placement.place.width, format.width, settings.picture.width),
                  scaledTo(placement.place.height, format.height, settings.picture.height)};
    tiles_.push_back(tile);
  }
  tiles_.erase(tiles_.begin(), tiles_.begin() + static_cast<std::ptrdiff_t>(streams));
}

void LiveMix::send(std::size_t size, const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                   Microseconds time) {
  const LMRTCVideoFrame frame = wrapper_.wrap(picture, time);
  if (size == kTiny) return video_->sendVideo(frame, true);
  if (size == kNormal) {
    video_->sendVideo(frame, false);
    return pushes_->writePicture(picture, time);
  }
  for (const bool toTiny : {false, true}) cdn_->sendVideo(frame, toTiny);  // it has one size
}

void LiveMix::audioTickBegins(Microseconds /*time*/) { sum_->clear(); }

void LiveMix::audioTick(Microseconds time) {
  sum_->write(block_);
  audio_->sendAudio(block_, time);
  cdn_->sendAudio(block_, time);
  pushes_->writeSound(block_, time);
}

const VideoFormat& LiveMix::formatOf(std::size_t size, const MixSettings& settings) {
  return size == kNormal ? settings.picture : size == kTiny ? settings.tinyPicture : settings.cdnPicture;
}

}  // namespace lumo
