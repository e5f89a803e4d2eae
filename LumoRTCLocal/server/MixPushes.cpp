#include "LumoRTCLocal/server/MixPushes.h"

#include <utility>

#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {
namespace {

std::int64_t codeOf(StreamAddress address) {
  switch (address) {
    case StreamAddress::usable:
      return LocalCodeSuccess;
    case StreamAddress::malformed:
      return LocalCodePushAddressMalformed;
    case StreamAddress::unknownProtocol:
      return LocalCodePushProtocolUnknown;
    case StreamAddress::unknownContainer:
      break;
  }
  return LocalCodePushContainerUnknown;
}

}  // namespace

MixPushes::MixPushes(std::shared_ptr<Timeline> timeline, Failed failed)
    : timeline_(std::move(timeline)),
      failed_(std::move(failed)),
      writers_(std::make_shared<const Writers>()) {}

std::int64_t MixPushes::add(const std::string& address, const StreamFormat& format, Completion completion) {
  if (const std::int64_t code = codeOf(StreamWriter::check(address))) return code;
  const std::lock_guard lock(mutex_);
  if (pushes_.contains(address)) return LocalCodePushAddressTaken;
  const std::uint64_t number = ++lastNumber_;
  StreamWriter::Events events;
  events.failed = [weak = weak_from_this(), address, number](const std::string& error) {
    if (const auto self = weak.lock()) self->drop(address, number, error);
  };
  events.opened = [failed = events.failed, completion = std::move(completion)](const std::string& error) {
    if (!error.empty()) failed(error);
    completion(error.empty() ? LocalCodeSuccess : LocalCodePushFailed);
  };
  pushes_[address] = {number, std::make_shared<StreamWriter>(*timeline_, address, format, std::move(events))};
  publishLocked();
  return LocalCodeSuccess;
}

std::int64_t MixPushes::remove(const std::string& address, Completion completion) {
  std::shared_ptr<StreamWriter> writer;
  {
    const std::lock_guard lock(mutex_);
    const auto found = pushes_.find(address);
    if (found == pushes_.end()) return LocalCodePushAddressUnknown;
    writer = std::move(found->second.writer);
    pushes_.erase(found);
    publishLocked();
  }
  writer->finish([writer, completion = std::move(completion)](bool isWhole) {
    completion(isWhole ? LocalCodeSuccess : LocalCodePushFailed);
  });
  return LocalCodeSuccess;
}

MixPushes::Writers MixPushes::takeAll() {
  const std::lock_guard lock(mutex_);
  Writers writers;
  for (auto& [address, push] : pushes_) writers.push_back(std::move(push.writer));
  pushes_.clear();
  publishLocked();
  return writers;
}

void MixPushes::writePicture(const std::shared_ptr<const LumoRTCI420Buffer>& picture,
                             Microseconds time) const {
  const auto writers = writers_.get();
  for (const auto& writer : *writers) writer->writePicture(picture, time);
}

void MixPushes::writeSound(const AudioBlock& block, Microseconds time) const {
  const auto writers = writers_.get();
  for (const auto& writer : *writers) writer->writeSound(block, time);
}

void MixPushes::setVideoBitrate(std::int32_t kilobitsPerSecond) const {
  const auto writers = writers_.get();
  for (const auto& writer : *writers) writer->setVideoBitrate(kilobitsPerSecond);
}

void MixPushes::drop(const std::string& address, std::uint64_t number, const std::string& error) {
  std::shared_ptr<StreamWriter> dropped;  // goes after the lock
  {
    const std::lock_guard lock(mutex_);
    const auto found = pushes_.find(address);
    if (found != pushes_.end() && found->second.number == number) {
      dropped = std::move(found->second.writer);
      pushes_.erase(found);
      publishLocked();
    }
  }
  failed_(address, error);
}

void MixPushes::publishLocked() {
  auto writers = std::make_shared<Writers>();
  for (const auto& [address, push] : pushes_) writers->push_back(push.writer);
  count_.store(writers->size(), std::memory_order_relaxed);
  writers_.set(std::move(writers));
}

}  // namespace lumo
