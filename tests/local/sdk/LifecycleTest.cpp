#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;
using Codes = std::vector<std::int64_t>;

class LifecycleTest : public LocalSdkTest {
 protected:
  Codes codes;
};

TEST_F(LifecycleTest, InjectedFailuresChangeNothingAndDelayedOperationsTakeEffectLater) {
  EXPECT_EQ(LocalCodeUnknownOperation, local->failNext("fly", 1));
  EXPECT_EQ(0, local->failNext("joinRoom", 4711, 2));
  for (const std::int64_t code : {4711, 4711, 0}) EXPECT_EQ(code, join("r"));
  EXPECT_EQ(0, local->failNext("publishStreams", 9));
  for (const std::int64_t code : {9, 0}) EXPECT_EQ(code, publish({camera()}));
  EXPECT_EQ(0, local->failNext("leaveRoom", 9));
  EXPECT_EQ(0, local->failNext("leaveRoom", 9, 0));
  EXPECT_EQ(0, leave());

  EXPECT_EQ(0, local->delayNext("joinRoom", 2s));
  engine->joinRoom("r", {}, [&](std::int64_t code, const auto&) { codes.push_back(code); });
  engine->leaveRoom([&](std::int64_t code) { codes.push_back(code); });
  local->advance(1999ms);
  EXPECT_EQ(Codes(), codes);
  EXPECT_EQ(0, local->join("r", "me").participant->leave()) << "nobody has taken the id yet";
  local->advance(1ms);
  EXPECT_EQ((Codes{0, 0}), codes) << "leaving waits for the join";
  EXPECT_EQ(LocalCodeNotInRoom, leave());
}

TEST_F(LifecycleTest, UnInitInTheMiddleOfThings) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera(), microphone()}));
  ASSERT_EQ(0, subscribe({stream("anna", 0), stream("anna", 1)}));
  std::uint64_t frames = 0;
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame&) { ++frames; });
  show(stream("anna", 1), view);
  camera()->setVideoView(preview);
  local->advance(5s);
  const std::uint64_t before = frames + view->frameCount() + preview->frameCount();
  takeTrace();

  const auto count = [&](bool, std::int64_t code) { codes.push_back(code); };
  EXPECT_EQ(0, local->delayNext("unsubscribeStreams", 10s));
  user()->unsubscribeStreams({stream("anna")}, count);
  user()->unpublishStreams({camera()}, count);
  EXPECT_EQ(0, anna->unpublishAudio());
  engine->leaveRoom([&](std::int64_t code) { codes.push_back(code); });
  engine->unInit();
  EXPECT_EQ(0, local->join("r", "me").participant->leave()) << "the server has let go";
  local->advance(20s);
  EXPECT_EQ(before, frames + view->frameCount() + preview->frameCount());
  EXPECT_TRUE(takeTrace().empty()) << "detached";
  EXPECT_EQ(Codes(3, LocalCodeNotInitialised), codes) << "also what is answered late";
}

TEST_F(LifecycleTest, UnInitFromWithinCallbacks) {
  engine->joinRoom("r", {}, [&](std::int64_t code, const auto&) {
    codes.push_back(code);
    engine->unInit();
  });
  engine->leaveRoom([&](std::int64_t code) { codes.push_back(code); });
  local->advance(0us);
  EXPECT_EQ((Codes{0, LocalCodeNotInitialised}), codes);

  engine->initWithConfig(LMRTCConfig());
  engine->setDelegate(recorder);
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ(0, publish({camera(), microphone()}));
  const auto anna = add("anna");
  recorder->onEvent = [this] { engine->unInit(); };
  EXPECT_EQ(0, anna->kick("me", 1));
  local->advance(0us);
  EXPECT_EQ((Trace{"joined anna of 0"}), takeTrace()) << "nothing is told after unInit";
}

}  // namespace
