#include "LumoRTCLocal/sdk/LocalFileStream.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLocal/media/VideoPresets.h"

namespace lumo {

LocalFileStream::LocalFileStream(std::shared_ptr<const LocalContext> context, Settings settings)
    : LocalStream({context->userId, settings.tag, LMRTCMediaTypeVideo, LMRTCMediaStreamTypeCustom}),
      context_(std::move(context)),
      settings_(std::move(settings)),
      pipeline_(std::make_shared<CameraPipeline>(context_->timeline, "file " + settings_.tag, nullptr,
                                                 settings_.format, context_->renderGate)) {
  pipeline_->setActive(true);
}

LocalFileStream::~LocalFileStream() { stop(); }

void LocalFileStream::start(Room room) {
  std::uint64_t run = 0;
  {
    const std::lock_guard lock(mutex_);
    run = ++run_;
    isStarted_ = true;
    isStopped_ = false;
    room_ = std::move(room);
  }
  context_->opening->post([weak = weak_from_this(), run] {
    if (const auto self = weak.lock()) self->open(run);
  });
}

bool LocalFileStream::isStarted() const {
  const std::lock_guard lock(mutex_);
  return isStarted_;
}

Publications LocalFileStream::publications() const {
  const std::lock_guard lock(mutex_);
  return publications_;
}

void LocalFileStream::setDelegate(std::weak_ptr<LMRTCFileVideoOutputStreamDelegate> delegate) {
  const std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

void LocalFileStream::stop() {
  const std::lock_guard lock(mutex_);
  stopLocked();
}

void LocalFileStream::setIsMute(bool mute) {
  LocalStream::setIsMute(mute);
  {
    const std::lock_guard lock(mutex_);
    setGainsLocked();
  }
  for (const auto& open : publications()) context_->server->setEnabled(open, !mute);
}

void LocalFileStream::setVideoSendBufferCallback(SendBufferCallback callback) {
  pipeline_->setSendCallback(std::move(callback));
}

void LocalFileStream::setVideoView(const std::shared_ptr<LMRTCVideoRenderer>& view) {
  pipeline_->setPreview(view);
}

void LocalFileStream::setVideoConfig(const LMRTCVideoStreamConfig& config) {
  pipeline_->setFormat(configuredFormat(pipeline_->format(), config));
}

std::shared_ptr<Publication> LocalFileStream::makePublication() {
  return Publication::create(name(), !isMute(), nullptr, demandOf(pipeline_));
}

void LocalFileStream::attach(const std::shared_ptr<Publication>& publication) {
  LocalOutput::attach(publication);
  pipeline_->setPublication(publication);
  if (publication) return;
  const std::lock_guard lock(mutex_);
  ++run_;
  isStarted_ = false;
  room_ = {};
  publications_.clear();
  stopLocked();
}

void LocalFileStream::open(std::uint64_t run) {
  {
    const std::lock_guard lock(mutex_);
    if (run != run_ || isStopped_) return;
  }
  auto opened = FileReading::open(settings_.path, {pipeline_, context_->files, context_->decoding},
                                  [weak = weak_from_this(), weakSdk = std::weak_ptr(context_->sdk), run] {
                                    const auto sdk = weakSdk.lock();
                                    if (!sdk) return;
                                    sdk->post([weak, run] {
                                      if (const auto self = weak.lock()) self->ended(run);
                                    });
                                  });
  context_->sdk->post([weak = weak_from_this(), run, reading = std::move(opened.reading)] {
    if (const auto self = weak.lock()) self->begin(run, reading);
  });
}

void LocalFileStream::begin(std::uint64_t run, const std::shared_ptr<FileReading>& reading) {
  Room room;
  {
    const std::lock_guard lock(mutex_);
    if (run != run_ || isStopped_) return;
    room = room_;
  }
  if (!reading) return fail(run, room);
  const Publications publications = makePublications(*reading);
  if (!room.enter(publications)) return fail(run, room);
  {
    const std::lock_guard lock(mutex_);
    if (run != run_) return;  // the room was left meanwhile
    publications_ = publications;
    LocalOutput::attach(publications.back());
    pipeline_->setPublication(publications.back());
    if (isStopped_) return;
    reading_ = reading;
    setGainsLocked();
    reading_->start();
  }
  for (const auto& open : publications) context_->server->setEnabled(open, !isMute());
  tell(&Delegate::fileVideoOutputStreamDidStartRead);
}

void LocalFileStream::fail(std::uint64_t run, const Room& room) {
  {
    const std::lock_guard lock(mutex_);
    if (run != run_) return;
    ++run_;
    isStarted_ = false;
    room_ = {};
  }
  room.drop();
  tell(&Delegate::fileVideoOutputStreamDidFailed);
}

void LocalFileStream::ended(std::uint64_t run) {
  {
    const std::lock_guard lock(mutex_);
    if (run != run_ || isStopped_) return;
    stopLocked();
  }
  tell(&Delegate::fileVideoOutputStreamDidReadCompleted);
}

Publications LocalFileStream::makePublications(const FileReading& reading) {
  Publications publications;
  if (reading.voice() && !settings_.replacesMicrophone) {
    StreamName sound = name();
    sound.mediaType = LMRTCMediaTypeAudio;
    publications.push_back(
        Publication::create(std::move(sound), !isMute(), reading.voice(), demandOf(context_->audio)));
  }
  publications.push_back(makePublication());
  return publications;
}

void LocalFileStream::stopLocked() {
  isStopped_ = true;
  if (const auto reading = std::exchange(reading_, nullptr)) reading->stop();
}

void LocalFileStream::setGainsLocked() {
  const auto voice = reading_ ? reading_->voice() : nullptr;
  if (!voice) return;
  const bool replaces = settings_.replacesMicrophone;
  voice->setPublishGain(replaces && !isMute() ? 1 : 0);
  voice->setPlaybackGain(settings_.isPlayedBack ? 1 : 0);
  voice->setReplacesMicrophone(replaces);
  voice->setHasPublication(!replaces);
}

void LocalFileStream::tell(Event event) {
  std::shared_ptr<Delegate> delegate;
  {
    const std::lock_guard lock(mutex_);
    delegate = delegate_.lock();
  }
  if (delegate) (delegate.get()->*event)(shared_from_this());
}

}  // namespace lumo
