#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/system/UIView.h"
#include "LumoRTCLocal/media/AudioBlock.h"
#include "LumoRTCLocal/media/NetworkModel.h"
#include "LumoRTCLocal/media/Timeline.h"
#include "LumoRTCLocal/media/VideoFormat.h"

class LMRTCMixConfig;

/// The in-process media SDK: real pictures and real sound, without devices and, unless `setNetwork` models
/// one, without a network. A host that is being developed or tested installs it, uses LMRTCIWEngine as ever
/// and scripts who else is in the room:
///
///   const auto local = LumoRTCLocal::install();
///   const auto anna = local->join("room", "anna").participant;
///   anna->publishVideo();
///
/// The local camera shows the test picture of source number 0 (see TestPicture.h), and that of
/// kBackCameraSource when it is switched to the back. The local microphone hears a tone; a tone has 300 Hz
/// plus 100 Hz times the source number. Captured media is sent while somebody has subscribed to it.
///
/// Result codes are those of LumoRTCLocal/server/LocalCodes.h; LMRTCCodeDefine::codeDesc gives their texts.
/// Every operation may be called on any thread. Completions and room events come on one SDK thread, pictures
/// on a render thread per bound stream, sound on one audio thread; at manual pace all of them run inside
/// `advance`.
class LumoRTCLocal {
 public:
  /// The source number of the local back camera.
  static constexpr std::uint32_t kBackCameraSource = 1000;

  enum class Pace {
    realTime,  ///< by the clock, on threads
    manual,    ///< in `advance` only, on the calling thread; repeatable, for tests
  };

  struct Options {
    Pace pace = Pace::realTime;
    std::string userId = "local";  ///< of the local user
    /// Whether what the speaker plays can be heard: on the machine's default sound output, if there is one.
    bool soundOutput = false;
    /// What status reports say of the connection: "wlan", "wwan" or another name.
    std::string networkType = "wlan";
    /// Absent: the machine's first IPv4 address beyond the loopback, or "127.0.0.1".
    std::optional<std::string> ipAddress = {};
  };

  /// What a participant is in its room; it decides the kind of a room that does not exist yet.
  enum class Role {
    member,       ///< of a normal room
    broadcaster,  ///< of a live room
    audience,     ///< of a live room; may not publish
  };

  enum class Media { audio, video, audioAndVideo };

  struct ParticipantOptions {
    Role role = Role::member;
    /// What test picture and tone show; absent: 1, 2, ... in the order of joining.
    std::optional<std::uint32_t> sourceNumber = {};
    /// What its cameras and files send; LocalCodeVideoFormat for one that is out of range.
    lumo::VideoFormat video = {};
    /// A video file or capture device for its default video stream; empty: the test picture.
    std::string camera = {};
    /// How its connection to the media server behaves, to it and from it.
    lumo::NetworkModel uplink = {};
    lumo::NetworkModel downlink = {};
  };

  /// A scripted user in one room. Its operations take effect at once and answer with a code; after it has
  /// left or was removed they answer LocalCodeNotInRoom. `uninstall`, and with it the end of the
  /// LumoRTCLocal, makes every participant leave; until then it stays, whether or not anybody holds it.
  ///
  /// Each video stream goes out in normal size and, for whoever subscribes to the small size, scaled down to
  /// a shorter side of 180 pixels at 10 frames per second.
  class Participant {
   public:
    /// One stream of the local user as it reached this participant.
    using AudioSink =
        std::function<void(const std::string& tag, const lumo::AudioBlock& block, lumo::Microseconds)>;
    using VideoSink = std::function<void(const std::string& tag, const LMRTCVideoFrame& frame)>;

    using SeiSink = std::function<void(const std::string& text)>;

    /// An invitation to link the participant's room with that of the inviter.
    struct Invitation {
      std::string roomId;  ///< of the inviter
      std::string userId;
      std::string extra;       ///< the inviter's text; empty when it went away
      bool cancelled = false;  ///< it was taken back
    };
    using InvitationSink = std::function<void(const Invitation& invitation)>;

    virtual ~Participant() = default;

    virtual const std::string& userId() const = 0;
    virtual std::uint32_t sourceNumber() const = 0;

    /// Publishes the microphone, or the camera.
    virtual std::int64_t publishAudio() = 0;
    virtual std::int64_t publishVideo() = 0;
    /// Publishes under `tag`: kLMRTCDefaultStreamTag for microphone and camera, else a custom stream. What
    /// one call publishes is told in one event.
    /// @param sourceNumber  what a custom stream shows and sounds like; absent: as the participant, as
    ///                      microphone and camera always do
    virtual std::int64_t publish(const std::string& tag, Media media,
                                 std::optional<std::uint32_t> sourceNumber = {}) = 0;

    /// Publishes a media file as a custom stream of pictures and, where the file has sound, of sound, and
    /// reads it once from its start. At the end of the file what is left of them is unpublished. Blocks while
    /// the file's beginning is read.
    /// @param tag  not kLMRTCDefaultStreamTag
    /// @return LocalCodeFileFailed for a file that cannot be opened or has no picture
    virtual std::int64_t publishFile(const std::string& tag, const std::string& path) = 0;

    virtual std::int64_t unpublishAudio() = 0;
    virtual std::int64_t unpublishVideo() = 0;
    virtual std::int64_t unpublish(const std::string& tag, Media media) = 0;

    /// Mutes a microphone, or switches a camera off: the stream sends nothing and its state is told. Works
    /// before publishing too; the stream then starts in that state. The first forms concern the default
    /// streams.
    virtual std::int64_t mute(bool muted) = 0;
    virtual std::int64_t mute(const std::string& tag, bool muted) = 0;
    virtual std::int64_t disableVideo(bool disabled) = 0;
    virtual std::int64_t disableVideo(const std::string& tag, bool disabled) = 0;

    /// Live rooms only; whoever becomes audience stops publishing. LocalCodeNotALiveRoom for Role::member.
    virtual std::int64_t switchRole(Role role) = 0;
    /// Steers the live mix of its room, as a broadcaster; see docs/local-media-sdk.md for the values.
    virtual std::int64_t setMixConfig(const LMRTCMixConfig& config) = 0;
    virtual std::int64_t enableInnerCdn(bool enabled) = 0;
    /// How its connection behaves from now on.
    virtual void setNetwork(const lumo::NetworkModel& up, const lumo::NetworkModel& down) = 0;
    /// Sends a text of at most 4096 bytes with the camera's next picture, to those who receive that.
    virtual std::int64_t sendSei(const std::string& text) = 0;
    /// Hands on the texts that come with the pictures that `onVideo` receives, on the same thread, right
    /// after the picture. An empty sink ends it.
    virtual void onSei(SeiSink sink) = 0;

    /// Stops publishing and leaves.
    virtual std::int64_t leave() = 0;
    /// As `leave`, but the others hear that the connection was lost.
    virtual std::int64_t goOffline() = 0;
    /// Makes the server remove a member, such as the local user, from the room.
    /// @param reason  passed on to the removed member
    virtual std::int64_t kick(const std::string& userId, std::int64_t reason) = 0;
    /// Links the room with another one, which need not exist yet, without an invitation.
    /// @param autoMix  as for `invite`; a later call changes it
    virtual std::int64_t linkRoom(const std::string& otherRoomId, bool autoMix = false) = 0;
    /// Ends such a link, or one that was agreed, for everybody.
    virtual std::int64_t unlinkRoom(const std::string& otherRoomId) = 0;

    /// Invites a member of another room to link the two rooms, takes the invitation back, or answers one:
    /// the room is that of the other end. When it agrees, the two rooms are linked.
    /// @param extra    a text for the other end
    /// @param autoMix  whether the live mix of the participant's own room takes in what the other room's
    ///                 broadcasters publish, as long as the link lasts. Each end decides for its own room;
    ///                 without effect unless both are live rooms.
    virtual std::int64_t invite(const std::string& roomId, const std::string& userId,
                                const std::string& extra = {}, bool autoMix = false) = 0;
    virtual std::int64_t cancelInvite(const std::string& roomId, const std::string& userId,
                                      const std::string& extra = {}) = 0;
    virtual std::int64_t answer(const std::string& roomId, const std::string& userId, bool agree,
                                const std::string& extra = {}, bool autoMix = false) = 0;
    /// Hands on every invitation that reaches the participant from now on, and when it is taken back, on the
    /// SDK thread; the sink may answer at once. An empty sink ends it.
    virtual void onInvitation(InvitationSink sink) = 0;

    /// Joins a linked room beside the own one, as a guest: onAudio and onVideo then receive the local user
    /// there, too. It ends with the link, or when the participant leaves.
    /// @return LocalCodeNotLinked and the like; for endVisit LocalCodeOtherRoomNotJoined
    virtual std::int64_t visit(const std::string& roomId) = 0;
    virtual std::int64_t endVisit(const std::string& roomId) = 0;

    /// Receives the local user's streams of that kind from now on, those published later included, and hands
    /// each block or frame to the sink, on the media thread that sent it (or the network's). An empty sink
    /// receives nothing more, though one call may still be under way. `tiny` means the small size.
    virtual void onAudio(AudioSink sink) = 0;
    virtual void onVideo(VideoSink sink, bool tiny = false) = 0;
  };

  struct JoinResult {
    std::int64_t code = 0;
    std::string message;  ///< the code's text; for a camera that fails, what is wrong with it
    std::shared_ptr<Participant> participant;  ///< null unless code is 0
  };

  /// Installs LumoRTCLocal as the provider of the process. Before the first LMRTCIWEngine is created.
  static std::shared_ptr<LumoRTCLocal> install();
  static std::shared_ptr<LumoRTCLocal> install(const Options& options);

  /// As `uninstall`. At manual pace what has not run by then never will, and is not answered.
  ~LumoRTCLocal();
  LumoRTCLocal(const LumoRTCLocal&) = delete;
  LumoRTCLocal& operator=(const LumoRTCLocal&) = delete;

  /// Un-initialises the SDK engine, makes the participants leave and removes the provider, if it is still
  /// installed.
  void uninstall();

  /// Makes the local camera capture from a video file or a capture device, before or during a call; an empty
  /// path brings the test pictures back. It stands in for both the front and the back camera.
  /// @return nothing, or what is wrong, for people; the camera then stays as it is
  std::optional<std::string> setCamera(const std::string& path);

  /// Where the host has last pointed the local camera's focus and exposure, in the coordinates of the
  /// preview; nothing before.
  std::optional<UIPoint> cameraFocusPosition() const;
  std::optional<UIPoint> cameraExposurePosition() const;

  /// Plays what the local user hears: the mix of all subscribed streams that are not muted and of the sound
  /// files that play. One block per 10 ms while the speaker is on and the local user is in a room or a file
  /// plays, on the audio thread. An empty sink plays nothing.
  void setSpeaker(std::function<void(const lumo::AudioBlock& block, lumo::Microseconds time)> sink);

  /// Writes what the speaker plays, or what the local user's microphone stream sends, to a WAV file: from now
  /// on until another path, an empty one or `uninstall` completes the file. The speaker's file grows while
  /// the speaker plays (see setSpeaker); the other one while the stream is published, with silence where it
  /// is muted.
  /// @return nothing, or what is wrong, for people: with the file that was completed or, in place of it, with
  /// the new one, which then is not written
  std::optional<std::string> recordSpeaker(const std::string& path);
  std::optional<std::string> recordMicrophone(const std::string& path);

  /// Puts a user into a room.
  JoinResult join(const std::string& roomId, const std::string& userId);
  JoinResult join(const std::string& roomId, const std::string& userId, const ParticipantOptions& options);

  /// At manual pace, moves time forward and runs everything that falls due; 0 runs what is due now.
  /// @return the number of tasks run
  std::size_t advance(lumo::Microseconds duration);
  /// The present time on the clock of all timestamps.
  lumo::Microseconds now() const;

  /// Told, on the SDK's thread, of every address to which a live mix cannot be pushed, or no longer. The
  /// address is dropped then. An empty sink is told nothing. `error` says what is wrong, for people.
  void setPushFailed(std::function<void(const std::string& address, const std::string& error)> sink);

  /// How the local user's connection to the media server behaves from now on, to it and from it; perfect at
  /// first.
  void setNetwork(const lumo::NetworkModel& up, const lumo::NetworkModel& down);

  /// Makes the next calls of an SDK operation fail with `code`, without doing anything. The operations are:
  /// joinRoom, leaveRoom, publishStreams, unpublishStreams, publishLiveStream, publishDefaultLiveStreams,
  /// unpublishLiveStream, unpublishDefaultLiveStreams, subscribeStream, unsubscribeStreams,
  /// requestJoinOtherRoom, cancelRequestJoinOtherRoom, responseJoinOtherRoom, joinOtherRoom, leaveOtherRoom,
  /// setMixConfig, addPublishStreamUrl, removePublishStreamUrl, enableInnerCDN, setVideoConfig (of the inner
  /// CDN stream), switchToBroadcaster, switchToAudienceOnSucceed, setEnableSEI, startRTCProbeTest,
  /// stopRTCProbeTest. A role switch that fails with LocalCodeKicked ends with the local user's removal from
  /// the room.
  /// @param times  how many calls; 0 takes an earlier order back
  /// @return LocalCodeUnknownOperation for any other name
  std::int64_t failNext(const std::string& operation, std::int64_t code, std::int32_t times = 1);
  /// Makes the next call of an SDK operation take effect, and answer, that much later. Those called after
  /// it wait for it. Operations as for failNext.
  std::int64_t delayNext(const std::string& operation, lumo::Microseconds duration);

 private:
  struct State;

  explicit LumoRTCLocal(std::unique_ptr<State> state);

  const std::unique_ptr<State> state_;
};
