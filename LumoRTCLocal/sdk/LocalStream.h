#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCStream.h"
#include "LumoRTCLocal/server/Publication.h"

namespace lumo {

/// What all streams share: their name and the mute switch.
/// @tparam Interface  the SDK's interface that the stream implements
template <class Interface>
class LocalStream : public Interface {
 public:
  explicit LocalStream(StreamName name) : name_(std::move(name)), streamId_(name_.userId + "_" + name_.tag) {}

  const std::string& streamId() const override { return streamId_; }
  const std::string& userId() const override { return name_.userId; }
  const std::string& tag() const override { return name_.tag; }
  std::int64_t mediaType() const override { return name_.mediaType; }
  std::int64_t mediaStreamType() const override { return name_.mediaStreamType; }

  void setIsMute(bool mute) override { muted_.store(mute, std::memory_order_relaxed); }
  bool isMute() const override { return muted_.load(std::memory_order_relaxed); }

 protected:
  const StreamName& name() const { return name_; }

 private:
  const StreamName name_;
  const std::string streamId_;
  std::atomic<bool> muted_{false};
};

}  // namespace lumo
