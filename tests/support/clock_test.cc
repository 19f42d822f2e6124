#include "support/clock.h"

#include <gtest/gtest.h>

TEST(WallClock, IsTheTimeOfDay) {
  const std::int64_t before = std::int64_t{time(nullptr)} * 1000;

  const std::int64_t now = WallMilliseconds();

  EXPECT_GE(now, before);
  EXPECT_LE(now, (std::int64_t{time(nullptr)} + 1) * 1000);
}
