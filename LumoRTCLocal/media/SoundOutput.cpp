#include "LumoRTCLocal/media/SoundOutput.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

namespace lumo {
namespace {

constexpr std::uint32_t kBlockBytes = sizeof(AudioBlock::samples);
constexpr std::uint32_t kLeadBlocks = 3;
constexpr std::uint32_t kMostBlocks = 10;

}  // namespace

std::shared_ptr<SoundOutput> SoundOutput::open() { return std::shared_ptr<SoundOutput>(new SoundOutput()); }

SoundOutput::SoundOutput() {
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  hasAudio_ = SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
  // Opening a default device that does not exist would make the sound system complain on standard error.
  if (!hasAudio_ || SDL_GetNumAudioDevices(0) == 0) return;
  SDL_AudioSpec format{};
  format.freq = AudioBlock::kSampleRate;
  format.format = AUDIO_S16SYS;
  format.channels = AudioBlock::kChannels;
  format.samples = 512;
  device_ = SDL_OpenAudioDevice(nullptr, 0, &format, nullptr, 0);
  if (device_ != 0) SDL_PauseAudioDevice(device_, 0);
}

SoundOutput::~SoundOutput() {
  if (device_ != 0) SDL_CloseAudioDevice(device_);
  if (hasAudio_) SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

void SoundOutput::play(const AudioBlock& block) {
  if (device_ == 0) return;
  const std::uint32_t queued = SDL_GetQueuedAudioSize(device_);
  if (queued > kMostBlocks * kBlockBytes) return;
  if (queued == 0) {  // a lead against the caller's irregularities
    static constexpr AudioBlock kSilence;
    for (std::uint32_t i = 0; i < kLeadBlocks; ++i)
      SDL_QueueAudio(device_, kSilence.samples.data(), kBlockBytes);
  }
  SDL_QueueAudio(device_, block.samples.data(), kBlockBytes);
}

}  // namespace lumo
