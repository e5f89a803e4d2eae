#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCTypes.h"
#include "LumoRTCLibWrapper/util/LMIWCell.h"
#include "LumoRTCLocal/LumoRTCLocal.h"
#include "LumoRTCLocal/sdk/CameraPipeline.h"
#include "LumoRTCLocal/sdk/FilePlayback.h"
#include "LumoRTCLocal/sdk/FileReading.h"
#include "LumoRTCLocal/server/AudioExchange.h"
#include "LumoRTCLocal/server/LinkObserver.h"
#include "LumoRTCLocal/server/MediaServer.h"
#include "LumoRTCLocal/server/RoomObserver.h"

namespace lumo {

/// A member of a room that does what a script tells it to.
class ScriptedParticipant : public LumoRTCLocal::Participant,
                            public RoomObserver,
                            public LinkObserver,
                            public std::enable_shared_from_this<ScriptedParticipant> {
 public:
  /// What the participant is made of.
  struct Parts {
    std::shared_ptr<Timeline> timeline;
    std::shared_ptr<MediaServer> server;
    std::shared_ptr<AudioExchange> audio;
    std::string localUserId;  ///< whose streams the participant receives
    std::uint32_t sourceNumber = 0;
    VideoFormat video;
    std::unique_ptr<VideoSource> camera;  ///< null: the test picture
    std::shared_ptr<Runner> sdk;          ///< ends what files publish
    std::shared_ptr<Runner> decoding;     ///< decodes the sound of files
    std::shared_ptr<FilePlayback> files;
    std::shared_ptr<NetworkConnection> connection;
  };

  using Media = LumoRTCLocal::Media;
  using Role = LumoRTCLocal::Role;

  ScriptedParticipant(Parts parts, MediaServer::Member member, std::string userId);
  ~ScriptedParticipant() override;

  /// Whether it has neither left nor been removed.
  bool isInRoom() const;

  /// The tone that belongs to a source number.
  static std::unique_ptr<AudioSource> makeTone(std::uint32_t sourceNumber);

  const std::string& userId() const override { return userId_; }
  std::uint32_t sourceNumber() const override { return parts_.sourceNumber; }
  std::int64_t publishAudio() override;
  std::int64_t publishVideo() override;
  std::int64_t publish(const std::string& tag, Media media,
                       std::optional<std::uint32_t> sourceNumber) override;
  std::int64_t publishFile(const std::string& tag, const std::string& path) override;
  std::int64_t unpublishAudio() override;
  std::int64_t unpublishVideo() override;
  std::int64_t unpublish(const std::string& tag, Media media) override;
  std::int64_t mute(bool muted) override { return mute(kLMRTCDefaultStreamTag, muted); }
  std::int64_t mute(const std::string& tag, bool muted) override;
  std::int64_t disableVideo(bool disabled) override;
  std::int64_t disableVideo(const std::string& tag, bool disabled) override;
  std::int64_t switchRole(Role role) override;
  std::int64_t setMixConfig(const LMRTCMixConfig& config) override;
  std::int64_t enableInnerCdn(bool enabled) override;
  void setNetwork(const NetworkModel& up, const NetworkModel& down) override {
    connection_->setModels(up, down);
  }
  std::int64_t sendSei(const std::string& text) override;
  void onSei(SeiSink sink) override {
    sei_->set(sink ? std::make_shared<const SeiSink>(std::move(sink)) : nullptr);
  }
  std::int64_t leave() override { return leaveRoom(false); }
  std::int64_t goOffline() override { return leaveRoom(true); }
  std::int64_t kick(const std::string& userId, std::int64_t reason) override;
  std::int64_t linkRoom(const std::string& otherRoomId, bool autoMix) override;
  std::int64_t unlinkRoom(const std::string& otherRoomId) override;
  std::int64_t invite(const std::string& roomId, const std::string& userId, const std::string& extra,
                      bool autoMix) override;
  std::int64_t cancelInvite(const std::string& roomId, const std::string& userId,
                            const std::string& extra) override;
  std::int64_t answer(const std::string& roomId, const std::string& userId, bool agree,
                      const std::string& extra, bool autoMix) override;
  std::int64_t visit(const std::string& roomId) override;
  std::int64_t endVisit(const std::string& roomId) override;
  void onInvitation(InvitationSink sink) override;
  void onAudio(AudioSink sink) override;
  void onVideo(VideoSink sink, bool tiny) override;

 private:
  /// One microphone or camera of the participant, known by tag and media type.
  struct Source {
    bool enabled = true;
    std::uint32_t number = 0;                  ///< what it shows and sounds like
    std::shared_ptr<CameraPipeline> pipeline;  ///< video only; made when it is published first
    std::shared_ptr<Publication> publication;  ///< null: not published
  };
  using SourceKey = std::pair<std::string, std::int64_t>;  ///< tag, media type

  struct PublishedFile {
    std::string tag;
    std::shared_ptr<CameraPipeline> pipeline;
    std::shared_ptr<FileReading> reading;
    Publications publications;  ///< those that are still open
  };
  using Files = std::vector<std::shared_ptr<PublishedFile>>;

  /// Makes the receiver for the stream of a tag.
  struct Tap {
    std::function<std::shared_ptr<MediaReceiver>(const std::string& tag)> makeReceiver;
    bool tiny = false;
  };

  void streamsPublished(const std::vector<PublicationState>& streams) override;
  void kicked(std::int64_t reason) override;
  void linkRequested(const LinkEnd& inviter, const std::string& extra) override;
  void linkRequestCancelled(const LinkEnd& inviter, const std::string& extra) override;
  void tellInvitation(const Invitation& invitation) const;

  std::shared_ptr<Publication> makePublication(const std::string& tag, std::int64_t mediaType, Source& source,
                                               std::uint32_t number);
  std::shared_ptr<CameraPipeline> makePipeline(const std::string& tag, std::uint32_t number);
  void opened(Source& source, const std::shared_ptr<Publication>& publication, std::uint32_t number);
  static void closed(Source& source);
  /// What is open under a tag; null: nothing.
  std::shared_ptr<Publication> publicationOf(const std::string& tag, std::int64_t mediaType);
  Publications makePublications(const PublishedFile& file);
  void fileEnded(const std::shared_ptr<PublishedFile>& file);
  /// Ends what was published, which the server has closed.
  /// @return as takeClosedFiles
  Files closeAll();
  /// Stops the files of which nothing is published any more.
  /// @return what the caller drops after the lock
  Files takeClosedFiles();
  std::int64_t setEnabled(const std::string& tag, std::int64_t mediaType, bool enabled);
  std::int64_t leaveRoom(bool offline);
  void receive(std::int64_t mediaType, std::shared_ptr<const Tap> tap);
  void tap(const std::shared_ptr<Publication>& stream);

  const MediaServer::Member member_;
  const std::string userId_;
  using SeiCell = Cell<std::shared_ptr<const SeiSink>>;
  const std::shared_ptr<SeiCell> sei_ = std::make_shared<SeiCell>();  ///< shared with the receivers
  const std::shared_ptr<NetworkConnection> connection_;
  Cell<std::shared_ptr<const InvitationSink>> invitations_;
  std::mutex mutex_;  ///< guards what follows; held over calls into the server, which never call back
  Parts parts_;
  std::map<SourceKey, Source> sources_;
  Files files_;
  std::map<std::int64_t, std::shared_ptr<const Tap>> taps_;  ///< by media type
};

}  // namespace lumo
