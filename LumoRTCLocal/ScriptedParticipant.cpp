#include "LumoRTCLocal/ScriptedParticipant.h"

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

constexpr double kBaseToneHz = 300;
constexpr double kToneStepHz = 100;
constexpr std::uint32_t kTones = 200;  // the highest stays below half the sample rate

std::vector<std::int64_t> mediaTypes(LumoRTCLocal::Media media) {
  switch (media) {
    case LumoRTCLocal::Media::audio:
      return {LMRTCMediaTypeAudio};
    case LumoRTCLocal::Media::video:
      return {LMRTCMediaTypeVideo};
    case LumoRTCLocal::Media::audioAndVideo:
      break;
  }
  return {LMRTCMediaTypeAudio, LMRTCMediaTypeVideo};
}

using SeiCell = Cell<std::shared_ptr<const LumoRTCLocal::Participant::SeiSink>>;

template <class Sink>
class TapReceiver : public MediaReceiver {
 public:
  TapReceiver(std::shared_ptr<const Sink> sink, std::string tag, std::shared_ptr<const SeiCell> sei = {})
      : sink_(std::move(sink)), tag_(std::move(tag)), sei_(std::move(sei)) {}

  void receiveAudio(const AudioBlock& block, Microseconds time) override {
    if constexpr (std::is_invocable_v<Sink, std::string, AudioBlock, Microseconds>)
      (*sink_)(tag_, block, time);
  }
  void receiveVideo(const LMRTCVideoFrame& frame) override {
    if constexpr (std::is_invocable_v<Sink, std::string, LMRTCVideoFrame>) (*sink_)(tag_, frame);
  }

  void receiveSei(const std::string& text) override {
    if (const auto sink = sei_ ? sei_->get() : nullptr) (*sink)(text);
  }

 private:
  const std::shared_ptr<const Sink> sink_;
  const std::string tag_;
  const std::shared_ptr<const SeiCell> sei_;
};

}  // namespace

ScriptedParticipant::ScriptedParticipant(Parts parts, MediaServer::Member member, std::string userId)
    : member_(std::move(member)),
      userId_(std::move(userId)),
      connection_(std::move(parts.connection)),
      parts_(std::move(parts)) {}

ScriptedParticipant::~ScriptedParticipant() { leaveRoom(false); }

std::unique_ptr<AudioSource> ScriptedParticipant::makeTone(std::uint32_t sourceNumber) {
  return std::make_unique<ToneSource>(kBaseToneHz + kToneStepHz * (sourceNumber % kTones));
}

std::int64_t ScriptedParticipant::publishAudio() { return publish(kLMRTCDefaultStreamTag, Media::audio, {}); }

std::int64_t ScriptedParticipant::publishVideo() { return publish(kLMRTCDefaultStreamTag, Media::video, {}); }

std::int64_t ScriptedParticipant::publish(const std::string& tag, Media media,
                                          std::optional<std::uint32_t> sourceNumber) {
  const std::lock_guard lock(mutex_);
  const bool custom = tag != kLMRTCDefaultStreamTag;
  const std::uint32_t number = custom ? sourceNumber.value_or(parts_.sourceNumber) : parts_.sourceNumber;
  const auto types = mediaTypes(media);
  Publications publications;
  for (const std::int64_t type : types) {
    publications.push_back(makePublication(tag, type, sources_[{tag, type}], number));
  }
  const std::int64_t code = parts_.server->publish(member_, publications);
  if (code != LocalCodeSuccess) return code;
  for (std::size_t i = 0; i < types.size(); ++i) opened(sources_[{tag, types[i]}], publications[i], number);
  return LocalCodeSuccess;
}

std::int64_t ScriptedParticipant::publishFile(const std::string& tag, const std::string& path) {
  if (tag == kLMRTCDefaultStreamTag) return LocalCodeNotACustomTag;
  const auto file = std::make_shared<PublishedFile>();
  file->tag = tag;
  file->pipeline =
      std::make_shared<CameraPipeline>(parts_.timeline, "file " + userId_, nullptr, parts_.video);
  file->pipeline->setActive(true);
  const auto ended = [weak = weak_from_this(), weakFile = std::weak_ptr(file),
                      weakSdk = std::weak_ptr(parts_.sdk)] {
    const auto sdk = weakSdk.lock();
    if (!sdk) return;
    sdk->post([weak, weakFile] {
      const auto self = weak.lock();
      const auto whole = weakFile.lock();
      if (self && whole) self->fileEnded(whole);
    });
  };
  file->reading = FileReading::open(path, {file->pipeline, parts_.files, parts_.decoding}, ended).reading;
  if (!file->reading) return LocalCodeFileFailed;
  const std::lock_guard lock(mutex_);
  file->publications = makePublications(*file);
  const std::int64_t code = parts_.server->publish(member_, file->publications);
  if (code != LocalCodeSuccess) return code;
  file->pipeline->setPublication(file->publications.back());
  file->reading->start();
  files_.push_back(file);
  return LocalCodeSuccess;
}

std::int64_t ScriptedParticipant::unpublishAudio() { return unpublish(kLMRTCDefaultStreamTag, Media::audio); }

std::int64_t ScriptedParticipant::unpublishVideo() { return unpublish(kLMRTCDefaultStreamTag, Media::video); }

std::int64_t ScriptedParticipant::unpublish(const std::string& tag, Media media) {
  Files closedFiles;
  const std::lock_guard lock(mutex_);
  if (!isInRoom()) return LocalCodeNotInRoom;
  Publications publications;
  for (const std::int64_t type : mediaTypes(media)) {
    const auto open = publicationOf(tag, type);
    if (!open) return LocalCodeNotPublished;
    publications.push_back(open);
  }
  const std::int64_t code = parts_.server->unpublish(member_, publications);
  if (code != LocalCodeSuccess) return code;
  for (const std::int64_t type : mediaTypes(media)) closed(sources_[{tag, type}]);
  for (const auto& file : files_) {
    std::erase_if(file->publications,
                  [&](const auto& open) { return std::ranges::count(publications, open) > 0; });
  }
  closedFiles = takeClosedFiles();
  return LocalCodeSuccess;
}

std::int64_t ScriptedParticipant::mute(const std::string& tag, bool muted) {
  return setEnabled(tag, LMRTCMediaTypeAudio, !muted);
}

std::int64_t ScriptedParticipant::disableVideo(bool disabled) {
  return disableVideo(kLMRTCDefaultStreamTag, disabled);
}

std::int64_t ScriptedParticipant::disableVideo(const std::string& tag, bool disabled) {
  return setEnabled(tag, LMRTCMediaTypeVideo, !disabled);
}

std::int64_t ScriptedParticipant::switchRole(Role role) {
  Files closedFiles;
  const std::lock_guard lock(mutex_);
  if (role == Role::member) return LocalCodeNotALiveRoom;
  const bool audience = role == Role::audience;
  const std::int64_t code =
      parts_.server->switchRole(member_, audience ? LMRTCRoleTypeAudience : LMRTCRoleTypeBroadcaster);
  if (code != LocalCodeSuccess) return code;
  closedFiles = closeAll();
  return LocalCodeSuccess;
}

std::int64_t ScriptedParticipant::setMixConfig(const LMRTCMixConfig& config) {
  return parts_.server->setMixConfig(member_, config);
}

std::int64_t ScriptedParticipant::enableInnerCdn(bool enabled) {
  return parts_.server->enableCdn(member_, enabled);
}

std::int64_t ScriptedParticipant::sendSei(const std::string& text) {
  const std::lock_guard lock(mutex_);
  return parts_.server->sendSei(member_, text);
}

std::int64_t ScriptedParticipant::kick(const std::string& userId, std::int64_t reason) {
  return parts_.server->kick(member_, userId, reason);
}

std::int64_t ScriptedParticipant::linkRoom(const std::string& otherRoomId, bool autoMix) {
  return parts_.server->linkRoom(member_, otherRoomId, autoMix);
}

std::int64_t ScriptedParticipant::unlinkRoom(const std::string& otherRoomId) {
  return parts_.server->unlinkRoom(member_, otherRoomId);
}

std::int64_t ScriptedParticipant::invite(const std::string& roomId, const std::string& userId,
                                         const std::string& extra, bool autoMix) {
  return parts_.server->requestLink(member_, {roomId, userId}, autoMix, extra);
}

std::int64_t ScriptedParticipant::cancelInvite(const std::string& roomId, const std::string& userId,
                                               const std::string& extra) {
  return parts_.server->cancelLinkRequest(member_, {roomId, userId}, extra);
}

std::int64_t ScriptedParticipant::answer(const std::string& roomId, const std::string& userId, bool agree,
                                         const std::string& extra, bool autoMix) {
  return parts_.server->answerLinkRequest(member_, {roomId, userId}, agree, autoMix, extra);
}

std::int64_t ScriptedParticipant::visit(const std::string& roomId) {
  const std::lock_guard lock(mutex_);
  const auto visited = parts_.server->visit(member_, roomId, weak_from_this());
  for (const MemberSnapshot& present : visited.present) {
    for (const PublicationState& state : present.publications) tap(state.publication);
  }
  return visited.code;
}

std::int64_t ScriptedParticipant::endVisit(const std::string& roomId) {
  return parts_.server->endVisit(member_, roomId);
}

void ScriptedParticipant::onInvitation(InvitationSink sink) {
  invitations_.set(sink ? std::make_shared<const InvitationSink>(std::move(sink)) : nullptr);
  parts_.server->observeLinks(member_, weak_from_this());
}

void ScriptedParticipant::onAudio(AudioSink sink) {
  if (!sink) return receive(LMRTCMediaTypeAudio, nullptr);
  const auto make = [shared = std::make_shared<const AudioSink>(std::move(sink))](const std::string& tag) {
    return std::make_shared<TapReceiver<AudioSink>>(shared, tag);
  };
  receive(LMRTCMediaTypeAudio, std::make_shared<const Tap>(Tap{make, false}));
}

void ScriptedParticipant::onVideo(VideoSink sink, bool tiny) {
  if (!sink) return receive(LMRTCMediaTypeVideo, nullptr);
  const auto make = [shared = std::make_shared<const VideoSink>(std::move(sink)),
                     sei = sei_](const std::string& tag) {
    return std::make_shared<TapReceiver<VideoSink>>(shared, tag, sei);
  };
  receive(LMRTCMediaTypeVideo, std::make_shared<const Tap>(Tap{make, tiny}));
}

bool ScriptedParticipant::isInRoom() const { return parts_.server->isPresent(member_); }

void ScriptedParticipant::streamsPublished(const std::vector<PublicationState>& streams) {
  const std::lock_guard lock(mutex_);
  for (const PublicationState& state : streams) tap(state.publication);
}

void ScriptedParticipant::kicked(std::int64_t /*reason*/) {
  Files closedFiles;
  const std::lock_guard lock(mutex_);
  closedFiles = closeAll();
}

void ScriptedParticipant::linkRequested(const LinkEnd& inviter, const std::string& extra) {
  tellInvitation({inviter.roomId, inviter.userId, extra, false});
}

void ScriptedParticipant::linkRequestCancelled(const LinkEnd& inviter, const std::string& extra) {
  tellInvitation({inviter.roomId, inviter.userId, extra, true});
}

void ScriptedParticipant::tellInvitation(const Invitation& invitation) const {
  if (const auto sink = invitations_.get()) (*sink)(invitation);
}

std::shared_ptr<Publication> ScriptedParticipant::makePublication(const std::string& tag,
                                                                  std::int64_t mediaType, Source& source,
                                                                  std::uint32_t number) {
  const bool custom = tag != kLMRTCDefaultStreamTag;
  StreamName name{userId_, tag, mediaType, custom ? LMRTCMediaStreamTypeCustom : LMRTCMediaStreamTypeNormal};
  if (mediaType == LMRTCMediaTypeAudio) {
    return Publication::create(std::move(name), source.enabled, makeTone(number), demandOf(parts_.audio));
  }
  if (!source.pipeline) {
    source.pipeline = makePipeline(tag, number);
    source.number = number;
  }
  return Publication::create(std::move(name), source.enabled, nullptr, demandOf(source.pipeline));
}

std::shared_ptr<CameraPipeline> ScriptedParticipant::makePipeline(const std::string& tag,
                                                                  std::uint32_t number) {
  std::shared_ptr<VideoSource> source;
  if (tag == kLMRTCDefaultStreamTag) source = std::move(parts_.camera);
  if (!source) source = std::make_shared<TestPictureSource>(number);
  const auto pipeline =
      std::make_shared<CameraPipeline>(parts_.timeline, "camera " + userId_, std::move(source), parts_.video);
  pipeline->setActive(true);
  return pipeline;
}

void ScriptedParticipant::opened(Source& source, const std::shared_ptr<Publication>& publication,
                                 std::uint32_t number) {
  source.publication = publication;
  if (!source.pipeline) return;
  if (source.number != number) source.pipeline->setSource(std::make_shared<TestPictureSource>(number));
  source.number = number;
  source.pipeline->setPublication(publication);
}

void ScriptedParticipant::closed(Source& source) {
  source.publication = nullptr;
  if (source.pipeline) source.pipeline->setPublication(nullptr);
}

std::int64_t ScriptedParticipant::setEnabled(const std::string& tag, std::int64_t mediaType, bool enabled) {
  const std::lock_guard lock(mutex_);
  if (!isInRoom()) return LocalCodeNotInRoom;
  Source& source = sources_[{tag, mediaType}];
  source.enabled = enabled;
  if (const auto open = publicationOf(tag, mediaType)) parts_.server->setEnabled(open, enabled);
  return LocalCodeSuccess;
}

std::shared_ptr<Publication> ScriptedParticipant::publicationOf(const std::string& tag,
                                                                std::int64_t mediaType) {
  for (const auto& file : files_) {
    for (const auto& open : file->publications) {
      if (file->tag == tag && open->name().mediaType == mediaType) return open;
    }
  }
  return sources_[{tag, mediaType}].publication;
}

Publications ScriptedParticipant::makePublications(const PublishedFile& file) {
  StreamName name{userId_, file.tag, LMRTCMediaTypeAudio, LMRTCMediaStreamTypeCustom};
  Publications publications;
  if (const auto& voice = file.reading->voice()) {
    voice->setHasPublication(true);
    publications.push_back(Publication::create(name, sources_[{file.tag, name.mediaType}].enabled, voice,
                                               demandOf(parts_.audio)));
  }
  name.mediaType = LMRTCMediaTypeVideo;
  publications.push_back(Publication::create(name, sources_[{file.tag, name.mediaType}].enabled, nullptr,
                                             demandOf(file.pipeline)));
  return publications;
}

void ScriptedParticipant::fileEnded(const std::shared_ptr<PublishedFile>& file) {
  Files closedFiles;
  const std::lock_guard lock(mutex_);
  if (!file->publications.empty()) parts_.server->unpublish(member_, file->publications);
  file->publications.clear();
  closedFiles = takeClosedFiles();
}

ScriptedParticipant::Files ScriptedParticipant::closeAll() {
  for (auto& [key, source] : sources_) closed(source);
  for (const auto& file : files_) file->publications.clear();
  return takeClosedFiles();
}

ScriptedParticipant::Files ScriptedParticipant::takeClosedFiles() {
  const auto open = std::partition(files_.begin(), files_.end(),
                                   [](const auto& file) { return !file->publications.empty(); });
  Files closedFiles(std::make_move_iterator(open), std::make_move_iterator(files_.end()));
  files_.erase(open, files_.end());
  for (const auto& file : closedFiles) file->reading->stop();
  return closedFiles;
}

std::int64_t ScriptedParticipant::leaveRoom(bool offline) {
  Files closedFiles;
  const std::lock_guard lock(mutex_);
  const std::int64_t code = parts_.server->leave(member_, offline);
  closedFiles = closeAll();
  return code;
}

void ScriptedParticipant::receive(std::int64_t mediaType, std::shared_ptr<const Tap> tapped) {
  // The former tap, and with it the script's former sink, goes after the lock.
  const std::lock_guard lock(mutex_);
  std::swap(taps_[mediaType], tapped);
  const bool receives = taps_[mediaType] != nullptr;
  for (const MemberSnapshot& present : parts_.server->observe(member_, weak_from_this())) {
    for (const PublicationState& state : present.publications) {
      if (state.publication->name().mediaType != mediaType || present.userId != parts_.localUserId) continue;
      if (receives) {
        tap(state.publication);
      } else {
        parts_.server->unsubscribe(member_, {state.publication});
      }
    }
  }
}

void ScriptedParticipant::tap(const std::shared_ptr<Publication>& stream) {
  const StreamName& name = stream->name();
  const auto found = taps_.find(name.mediaType);
  if (name.userId != parts_.localUserId || found == taps_.end() || !found->second) return;
  parts_.server->subscribe(member_, {{stream, found->second->makeReceiver(name.tag), found->second->tiny}});
}

}  // namespace lumo
