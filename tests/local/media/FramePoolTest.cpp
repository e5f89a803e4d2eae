#include <gtest/gtest.h>

#include <memory>

#include "LumoRTCLocal/media/FramePool.h"

namespace lumo {
namespace {

TEST(FramePoolTest, BuffersComeBackOnceNobodyHoldsThemAndOutliveThePool) {
  auto pool = std::make_unique<FramePool>();
  auto first = pool->take(64, 48);
  const auto second = pool->take(64, 48);
  EXPECT_NE(first->dataY(), second->dataY());
  const std::uint8_t* const memory = first->dataY();
  std::weak_ptr<LumoRTCI420Buffer> weak = first;
  first.reset();
  EXPECT_NE(memory, pool->take(48, 64)->dataY()) << "of another size";
  EXPECT_NE(memory, pool->take(64, 48)->dataY()) << "held weakly";
  weak.reset();
  const auto again = pool->take(64, 48);
  EXPECT_EQ(memory, again->dataY());
  pool.reset();
  again->mutableDataY()[0] = second->mutableDataV()[32 * 24 - 1] = 1;
}

}  // namespace
}  // namespace lumo
