#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>

#include "LumoRTCLocal/media/StreamWriter.h"
#include "LumoRTCLocal/media/WavWriter.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

/// The disk is full once a file has as many bytes as a test allows.
class FullDiskTest : public testing::Test {
 protected:
  static void limit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit size{};
    getrlimit(RLIMIT_FSIZE, &size);
    size.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &size);
  }
  void TearDown() override {
    limit(RLIM_INFINITY);
    std::filesystem::remove(path_);
  }

  const std::string path_ = testing::TempDir() + "full-disk.mp4";
  const std::shared_ptr<Timeline> timeline_ = Timeline::manual();
};

TEST_F(FullDiskTest, ARecordingIsAFileOfWhatTheDiskHasTaken) {
  limit(100'000);
  const auto [writer, error] = WavWriter::create(*timeline_, path_);
  ASSERT_EQ("", error);
  for (int i = 0; i < 100; ++i) {
    writer->add({});
    timeline_->advance(10ms);
  }
  EXPECT_NE("", writer->close());
  std::ifstream file(path_, std::ios::binary);
  std::uint32_t bytes = 0;
  file.seekg(40).read(reinterpret_cast<char*>(&bytes), sizeof bytes);
  EXPECT_EQ(96'000u, bytes) << "half a second of sound, in the header";
  EXPECT_LE(96'044u, std::filesystem::file_size(path_));
}

TEST_F(FullDiskTest, AStreamThatCannotBeEndedIsNotWhole) {
  limit(10'000);
  std::string failure;
  bool isWhole = true;
  StreamWriter writer(*timeline_, "file://" + path_, {.hasPicture = false},
                      {.opened = {}, .failed = [&](const std::string& error) { failure = error; }});
  AudioBlock noise;
  std::minstd_rand random;
  for (int i = 0; i < 300; ++i) {
    timeline_->advance(10ms);
    for (auto& sample : noise.samples) sample = static_cast<std::int16_t>(random());
    writer.writeSound(noise, timeline_->now());
  }
  writer.finish([&](bool whole) { isWhole = whole; });
  timeline_->advance(0ms);
  EXPECT_FALSE(isWhole);
  EXPECT_NE("", failure);
}

}  // namespace
}  // namespace lumo
