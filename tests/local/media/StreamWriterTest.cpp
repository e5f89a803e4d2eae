#include <gtest/gtest.h>

#include "LumoRTCLocal/media/StreamWriter.h"

namespace lumo {
namespace {

TEST(StreamWriterTest, TellsUsableAddresses) {
  const std::pair<const char*, StreamAddress> cases[] = {
      {"rtmp://host/live/stream", StreamAddress::usable},
      {"RTMP://[::1]:1935/live", StreamAddress::usable},
      {"udp://127.0.0.1:5000", StreamAddress::usable},
      {"file:///tmp/a.mp4", StreamAddress::usable},
      {"", StreamAddress::malformed},
      {"host/live", StreamAddress::malformed},
      {"rtmp://host", StreamAddress::malformed},
      {"rtmp://host:0/live", StreamAddress::malformed},
      {"rtmp://host:99999/live", StreamAddress::malformed},
      {"rtmp://ho st/live", StreamAddress::malformed},
      {"udp://127.0.0.1", StreamAddress::malformed},
      {"file://a.mp4", StreamAddress::malformed},
      {"http://host/live", StreamAddress::unknownProtocol},
      {"file:///tmp/a.txt", StreamAddress::unknownContainer},
  };
  for (const auto& [address, expected] : cases) EXPECT_EQ(expected, StreamWriter::check(address)) << address;
}

}  // namespace
}  // namespace lumo
