#include <gtest/gtest.h>

#include "LumoRTCLocal/media/StreamWriter.h"

namespace {

using enum lumo::StreamAddress;

TEST(StreamWriterTest, TellsUsableAddresses) {
  const std::pair<const char*, lumo::StreamAddress> cases[] = {
      {"rtmp://host/live/stream", usable},
      {"RTMP://[::1]:1935/live", usable},
      {"udp://127.0.0.1:5000", usable},
      {"file:///tmp/a.mp4", usable},
      {"host/live", malformed},
      {"rtmp://host", malformed},
      {"rtmp://host:0/live", malformed},
      {"rtmp://host:99999/live", malformed},
      {"rtmp://ho st/live", malformed},
      {"udp://127.0.0.1", malformed},
      {"http://host/live", unknownProtocol},
      {"file://a.mp4", malformed},
      {"file:///tmp/a.txt", unknownContainer},
  };
  for (const auto& [address, expected] : cases)
    EXPECT_EQ(expected, lumo::StreamWriter::check(address)) << address;
}

}  // namespace
