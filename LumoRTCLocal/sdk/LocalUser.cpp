#include "LumoRTCLocal/sdk/LocalUser.h"

#include <algorithm>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/sdk/LocalFileStream.h"
#include "LumoRTCLocal/sdk/LocalInputStream.h"
#include "LumoRTCLocal/sdk/LocalLiveInfo.h"
#include "LumoRTCLocal/sdk/LocalOutputStream.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

/// The publications of `streams`, made for those that have none; a stream that is named twice keeps one.
/// @return false when a stream is absent or foreign
bool collect(const LMRTCLocalUser::OutputStreams& streams, Publications& publications) {
  for (std::size_t i = 0; i < streams.size(); ++i) {
    const auto output = std::dynamic_pointer_cast<LocalOutput>(streams[i]);
    if (!output) return false;
    const auto first = static_cast<std::size_t>(std::ranges::find(streams, streams[i]) - streams.begin());
    const auto open = output->publication();
    publications.push_back(first < i ? publications[first] : open ? open : output->makePublication());
  }
  return true;
}

std::shared_ptr<LocalFileStream> asFile(const std::shared_ptr<LMRTCOutputStream>& stream) {
  return std::dynamic_pointer_cast<LocalFileStream>(stream);
}

/// The publications that an unpublishing concerns. Of a file that is still being opened there are none.
/// @return false when a stream is absent or foreign
bool collectOpen(const LMRTCLocalUser::OutputStreams& streams, Publications& publications) {
  for (const auto& stream : streams) {
    if (const auto file = asFile(stream); file && file->isStarted()) {
      for (auto& open : file->publications()) publications.push_back(std::move(open));
    } else if (!collect({stream}, publications)) {
      return false;
    }
  }
  return true;
}

bool collect(const LMRTCLocalUser::InputStreams& streams,
             std::vector<std::shared_ptr<RemoteStream>>& remote) {
  for (const auto& stream : streams) {
    auto found = std::dynamic_pointer_cast<RemoteStream>(stream);
    if (!found) return false;
    remote.push_back(std::move(found));
  }
  return true;
}

void attach(const std::shared_ptr<LMRTCOutputStream>& stream,
            const std::shared_ptr<Publication>& publication) {
  std::dynamic_pointer_cast<LocalOutput>(stream)->attach(publication);
}

LMRTCLocalUser::Completion codeOnly(LMRTCLocalUser::CodeCompletion completion) {
  return [completion = std::move(completion)](bool, std::int64_t code) {
    if (completion) completion(code);
  };
}

}  // namespace

LocalUser::LocalUser(std::shared_ptr<const LocalContext> context, MediaServer::Member member,
                     Outputs defaults, std::function<void()> kicked)
    : context_(std::move(context)),
      member_(std::move(member)),
      defaults_(std::move(defaults)),
      kicked_(std::move(kicked)) {}

void LocalUser::close() {
  OutputStreams closed;  // goes after the lock: this may be the last to hold a file's stream
  const std::lock_guard lock(mutex_);
  open_ = false;
  for (const auto& stream : published_) attach(stream, nullptr);
  closed.swap(published_);
}

Publications LocalUser::publications() const {
  Publications publications;
  for (const auto& stream : streams()) {
    if (const auto file = asFile(stream)) {
      for (auto& open : file->publications()) publications.push_back(std::move(open));
    } else if (auto open = std::dynamic_pointer_cast<LocalOutput>(stream)->publication()) {
      publications.push_back(std::move(open));
    }
  }
  return publications;
}

LMRTCLocalUser::OutputStreams LocalUser::streams() const {
  const std::lock_guard lock(mutex_);
  return published_;
}

void LocalUser::publishStreams(const OutputStreams& streams, Completion completion) {
  run("publishStreams", std::move(completion),
      [streams](LocalUser& self) { return self.doPublish(streams, RoomKind::normal); });
}

void LocalUser::unpublishStreams(const OutputStreams& streams, Completion completion) {
  unpublish("unpublishStreams", streams, RoomKind::normal, std::move(completion));
}

void LocalUser::publishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                                  LiveCompletion completion) {
  publishLive("publishLiveStream", {stream}, std::move(completion));
}

void LocalUser::publishDefaultLiveStreams(LiveCompletion completion) {
  publishLive("publishDefaultLiveStreams", defaults_, std::move(completion));
}

void LocalUser::unpublishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) {
  unpublish("unpublishLiveStream", {stream}, RoomKind::live, std::move(completion));
}

void LocalUser::unpublishDefaultLiveStreams(Completion completion) {
  unpublish("unpublishDefaultLiveStreams", defaults_, RoomKind::live, std::move(completion));
}

void LocalUser::subscribeStream(const std::optional<InputStreams>& streams,
                                const std::optional<InputStreams>& tinyStreams, Completion completion) {
  run("subscribeStream", std::move(completion),
      [streams = streams.value_or(InputStreams()), tiny = tinyStreams.value_or(InputStreams())](
          LocalUser& self) { return self.doSubscribe(streams, tiny); });
}

void LocalUser::unsubscribeStreams(const InputStreams& streams, Completion completion) {
  run("unsubscribeStreams", std::move(completion),
      [streams](LocalUser& self) { return self.doUnsubscribe(streams); });
}

void LocalUser::publishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) {
  publishStreams({stream}, std::move(completion));
}

void LocalUser::unpublishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) {
  unpublishStreams({stream}, std::move(completion));
}

void LocalUser::switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster onSucceed,
                                    Failed onFailed, Kicked onKicked) {
  switchRole(
      "switchToBroadcaster",
      [config = config ? std::optional(*config) : std::nullopt](LocalUser& self) {
        return self.context_->server->switchRole(self.member_, LMRTCRoleTypeBroadcaster,
                                                 config ? &*config : nullptr);
      },
      [onSucceed = std::move(onSucceed)](LocalUser& self) {
        if (onSucceed) onSucceed(self.liveInfo());
      },
      std::move(onFailed), std::move(onKicked));
}

void LocalUser::switchToAudienceOnSucceed(std::function<void()> onSucceed, Failed onFailed, Kicked onKicked) {
  switchRole(
      "switchToAudienceOnSucceed", [](LocalUser& self) { return self.becomeAudience(); },
      [onSucceed = std::move(onSucceed)](LocalUser&) {
        if (onSucceed) onSucceed();
      },
      std::move(onFailed), std::move(onKicked));
}

void LocalUser::requestJoinOtherRoom(const std::string& roomId, const std::string& userId, bool autoMix,
                                     const std::string& extra, CodeCompletion completion) {
  run("requestJoinOtherRoom", codeOnly(std::move(completion)),
      [invitee = LinkEnd{roomId, userId}, autoMix, extra](LocalUser& self) {
        return self.context_->server->requestLink(self.member_, invitee, autoMix, extra);
      });
}

void LocalUser::cancelRequestJoinOtherRoom(const std::string& roomId, const std::string& userId,
                                           const std::string& extra, CodeCompletion completion) {
  run("cancelRequestJoinOtherRoom", codeOnly(std::move(completion)),
      [invitee = LinkEnd{roomId, userId}, extra](LocalUser& self) {
        return self.context_->server->cancelLinkRequest(self.member_, invitee, extra);
      });
}

void LocalUser::responseJoinOtherRoom(const std::string& roomId, const std::string& userId, bool agree,
                                      bool autoMix, const std::string& extra, CodeCompletion completion) {
  run("responseJoinOtherRoom", codeOnly(std::move(completion)),
      [inviter = LinkEnd{roomId, userId}, agree, autoMix, extra](LocalUser& self) {
        return self.context_->server->answerLinkRequest(self.member_, inviter, agree, autoMix, extra);
      });
}

void LocalUser::setEnableSEI(bool enabled, CodeCompletion completion) {
  run("setEnableSEI", codeOnly(std::move(completion)), [enabled](LocalUser& self) {
    self.seiEnabled_ = enabled;
    return std::int64_t{LocalCodeSuccess};
  });
}

std::int64_t LocalUser::sendSEI(const std::string& sei) {
  if (!seiEnabled_) return LocalCodeSeiNotEnabled;
  return context_->server->sendSei(member_, sei);
}

template <class Work>
void LocalUser::run(std::string_view name, Completion completion, Work work) {
  context_->operations->run(name, [weak = weak_from_this(), completion = std::move(completion),
                                   work = std::move(work)](std::int64_t refusal) {
    std::int64_t code = refusal;
    if (const auto self = weak.lock(); code == LocalCodeSuccess)
      code = self ? work(*self) : LocalCodeNotInRoom;
    if (completion) completion(code == LocalCodeSuccess, code);
  });
}

void LocalUser::publishLive(std::string_view name, const OutputStreams& streams, LiveCompletion completion) {
  const auto liveInfo = std::make_shared<std::shared_ptr<LMRTCLiveInfo>>();
  run(
      name,
      [liveInfo, completion = std::move(completion)](bool success, std::int64_t code) {
        if (completion) completion(success, code, *liveInfo);
      },
      [streams, liveInfo](LocalUser& self) {
        const std::int64_t code = self.doPublish(streams, RoomKind::live);
        if (code == LocalCodeSuccess) *liveInfo = self.liveInfo();
        return code;
      });
}

void LocalUser::unpublish(std::string_view name, const OutputStreams& streams, RoomKind kind,
                          Completion completion) {
  run(name, std::move(completion),
      [streams, kind](LocalUser& self) { return self.doUnpublish(streams, kind); });
}

std::int64_t LocalUser::doPublish(const OutputStreams& streams, RoomKind kind) {
  Publications publications;
  if (!collect(streams, publications)) return LocalCodeUnknownStream;
  const bool isLive = kind == RoomKind::live;
  // Files enter the room later, when they have been opened.
  Publications present;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    const auto file = asFile(streams[i]);
    if (file && file->isStarted()) return LocalCodeAlreadyPublished;
    if (!file) present.push_back(publications[i]);
  }
  std::int64_t code = context_->server->mayPublish(member_, publications, isLive);
  if (code == LocalCodeSuccess && !present.empty())
    code = context_->server->publish(member_, present, isLive);
  if (code != LocalCodeSuccess) return code;
  const std::lock_guard lock(mutex_);
  if (!open_) return LocalCodeNotInRoom;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    published_.push_back(streams[i]);
    if (const auto file = asFile(streams[i])) {
      startFile(file, isLive);
    } else {
      attach(streams[i], publications[i]);
    }
  }
  return LocalCodeSuccess;
}

void LocalUser::startFile(const std::shared_ptr<LocalFileStream>& stream, bool isLive) {
  stream->start({[weak = weak_from_this(), isLive](const Publications& publications) {
                   const auto self = weak.lock();
                   return self && self->context_->server->publish(self->member_, publications, isLive) ==
                                      LocalCodeSuccess;
                 },
                 [weak = weak_from_this(), file = std::weak_ptr<LocalFileStream>(stream)] {
                   if (const auto self = weak.lock()) self->dropFile(file);
                 }});
}

void LocalUser::dropFile(const std::weak_ptr<LocalFileStream>& stream) {
  const std::lock_guard lock(mutex_);
  std::erase(published_, stream.lock());
}

std::int64_t LocalUser::doUnpublish(const OutputStreams& streams, RoomKind kind) {
  Publications publications;
  if (!collectOpen(streams, publications)) return LocalCodeUnknownStream;
  if (streams.empty() || !publications.empty()) {
    const auto code = context_->server->unpublish(member_, publications, kind == RoomKind::live);
    if (code != LocalCodeSuccess) return code;
  }
  const std::lock_guard lock(mutex_);
  for (const auto& stream : streams) {
    attach(stream, nullptr);
    std::erase(published_, stream);
  }
  return LocalCodeSuccess;
}

std::int64_t LocalUser::doSubscribe(const InputStreams& streams, const InputStreams& tinyStreams) {
  std::vector<std::shared_ptr<RemoteStream>> remote;
  if (!collect(streams, remote) || !collect(tinyStreams, remote)) return LocalCodeUnknownStream;
  std::vector<MediaServer::Subscription> subscriptions;
  subscriptions.reserve(remote.size());
  for (const auto& stream : remote) {
    subscriptions.push_back({stream->publication(), stream, subscriptions.size() >= streams.size()});
  }
  const auto code = context_->server->subscribe(member_, subscriptions);
  if (code != LocalCodeSuccess) return code;
  for (const auto& stream : remote) stream->setSubscribed(true);
  return LocalCodeSuccess;
}

std::int64_t LocalUser::doUnsubscribe(const InputStreams& streams) {
  std::vector<std::shared_ptr<RemoteStream>> remote;
  if (!collect(streams, remote)) return LocalCodeUnknownStream;
  Publications publications;
  publications.reserve(remote.size());
  for (const auto& stream : remote) publications.push_back(stream->publication());
  const auto code = context_->server->unsubscribe(member_, publications);
  if (code != LocalCodeSuccess) return code;
  for (const auto& stream : remote) stream->setSubscribed(false);
  return LocalCodeSuccess;
}

std::int64_t LocalUser::becomeAudience() {
  const auto code = context_->server->switchRole(member_, LMRTCRoleTypeAudience);
  if (code != LocalCodeSuccess) return code;
  const std::lock_guard lock(mutex_);
  for (const auto& stream : published_) attach(stream, nullptr);
  published_.clear();
  return LocalCodeSuccess;
}

template <class Work>
void LocalUser::switchRole(std::string_view name, Work work, std::function<void(LocalUser&)> onSucceed,
                           Failed onFailed, Kicked onKicked) {
  context_->operations->run(
      name, [weak = weak_from_this(), work = std::move(work), onSucceed = std::move(onSucceed),
             onFailed = std::move(onFailed), onKicked = std::move(onKicked)](std::int64_t refusal) {
        const auto self = weak.lock();
        const bool acts = self && refusal == LocalCodeSuccess;
        const std::int64_t code = acts ? work(*self) : refusal != 0 ? refusal : LocalCodeNotInRoom;
        if (acts && code == LocalCodeSuccess) return onSucceed(*self);
        if (!self || code != LocalCodeKicked) {
          if (onFailed) onFailed(code);
          return;
        }
        if (onKicked) onKicked();  // while the room is still there to be named
        self->kicked_();
      });
}

std::shared_ptr<LMRTCLiveInfo> LocalUser::liveInfo() {
  const std::lock_guard lock(mutex_);
  if (!liveInfo_) liveInfo_ = std::make_shared<LocalLiveInfo>(context_, member_);
  return liveInfo_;
}

}  // namespace lumo
