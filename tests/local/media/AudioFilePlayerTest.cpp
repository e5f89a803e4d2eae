#include <gtest/gtest.h>

#include <deque>

#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/media/FileUrl.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using Read = AudioFilePlayer::Read;

/// Decodes when the test says so.
struct HeldRunner : Runner {
  void post(Task task) override { tasks.push_back(std::move(task)); }
  void postAt(Microseconds, Task task) override { tasks.push_back(std::move(task)); }
  bool isCurrent() const override { return false; }
  void run() {
    while (!tasks.empty()) {
      const Task task = std::move(tasks.front());
      tasks.pop_front();
      task();
    }
  }
  std::deque<Task> tasks;
};

/// Reads until something else than `result` comes, and says how often it came.
int count(AudioFilePlayer& player, Read result) {
  AudioBlock block;
  int times = 0;
  while (times < 1000 && player.read(block) == result) ++times;
  return times;
}

TEST(AudioFilePlayerTest, NeverWaitsForItsDecoder) {
  const test::TempFolder folder;
  const auto decoding = std::make_shared<HeldRunner>();
  const auto opened = AudioFilePlayer::open(decoding, test::writeTones(folder, "a.wav", {{500, 1}}), 1);
  ASSERT_TRUE(opened.player) << opened.error;
  AudioFilePlayer& player = *opened.player;
  AudioBlock block;
  EXPECT_EQ(Read::underrun, player.read(block));
  EXPECT_EQ(0u, player.underruns()) << "it has not begun";
  decoding->run();
  EXPECT_EQ(32, count(player, Read::sound)) << "what was decoded ahead";
  EXPECT_EQ(320ms, player.position());
  EXPECT_EQ(Read::underrun, player.read(block));
  EXPECT_EQ(AudioBlock().samples, block.samples);
  EXPECT_EQ(2u, player.underruns());

  decoding->run();
  player.seek(100ms);
  decoding->run();
  EXPECT_EQ(Read::sound, player.read(block)) << "there is room beside what has become stale";
  EXPECT_EQ(110ms, player.position());
  for (int i = 0; i < 5; ++i) {
    player.seek(900ms - 100ms * i);
    decoding->run();
  }
  EXPECT_EQ(Read::underrun, player.read(block)) << "but not for that many seeks at once";
  decoding->run();
  EXPECT_EQ(Read::sound, player.read(block));
  EXPECT_EQ(510ms, player.position());
  player.seek(900ms);
  EXPECT_EQ(Read::underrun, player.read(block));
  EXPECT_EQ(2u, player.underruns()) << "right after a seek it is no surprise";
  decoding->run();
  EXPECT_EQ(10, count(player, Read::sound));
  EXPECT_EQ(Read::ended, player.read(block));
}

TEST(AudioFilePlayerTest, CountsThePassesThatWerePlayedAndNotThoseThatWereDecoded) {
  const test::TempFolder folder;
  const auto decoding = std::make_shared<HeldRunner>();
  const auto player =
      AudioFilePlayer::open(decoding, test::writeTones(folder, "a.wav", {{500, 0.1}}), 2).player;
  ASSERT_TRUE(player);
  decoding->run();
  AudioBlock block;
  for (const auto& [goal, blocks] : {std::pair{50ms, 5 + 10}, {1000ms, 0}, {70ms, 3}}) {
    for (int i = 0; i < 3; ++i) player->read(block);
    player->seek(goal);
    decoding->run();
    EXPECT_EQ(blocks, count(*player, Read::sound)) << goal.count();
    EXPECT_EQ(Read::ended, player->read(block));
  }
  decoding->run();
}

TEST(FileUrlTest, BecomesAPath) {
  const std::pair<const char*, const char*> cases[] = {
      {"/a b%20.wav", "/a b%20.wav"},
      {"file:///a%20b%C3%A4.wav", "/a b\xC3\xA4.wav"},
      {"file://localhost/a.wav", "/a.wav"},
      {"file:///100%.wav%2", "/100%.wav%2"},
      {"file://other/a.wav", "file://other/a.wav"},
      {"file:///%zz%-1", "/%zz%-1"},
  };
  for (const auto& [url, path] : cases) EXPECT_EQ(path, pathOfUrl(url));
}

}  // namespace
}  // namespace lumo
