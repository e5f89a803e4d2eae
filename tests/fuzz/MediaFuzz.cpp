#include <sys/mman.h>
#include <unistd.h>

extern "C" {
#include <libavutil/mem.h>
}

#include <utility>

#include "LumoRTCLocal/media/AudioFilePlayer.h"
#include "LumoRTCLocal/media/MediaFileReader.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using namespace std::chrono_literals;
using lumo::AudioFilePlayer;
using lumo::MediaFileReader;
using lumo::fuzz::check;
using lumo::fuzz::Input;

/// Reads a few pictures and pieces of sound side by side.
void readOn(MediaFileReader& reader) {
  bool hasPicture = reader.hasPicture(), hasSound = reader.hasSound();
  std::int64_t pixels = 0;
  for (int i = 0; i < 40 && pixels < 4'000'000; ++i) {
    const auto found = reader.nextPicture();
    check(!found || (hasPicture && found->picture && found->timestamp >= 0us), "pictures come until the end");
    hasPicture = found.has_value();
    if (found) pixels += std::int64_t{found->picture->width()} * found->picture->height();
    const auto sound = reader.nextSound();
    check(!sound || (hasSound && !sound->samples.empty() && sound->samples.size() % 2 == 0), "so does sound");
    hasSound = sound.has_value();
  }
  check(!reader.isCutOff() || reader.isDamaged(), "what is cut off is damaged");
}

void checkReader(const std::string& path, Input& orders) {
  const auto kind = static_cast<lumo::MediaKind>(orders.take(0, 2));
  const auto [reader, error] = MediaFileReader::openFile(path, kind);
  check(reader ? error.empty() : error.starts_with(path + " "), "a reader, or an error");
  if (!reader) return;
  check(reader->duration() >= 0us && !reader->isLive(), "a file has a length");
  check(kind != lumo::MediaKind::sound || !reader->hasPicture(), "sound is read alone");
  readOn(*reader);
  if (reader->seek(std::chrono::milliseconds(orders.take(0, 5000)))) readOn(*reader);
  if (reader->rewind()) readOn(*reader);
}

void checkPlayer(const std::string& path, Input& orders) {
  using enum AudioFilePlayer::Read;
  const auto timeline = lumo::Timeline::manual();
  const auto [player, error] =
      AudioFilePlayer::open(timeline->makeRunner("decoder"), path, orders.take(0, 2));
  check(player ? error.empty() : error.starts_with(path + " "), "a player, or an error");
  for (int pass = 0; player && pass < 2; ++pass) {
    lumo::AudioBlock block;
    for (auto [i, outcome] = std::pair(0, sound); i < 100; ++i) {
      timeline->advance(10ms);
      const auto before = std::exchange(outcome, player->read(block));
      check(outcome != underrun && (before == sound || outcome == before), "sound comes in time");
    }
    player->seek(std::chrono::milliseconds(orders.take(-100, 3000)));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  av_max_alloc(64 << 20);  // damaged headers ask for pictures of any size
  const int file = memfd_create("input", 0);
  check(write(file, data, size) == static_cast<ssize_t>(size), "the input is a file in memory");
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  Input orders(data, size);
  checkReader(path, orders);
  checkPlayer(path, orders);
  close(file);
  return 0;
}
