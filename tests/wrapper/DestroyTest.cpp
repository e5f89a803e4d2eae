#include <latch>
#include <thread>

#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class DestroyTest : public EngineTest {
 protected:
  bool reachesTheHost() {
    bool called = false;
    host->onUserLeft = [&called](const std::string&, const std::string&) { called = true; };
    room->events()->didLeaveUser(user("u1"));
    return called;
  }
};

TEST_F(DestroyTest, WaitsForTheCallbackOfAnotherThreadAndLetsNoNewOneIn) {
  join();
  const auto shared = engine;
  std::atomic<bool> ended = false;
  std::thread destroyer;
  host->onUserJoined = [&](const std::string&, const std::string&) {
    destroyer = std::thread([&] {
      shared->destroy();
      EXPECT_TRUE(ended);
    });
    while (reachesTheHost()) std::this_thread::yield();
    ended = true;
  };
  room->events()->didJoinUser(user("u1"));
  destroyer.join();
  EXPECT_FALSE(reachesTheHost());
}

TEST_F(DestroyTest, CallbacksOfTwoThreadsMayDestroyAtTheSameTime) {
  join();
  const auto shared = engine;
  std::latch both(2);
  host->onUserJoined = [&](const std::string&, const std::string&) {
    both.arrive_and_wait();
    shared->destroy();
  };
  std::thread other([this] { room->events()->didJoinUser(user("u1")); });
  room->events()->didJoinUser(user("u2"));
  other.join();
  EXPECT_FALSE(reachesTheHost());
}

}  // namespace
}  // namespace lumo
