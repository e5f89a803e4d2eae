#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCAudioEffectManager.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"

namespace lumo {

/// Plays files on top of each other, in a room or not, to the local user and, where that is asked for, to the
/// others. A file that cannot be played starts nothing and ends nothing.
///
/// Volumes are percent of the file's level, 100 at first and 400 at most; what is above counts as 400. The
/// common volume multiplies each effect's own, which belongs to the id: it outlives the playing.
class LocalAudioEffectManager : public LMRTCAudioEffectManager,
                                public std::enable_shared_from_this<LocalAudioEffectManager> {
 public:
  /// @param decoding  decodes the files
  LocalAudioEffectManager(std::shared_ptr<Runner> decoding, std::shared_ptr<FilePlayback> files);

  void playEffect(std::int64_t effectId, const std::string& filePath, std::int64_t loopCount,
                  bool publish) override;
  void setVolumeOfEffect(std::int64_t effectId, std::uint64_t volume) override;
  std::int64_t getVolumeOfEffectId(std::int64_t effectId) const override;
  void pauseEffect(std::int64_t effectId) override;
  void resumeEffect(std::int64_t effectId) override;
  void stopEffect(std::int64_t effectId) override;

  void pauseAllEffects() override;
  void resumeAllEffects() override;
  void stopAllEffects() override;
  void setEffectsVolume(std::uint64_t volume) override;
  std::int64_t getEffectsVolume() const override;

 private:
  struct Effect {
    std::shared_ptr<FileVoice> voice;  ///< null: does not play
    std::uint64_t volume = 100;
    bool isPublished = false;
  };

  void setGainLocked(const Effect& effect) const;
  void setPaused(std::int64_t effectId, bool paused);
  void setAllPaused(bool paused);
  void voiceEnded(std::int64_t effectId, const FileVoice& voice);

  const std::shared_ptr<Runner> decoding_;
  const std::shared_ptr<FilePlayback> files_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::map<std::int64_t, Effect> effects_;
  std::uint64_t commonVolume_ = 100;
};

}  // namespace lumo
