#pragma once

#include <cstdint>
#include <memory>
#include <utility>

class LMRTCVideoOutputStream;

/// An extra stream of the local user, kept under its tag.
struct LMRTCIWCustomStream {
  static constexpr std::int64_t kFile = 2;  ///< `type` of a file

  LMRTCIWCustomStream(std::int64_t streamType, std::shared_ptr<LMRTCVideoOutputStream> sdkStream)
      : type(streamType), stream(std::move(sdkStream)) {}

  std::int64_t type = 0;                           ///< kind of stream: kFile is the only one yet
  std::shared_ptr<LMRTCVideoOutputStream> stream;  ///< the SDK's stream
};
