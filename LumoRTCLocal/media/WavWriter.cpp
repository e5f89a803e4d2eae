#include "LumoRTCLocal/media/WavWriter.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace lumo {
namespace {

constexpr std::size_t kBlocksPerWrite = 25;
constexpr std::size_t kMostWaiting = 1000;
constexpr std::uint32_t kBlockBytes = sizeof(AudioBlock::samples);
constexpr std::uint32_t kHeaderBytes = 44;
constexpr std::uint32_t kMostBlocks =
    (std::numeric_limits<std::uint32_t>::max() - kHeaderBytes) / kBlockBytes;

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

template <class Number>
void put(std::string& header, Number number) {
  char bytes[sizeof(number)];
  std::memcpy(bytes, &number, sizeof(number));
  header.append(bytes, sizeof(number));
}

}  // namespace

WavWriter::Created WavWriter::create(Timeline& timeline, const std::string& path) {
  errno = 0;
  std::shared_ptr<WavWriter> writer(new WavWriter(timeline, path));
  if (writer->file_.is_open()) return {std::move(writer), {}};
  return {nullptr, path + " cannot be written: " + std::generic_category().message(errno)};
}

WavWriter::WavWriter(Timeline& timeline, std::string path)
    : path_(std::move(path)), file_(path_, std::ios::binary | std::ios::trunc) {
  if (!file_) {
    isClosed_ = true;
    return;
  }
  waiting_.reserve(2 * kBlocksPerWrite);
  writing_.reserve(2 * kBlocksPerWrite);
  writeHeader();
  runner_ = timeline.makeRunner("wav file");
}

WavWriter::~WavWriter() { close(); }

void WavWriter::add(const AudioBlock& block) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return;
  if (waiting_.size() >= kMostWaiting || blocks_ >= kMostBlocks) {
    isIncomplete_ = true;
    return;
  }
  ++blocks_;
  waiting_.push_back(block);
  if (waiting_.size() % kBlocksPerWrite == 0) runner_->post([this] { writeWaiting(); });
}

std::string WavWriter::close() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isClosed_, true)) return {};
  }
  runner_.reset();
  writeWaiting();
  const bool hasFailed = !file_;
  file_.clear();  // what the disk has taken can still be made a whole file
  file_.seekp(0);
  writeHeader();
  file_.close();
  if (hasFailed || !file_) return path_ + " could not be written to its end";
  return isIncomplete_ ? path_ + " is incomplete: the disk was too slow, or the file is full" : std::string();
}

void WavWriter::writeWaiting() {
  {
    const std::lock_guard lock(mutex_);
    writing_.swap(waiting_);
  }
  for (const AudioBlock& block : writing_)
    file_.write(reinterpret_cast<const char*>(block.samples.data()), kBlockBytes);
  if (file_.flush()) writtenBytes_ += static_cast<std::uint32_t>(writing_.size()) * kBlockBytes;
  writing_.clear();
}

void WavWriter::writeHeader() {
  constexpr std::uint16_t kPcm = 1;
  constexpr std::uint16_t kFrameBytes = AudioBlock::kChannels * sizeof(std::int16_t);
  std::string header = "RIFF";
  put(header, writtenBytes_ + kHeaderBytes - std::uint32_t{8});
  header += "WAVEfmt ";
  put(header, std::uint32_t{16});
  put(header, kPcm);
  put(header, std::uint16_t{AudioBlock::kChannels});
  put(header, std::uint32_t{AudioBlock::kSampleRate});
  put(header, std::uint32_t{AudioBlock::kSampleRate} * kFrameBytes);
  put(header, kFrameBytes);
  put(header, std::uint16_t{16});
  header += "data";
  put(header, writtenBytes_);
  file_.write(header.data(), kHeaderBytes);
}

}  // namespace lumo
