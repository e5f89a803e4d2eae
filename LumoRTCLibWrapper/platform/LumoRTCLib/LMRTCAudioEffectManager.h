#pragma once

#include <cstdint>
#include <string>

/// Plays short sound effects from files, several at a time, by an id of the caller's choice. Synchronous; any
/// thread.
class LMRTCAudioEffectManager {
 public:
  virtual ~LMRTCAudioEffectManager() = default;

  /// Starts an effect, from its beginning if it plays already.
  /// @param filePath   path or file URL
  /// @param loopCount  how many times the file plays; 0 and negative numbers: endlessly
  /// @param publish    whether remote users hear it too
  virtual void playEffect(std::int64_t effectId, const std::string& filePath, std::int64_t loopCount,
                          bool publish) = 0;
  /// @param volume  percent of the file's level
  virtual void setVolumeOfEffect(std::int64_t effectId, std::uint64_t volume) = 0;
  virtual std::int64_t getVolumeOfEffectId(std::int64_t effectId) const = 0;
  virtual void pauseEffect(std::int64_t effectId) = 0;
  virtual void resumeEffect(std::int64_t effectId) = 0;
  virtual void stopEffect(std::int64_t effectId) = 0;

  virtual void pauseAllEffects() = 0;
  virtual void resumeAllEffects() = 0;
  virtual void stopAllEffects() = 0;
  /// @param volume  percent, on top of each effect's own
  virtual void setEffectsVolume(std::uint64_t volume) = 0;
  virtual std::int64_t getEffectsVolume() const = 0;
};
