#include "LumoRTCLocal/sdk/StatusReporter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/sdk/LocalRoom.h"

namespace lumo {
namespace {

constexpr char kPictureCodec[] = "I420";  // pictures and samples travel as they are
constexpr char kSoundCodec[] = "L16";

std::string streamIdOf(const StreamName& name) { return name.userId + "_" + name.tag; }

/// The mean transit since `last`, or what the model says when nothing came.
Microseconds transitSince(NetworkLink::Count& last, const NetworkLink& link) {
  const NetworkLink::Count now = link.count();
  const NetworkLink::Count before = std::exchange(last, now);
  const std::int64_t arrived = (now.packets - now.lost) - (before.packets - before.lost);
  return arrived > 0 ? (now.transit - before.transit) / arrived : link.expectedTransit();
}

}  // namespace

void StatusReporter::setDelegate(std::weak_ptr<LMRTCStatusReportDelegate> delegate) {
  const bool isSet = !delegate.expired();
  delegate_.set(std::move(delegate));
  if (!isSet) return;
  context_->sdk->post([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->begin();
  });
}

void StatusReporter::start(const std::shared_ptr<LocalRoom>& room) {
  room_ = room;
  begin();
}

void StatusReporter::begin() {
  ++run_;
  const Microseconds interval = interval_;
  const auto room = room_.lock();
  if (interval <= Microseconds(0) || !room || !room->isOpen() || !delegate_.get()) return;
  ++reports_;
  lastTime_ = context_->timeline->now();
  makeForm(*room);  // what came before counts for no report
  schedule(interval, lastTime_ + interval);
}

void StatusReporter::schedule(Microseconds interval, Microseconds time) {
  context_->sdk->postAt(time, [weak = weak_from_this(), run = run_, interval, time] {
    const auto self = weak.lock();
    if (!self || run != self->run_) return;
    const auto room = self->room_.lock();
    const auto delegate = self->delegate_.get();
    if (!room || !room->isOpen() || !delegate) return;
    self->schedule(interval, std::max(time + interval, self->context_->timeline->now()));
    self->report(*room, *delegate);
  });
}

void StatusReporter::report(LocalRoom& room, LMRTCStatusReportDelegate& delegate) {
  ++reports_;
  span_ = context_->timeline->now() - std::exchange(lastTime_, context_->timeline->now());
  std::erase_if(laps_, [](const auto& lap) { return lap.first.expired(); });
  delegate.didReportStatusForm(makeForm(room));
  if (room.isOpen()) reportLiveAudio(room, delegate);
}

LMRTCStatusForm StatusReporter::makeForm(LocalRoom& room) {
  const NetworkConnection& connection = *context_->connection;
  const Microseconds roundTrip =
      transitSince(lastUp_, connection.up) + transitSince(lastDown_, connection.down);
  roundTrip_ = std::chrono::round<std::chrono::milliseconds>(roundTrip).count();
  LMRTCStatusForm form;
  form.networkType = context_->networkType;
  form.ipAddress = context_->ipAddress;
  form.rtt = roundTrip_;
  for (const auto& publication : room.sent()) addSent(form, publication);
  for (const auto& stream : room.received()) {
    form.recvStats.push_back(makeStatus(stream->publication()->name(), gainOf(stream->meter())));
  }
  std::ranges::sort(form.recvStats, {}, [](const LMRTCStreamStatus& status) {
    return std::tie(status.streamId, status.mediaType);
  });
  for (const auto& status : form.sendStats) form.totalSendBitRate += status.bitRate;
  for (const auto& status : form.recvStats) form.totalRecvBitRate += status.bitRate;
  return form;
}

void StatusReporter::addSent(LMRTCStatusForm& form, const std::shared_ptr<Publication>& publication) {
  const StreamName& name = publication->name();
  const MediaMeter::Reading normal = gainOf(publication->meter(false));
  const MediaMeter::Reading tiny = gainOf(publication->meter(true));
  const bool isTinySent = tiny.pictures + tiny.lost > 0;
  const bool isCustom = name.mediaStreamType == LMRTCMediaStreamTypeCustom;
  // A custom stream has one entry, as the sizes cannot be told apart by its id.
  const bool isOnlyTiny = isCustom && isTinySent && normal.pictures + normal.lost == 0;
  form.sendStats.push_back(makeStatus(name, isOnlyTiny ? tiny : normal));
  if (!isTinySent || isCustom) return;
  form.sendStats.push_back(makeStatus(name, tiny));
  form.sendStats.back().streamId += "_tiny";
}

LMRTCStreamStatus StatusReporter::makeStatus(const StreamName& name, const MediaMeter::Reading& gain) const {
  const bool isVideo = name.mediaType == LMRTCMediaTypeVideo;
  LMRTCStreamStatus status;
  status.mediaType = isVideo ? LumoRTCMediaTypeVideo : LumoRTCMediaTypeAudio;
  status.codecName = isVideo ? kPictureCodec : kSoundCodec;
  status.bitRate = static_cast<float>(perSecond(gain.bytes) * 8 / 1000);
  status.frameRate = std::llround(perSecond(gain.pictures));
  status.frameWidth = gain.width;
  status.frameHeight = gain.height;
  status.packetLoss = gain.packetLoss();
  status.audioLevel = gain.audioLevel();
  status.rtt = roundTrip_;
  status.mediaStreamType = name.mediaStreamType;
  status.streamId = streamIdOf(name);
  status.userId = name.userId;
  return status;
}

void StatusReporter::reportLiveAudio(const LocalRoom& room, LMRTCStatusReportDelegate& delegate) {
  const auto voices = room.liveVoices();
  if (!voices) return;
  std::vector<LMRTCLiveAudioStatus> statuses;
  for (const auto& voice : *voices) {
    LMRTCLiveAudioStatus& status = statuses.emplace_back();
    status.updateUserId(voice->name().userId, streamIdOf(voice->name()));
    status.setAudioLevel(gainOf(voice->meter(false)).audioLevel());
  }
  delegate.didReportLiveAudioStatus(statuses);
}

const MediaMeter::Reading& StatusReporter::gainOf(const std::shared_ptr<const MediaMeter>& meter) {
  Lap& lap = laps_[meter];
  if (std::exchange(lap.report, reports_) == reports_) return lap.gain;
  const MediaMeter::Reading now = meter->read();
  lap.gain = now.since(std::exchange(lap.last, now));
  return lap.gain;
}

double StatusReporter::perSecond(std::int64_t number) const {
  const double seconds = std::chrono::duration<double>(span_).count();
  return seconds > 0 ? static_cast<double>(number) / seconds : 0;
}

}  // namespace lumo
