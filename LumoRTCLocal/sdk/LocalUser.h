#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLocalUser.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLocal/sdk/LocalContext.h"
#include "LumoRTCLocal/server/MediaServer.h"

namespace lumo {

class LocalFileStream;
class LocalOutput;
class RemoteStream;

/// The local member for one stay in a room.
class LocalUser : public LMRTCLocalUser, public std::enable_shared_from_this<LocalUser> {
 public:
  /// Microphone and camera.
  using Outputs = std::vector<std::shared_ptr<LMRTCOutputStream>>;

  /// @param kicked  called on the SDK's thread after a role switch has ended in the removal of the local user
  LocalUser(std::shared_ptr<const LocalContext> context, MediaServer::Member member, Outputs defaults,
            std::function<void()> kicked);

  /// Stops sending; the stay is over.
  void close();

  /// What is open in the room; of a file that is still being opened, nothing.
  Publications publications() const;

  const std::string& userId() const override { return context_->userId; }
  OutputStreams streams() const override;

  void publishStreams(const OutputStreams& streams, Completion completion) override;
  void unpublishStreams(const OutputStreams& streams, Completion completion) override;
  void publishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream,
                         LiveCompletion completion) override;
  void publishDefaultLiveStreams(LiveCompletion completion) override;
  void unpublishLiveStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) override;
  void unpublishDefaultLiveStreams(Completion completion) override;
  void subscribeStream(const std::optional<InputStreams>& streams,
                       const std::optional<InputStreams>& tinyStreams, Completion completion) override;
  void unsubscribeStreams(const InputStreams& streams, Completion completion) override;
  void publishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) override;
  void unpublishStream(const std::shared_ptr<LMRTCOutputStream>& stream, Completion completion) override;

  /// The handle is the one that a live publication gives. A `config` that is refused fails the switch.
  void switchToBroadcaster(const LMRTCMixConfig* config, BecameBroadcaster onSucceed, Failed onFailed,
                           Kicked onKicked) override;
  /// Stops publishing first.
  void switchToAudienceOnSucceed(std::function<void()> onSucceed, Failed onFailed, Kicked onKicked) override;

  void requestJoinOtherRoom(const std::string& roomId, const std::string& userId, bool autoMix,
                            const std::string& extra, CodeCompletion completion) override;
  void cancelRequestJoinOtherRoom(const std::string& roomId, const std::string& userId,
                                  const std::string& extra, CodeCompletion completion) override;
  void responseJoinOtherRoom(const std::string& roomId, const std::string& userId, bool agree, bool autoMix,
                             const std::string& extra, CodeCompletion completion) override;

  /// For this stay; off at first.
  void setEnableSEI(bool enabled, CodeCompletion completion) override;
  /// Goes with the next picture of the camera, to those who receive it.
  std::int64_t sendSEI(const std::string& sei) override;

 private:
  enum class RoomKind { normal, live };

  /// Runs `work` (of a LocalUser, giving a code) as the operation of that name, and completes it.
  template <class Work>
  void run(std::string_view name, Completion completion, Work work);
  void publishLive(std::string_view name, const OutputStreams& streams, LiveCompletion completion);
  void unpublish(std::string_view name, const OutputStreams& streams, RoomKind kind, Completion completion);

  void startFile(const std::shared_ptr<LocalFileStream>& stream, bool isLive);
  void dropFile(const std::weak_ptr<LocalFileStream>& stream);
  std::int64_t doPublish(const OutputStreams& streams, RoomKind kind);
  std::int64_t doUnpublish(const OutputStreams& streams, RoomKind kind);
  std::int64_t doSubscribe(const InputStreams& streams, const InputStreams& tinyStreams);
  std::int64_t doUnsubscribe(const InputStreams& streams);
  std::int64_t becomeAudience();
  /// Switches with `work`, an operation of LocalUser, and calls the one function that fits.
  template <class Work>
  void switchRole(std::string_view name, Work work, std::function<void(LocalUser&)> onSucceed,
                  Failed onFailed, Kicked onKicked);
  std::shared_ptr<LMRTCLiveInfo> liveInfo();

  const std::shared_ptr<const LocalContext> context_;
  const MediaServer::Member member_;
  const Outputs defaults_;
  const std::function<void()> kicked_;

  std::atomic<bool> seiEnabled_{false};
  mutable std::mutex mutex_;  ///< guards what follows
  bool open_ = true;
  OutputStreams published_;
  std::shared_ptr<LMRTCLiveInfo> liveInfo_;
};

}  // namespace lumo
