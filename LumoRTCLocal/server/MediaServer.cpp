#include "LumoRTCLocal/server/MediaServer.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

constexpr std::int64_t kReplaced = 0;  // why a member is removed: somebody else has come with its id

}  // namespace

MediaServer::Aftermath::~Aftermath() {
  for (const auto& stream : touched) stream->tellDemand();
  for (const auto& mix : mixes) mix->update();
}

MediaServer::MediaServer(std::shared_ptr<Timeline> timeline, std::shared_ptr<Runner> events,
                         std::shared_ptr<AudioExchange> audio)
    : timeline_(std::move(timeline)),
      events_(std::move(events)),
      audio_(std::move(audio)),
      network_(std::make_shared<Network>(timeline_, audio_)) {}

std::shared_ptr<NetworkConnection> MediaServer::makeConnection() {
  const std::lock_guard lock(mutex_);
  return std::make_shared<NetworkConnection>(network_, ++connections_);
}

MediaServer::JoinResult MediaServer::join(const JoinRequest& request) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  JoinResult result;
  result.code = admitLocked(request, aftermath);
  if (result.code != LocalCodeSuccess) return result;
  result.member = addLocked(request);
  result.sessionId = "session-" + std::to_string(result.member->arrival);
  if (!request.observer.expired()) {
    result.present = result.member->room->snapshot(result.member.get());
    for (const auto& stream : result.member->room->mixer().publications) {
      const bool isCdn = stream->name().mediaStreamType == LMRTCMediaStreamTypeCdn;
      if (isCdn) result.cdnStream = stream;
      if (!isCdn) result.liveStreams.push_back(stream);
    }
    result.member->room->listen(*result.member);
  }
  return result;
}

std::int64_t MediaServer::leave(const Member& member, bool offline) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  removeLocked(member, offline, aftermath);
  return LocalCodeSuccess;
}

bool MediaServer::isPresent(const Member& member) const {
  const std::lock_guard lock(mutex_);
  return member->room != nullptr;
}

std::int64_t MediaServer::kick(const Member& member, const std::string& userId, std::int64_t reason) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const Member target = member->room->find(userId);
  if (!target) return LocalCodeUserNotInRoom;
  ServerRoom::post(*events_, *target, [reason](RoomObserver& observer) { observer.kicked(reason); });
  removeLocked(target, false, aftermath);
  return LocalCodeSuccess;
}

std::vector<MemberSnapshot> MediaServer::observe(const Member& member, std::weak_ptr<RoomObserver> observer) {
  const std::lock_guard lock(mutex_);
  member->observer = std::move(observer);
  if (!member->room) return {};
  member->room->listen(*member);
  auto present = member->room->snapshot(member.get());
  for (const auto& visit : member->visits)
    std::ranges::move(visit->room->snapshot(nullptr), std::back_inserter(present));
  return present;
}

void MediaServer::observeRemoval(const Member& member, std::weak_ptr<RoomObserver> observer) {
  const std::lock_guard lock(mutex_);
  member->observer = std::move(observer);
}

std::int64_t MediaServer::publish(const Member& member, const Publications& streams,
                                  std::optional<bool> liveRoom) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (const std::int64_t code = checkPublish(*member, streams, liveRoom)) return code;
  std::vector<PublicationState> states;
  for (const auto& stream : streams) {
    stream->publisher_ = member.get();
    stream->setConnection(member->connection);
    member->publications.push_back(stream);
    states.push_back({stream, stream->isEnabled()});
  }
  member->room->notify(*events_, member.get(),
                       [states](RoomObserver& observer) { observer.streamsPublished(states); });
  if (member->room->isLive()) mixPublished(*member->room, streams, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::mayPublish(const Member& member, const Publications& streams,
                                     std::optional<bool> liveRoom) const {
  const std::lock_guard lock(mutex_);
  return checkPublish(*member, streams, liveRoom);
}

std::int64_t MediaServer::unpublish(const Member& member, const Publications& streams,
                                    std::optional<bool> liveRoom) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (const std::int64_t code = checkRoom(*member, liveRoom)) return code;
  if (streams.empty()) return LocalCodeNoStreams;
  for (const auto& stream : streams) {
    if (stream->publisher_ != member.get()) return LocalCodeNotPublished;
  }
  closeLocked(*member, streams, aftermath);
  return LocalCodeSuccess;
}

void MediaServer::setEnabled(const std::shared_ptr<Publication>& stream, bool enabled) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (stream->isEnabled() == enabled) return;
  stream->setEnabled(enabled);
  aftermath.touched.push_back(stream);
  const ServerMember* const publisher = stream->publisher_;
  if (!publisher) return;
  publisher->room->notify(*events_, publisher, [stream, enabled](RoomObserver& observer) {
    observer.streamEnabled(stream, enabled);
  });
}

std::int64_t MediaServer::subscribe(const Member& member, const std::vector<Subscription>& subscriptions) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  if (subscriptions.empty()) return LocalCodeNoStreams;
  for (const Subscription& subscription : subscriptions) {
    const ServerMember* const publisher = subscription.publication->publisher_;
    if (!publisher || !member->stayIn(publisher->room)) return LocalCodeStreamGone;
  }
  for (const Subscription& subscription : subscriptions) {
    replaceSubscription(*member, subscription.publication, &subscription, aftermath);
    member->subscriptions.insert(subscription.publication);
  }
  followDemand(*member->room, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::unsubscribe(const Member& member, const Publications& streams) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  if (streams.empty()) return LocalCodeNoStreams;
  for (const auto& stream : streams) {
    if (!stream->publisher_) return LocalCodeStreamGone;
    if (!member->subscriptions.contains(stream)) return LocalCodeNotSubscribed;
  }
  for (const auto& stream : streams) {
    replaceSubscription(*member, stream, nullptr, aftermath);
    member->subscriptions.erase(stream);
  }
  followDemand(*member->room, aftermath);
  return LocalCodeSuccess;
}

std::int64_t MediaServer::switchRole(const Member& member, std::int64_t role, const LMRTCMixConfig* config) {
  Aftermath aftermath;
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  if (!member->room->isLive()) return LocalCodeNotALiveRoom;
  if (member->role == role) return LocalCodeSameRole;
  if (const auto code = config ? member->room->mix()->configure(*config) : LocalCodeSuccess) return code;
  if (role != LMRTCRoleTypeBroadcaster) closeLocked(*member, Publications(member->publications), aftermath);
  member->role = role;
  member->room->notify(*events_, member.get(), [userId = member->userId, role](RoomObserver& observer) {
    observer.roleSwitched(userId, role);
  });
  return LocalCodeSuccess;
}

std::int64_t MediaServer::sendSei(const Member& member, const std::string& sei) {
  const std::lock_guard lock(mutex_);
  if (!member->room) return LocalCodeNotInRoom;
  const auto video =
      member->find({member->userId, kLMRTCDefaultStreamTag, LMRTCMediaTypeVideo, LMRTCMediaStreamTypeNormal});
  if (!video) return LocalCodeNotPublished;
  if (sei.size() > Publication::kLongestSei) return LocalCodeSeiTooLong;
  return video->addSei(sei) ? LocalCodeSuccess : LocalCodeSeiBacklog;
}

std::optional<Publications> MediaServer::liveVoices(const Member& member) const {
  const std::lock_guard lock(mutex_);
  if (!member->room || !member->room->isLive()) return std::nullopt;
  Publications voices;
  for (const auto& input : *member->room->mix()->inputs()) {
    if (!input->isVideo()) voices.push_back(input->publication());
  }
  return voices;
}

std::int64_t MediaServer::admitLocked(const JoinRequest& request, Aftermath& aftermath) {
  if (request.roomId.empty()) return LocalCodeEmptyRoomId;
  if (request.userId.empty()) return LocalCodeEmptyUserId;
  const auto found = rooms_.find(request.roomId);
  if (found == rooms_.end()) return LocalCodeSuccess;
  const ServerRoom& room = *found->second;
  if (room.isLive() != (request.roomType == LMRTCRoomTypeLive)) return LocalCodeRoomKindMismatch;
  const Member former = room.find(request.userId);
  if (!former) return LocalCodeSuccess;
  if (!request.exclusive) return LocalCodeUserIdTaken;
  ServerRoom::post(*events_, *former, [](RoomObserver& observer) { observer.kicked(kReplaced); });
  removeLocked(former, false, aftermath);
  return LocalCodeSuccess;
}

MediaServer::Member MediaServer::addLocked(const JoinRequest& request) {
  const bool live = request.roomType == LMRTCRoomTypeLive;
  auto& room = rooms_[request.roomId];
  if (!room) room = std::make_unique<ServerRoom>(request.roomId, live ? makeMix(request) : nullptr);
  const auto member = std::make_shared<ServerMember>();
  member->userId = request.userId;
  member->role = live ? request.role : LMRTCRoleTypeBroadcaster;
  member->arrival = ++arrivals_;
  member->observer = request.observer;
  member->links = request.links;
  member->connection = request.connection;
  room->notify(*events_, nullptr,
               [userId = request.userId](RoomObserver& observer) { observer.memberJoined(userId); });
  room->add(member);
  return member;
}

void MediaServer::removeLocked(const Member& member, bool offline, Aftermath& aftermath) {
  closeLocked(*member, Publications(member->publications), aftermath);
  for (const auto& stream : member->subscriptions) replaceSubscription(*member, stream, nullptr, aftermath);
  member->subscriptions.clear();
  for (const auto& visit : member->visits) visit->room->dismiss(*visit);
  member->visits.clear();
  withdrawInvitationsLocked({member->room->id(), member->userId});

  ServerRoom& room = *member->room;
  followDemand(room, aftermath);
  room.remove(*member);
  room.notify(*events_, member.get(), [userId = member->userId, offline](RoomObserver& observer) {
    observer.memberLeft(userId, offline);
  });
  if (!room.isEmpty()) return;
  const std::string roomId = room.id();
  for (const std::string& linked : links_.linkedWith(roomId)) {
    finishLinkLocked(roomId, linked, *member, aftermath);
  }
  rooms_.erase(roomId);
}

void MediaServer::closeLocked(ServerMember& member, const Publications& streams, Aftermath& aftermath) {
  if (streams.empty()) return;
  withdrawLocked(member, streams, aftermath);
  member.room->notify(*events_, &member,
                      [streams](RoomObserver& observer) { observer.streamsUnpublished(streams); });
  if (member.room->isLive()) mixUnpublished(*member.room, streams, aftermath);
}

void MediaServer::withdrawLocked(ServerMember& member, const Publications& streams, Aftermath& aftermath) {
  for (const auto& stream : streams) {
    stream->publisher_ = nullptr;
    for (const auto& subscriber : *stream->subscribers()) subscriber.member->subscriptions.erase(stream);
    aftermath.touched.push_back(stream);
    aftermath.released.push_back(stream->setSubscribers({}));
    std::erase(member.publications, stream);
  }
}

void MediaServer::replaceSubscription(ServerMember& member, const std::shared_ptr<Publication>& stream,
                                      const Subscription* replacement, Aftermath& aftermath) {
  auto subscribers = *stream->subscribers();
  std::erase_if(subscribers, [&member](const auto& subscriber) { return subscriber.member == &member; });
  if (replacement)
    subscribers.push_back({&member, replacement->receiver, replacement->tiny, member.connection});
  aftermath.touched.push_back(stream);
  aftermath.released.push_back(stream->setSubscribers(std::move(subscribers)));
}

std::int64_t MediaServer::checkPublish(const ServerMember& member, const Publications& streams,
                                       std::optional<bool> liveRoom) {
  if (const std::int64_t code = checkRoom(member, liveRoom)) return code;
  if (streams.empty()) return LocalCodeNoStreams;
  if (member.role != LMRTCRoleTypeBroadcaster) return LocalCodeAudienceMayNotPublish;
  for (const auto& stream : streams) {
    if (stream->publisher_ || member.find(stream->name())) return LocalCodeAlreadyPublished;
    if (std::ranges::count(streams, stream) > 1) return LocalCodeAlreadyPublished;
  }
  return LocalCodeSuccess;
}

std::int64_t MediaServer::checkRoom(const ServerMember& member, std::optional<bool> liveRoom) {
  if (!member.room) return LocalCodeNotInRoom;
  if (!liveRoom || *liveRoom == member.room->isLive()) return LocalCodeSuccess;
  return *liveRoom ? LocalCodeNotALiveRoom : LocalCodeNotANormalRoom;
}

}  // namespace lumo
