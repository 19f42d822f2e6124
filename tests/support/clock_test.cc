// The clocks and naps that waiting loops stand on.
#include "support/clock.h"

#include <gtest/gtest.h>

#include "tests/testing/stand_in_clock.h"

TEST(WallClock, IsTheTimeOfDay) {
  const std::int64_t before = std::int64_t{time(nullptr)} * 1000;

  const std::int64_t now = WallMilliseconds();

  EXPECT_GE(now, before);
  EXPECT_LE(now, (std::int64_t{time(nullptr)} + 1) * 1000);
}

TEST(WallClock, IsCutToMilliseconds) {
  stand_in_clock::HoldWallClock(1'700'000'000, 123'999'999);

  EXPECT_EQ(1'700'000'000'123, WallMilliseconds());
}

TEST(MonotonicClock, TakesNoPartInAStepOfTheWallClock) {
  const std::int64_t milliseconds = MonotonicMilliseconds();
  const std::int64_t seconds = MonotonicSeconds();
  const std::int64_t wall = WallMilliseconds();

  stand_in_clock::StepWallClock(-3600);

  EXPECT_GE(MonotonicMilliseconds(), milliseconds);
  EXPECT_LT(MonotonicMilliseconds(), milliseconds + 60'000);
  EXPECT_GE(MonotonicSeconds(), seconds);
  EXPECT_LT(WallMilliseconds(), wall - 3'000'000);
}

TEST(MonotonicClock, CountsWhileNapping) {
  const std::int64_t milliseconds = MonotonicMilliseconds();
  const std::int64_t seconds = MonotonicSeconds();

  Nap(5000);

  EXPECT_GE(MonotonicMilliseconds(), milliseconds + 5000);
  EXPECT_GE(MonotonicSeconds(), seconds + 5);
}

TEST(Nap, SleepsItsLength) {
  Nap(1500);
  EXPECT_NEAR(1.5, stand_in_clock::SecondsSlept(), 1e-9);

  NapMicroseconds(2'000'001);
  EXPECT_NEAR(3.500001, stand_in_clock::SecondsSlept(), 1e-9);
}

TEST(Nap, ReturnsAtOnceForNoLength) {
  Nap(0);
  Nap(-1);
  NapMicroseconds(0);
  NapMicroseconds(-5);

  EXPECT_EQ(0, stand_in_clock::SecondsSlept());
}

TEST(NapRestOfSlice, SleepsOnlyAfterAQuickPass) {
  const std::int64_t started = MonotonicMilliseconds();
  NapRestOfSlice(started, 20, 100);
  EXPECT_GT(stand_in_clock::SecondsSlept(), 0.05);
  EXPECT_LE(stand_in_clock::SecondsSlept(), 0.1);

  const double slept = stand_in_clock::SecondsSlept();
  stand_in_clock::Advance(10);
  NapRestOfSlice(started, 20, 100);
  EXPECT_EQ(slept, stand_in_clock::SecondsSlept());
}
