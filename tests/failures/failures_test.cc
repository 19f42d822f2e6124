// Every call that the library makes is made to fail, one run for each: whatever fails, the result
// is one that the header names, nothing stays behind, and the next run is as if nothing had been.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <set>

#include "tests/failures/trial.h"
#include "tests/testing/private_root.h"
#include "tests/testing/valgrind.h"

namespace failures {

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

namespace {

constexpr std::size_t kMostShown = 8;  // problems of one scenario
// A read with the log on makes more calls than this, mostly for the log: a line takes eight or nine
// of them. Of those every seventh is tried; QL_EVERY_POSITION in the environment has all tried.
constexpr std::size_t kManyCalls = 1000;
constexpr std::size_t kLogCallStep = 7;
// Under Valgrind and emulation, where a run takes many times as long, every eleventh call is tried;
// with sanitizers in an emulator every 37th.
#if defined(QL_EMULATED) && defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kStepWhereSlow = 37;
#else
constexpr std::size_t kStepWhereSlow = 11;
#endif

class FailingCall : public testing::TestWithParam<Scenario> {};

TEST_P(FailingCall, LeavesNothingBehind) {
  NEEDS_PRIVATE_ROOT();
  Trial trial(GetParam());
  ASSERT_EQ(Problems{}, trial.problems());
  const auto& calls = trial.calls();
  const bool all = calls.size() < kManyCalls || std::getenv("QL_EVERY_POSITION") != nullptr;
  const std::size_t step = RunsSlowly() ? kStepWhereSlow : 1;
  std::size_t tried = 0;
  std::size_t shown = 0;
  const auto try_it = [&](const Plan& plan) {
    ++tried;
    for (const std::string& problem : trial.Try(plan)) {
      if (++shown <= kMostShown) ADD_FAILURE() << TheWorld().what << ": " << problem;
    }
  };

  for (std::size_t position = 1; position <= calls.size(); position += step) {
    if (!all && calls[position - 1].logging && position % kLogCallStep != 0) continue;
    for (const Way way : {kError, kShort, kInterrupted, kBusy}) {
      if ((calls[position - 1].ways & way) == 0) continue;
      try_it({position, way, false});
      try_it({position, way, true});
    }
  }

  RecordProperty("calls", static_cast<int>(calls.size()));
  RecordProperty("runs", static_cast<int>(tried));
  std::printf("%s: %zu calls, %zu runs with a failure\n", GetParam().name, calls.size(), tried);
}

// A row of the table that no scenario reaches would count as tried.
TEST(Scenarios, MakeEveryCallThatCanFail) {
  NEEDS_PRIVATE_ROOT();
  InstallStandIns();
  std::set<const Import*> made;
  for (const Scenario& scenario : Scenarios()) {
    StartAfresh();
    SwitchLogging(scenario.logging);
    scenario.prepare();
    BeginRun({});
    for (const Step& step : scenario.steps) step.run();
    EndRun();
    for (const Call& call : TheWorld().calls) made.insert(call.import);
  }

  for (const Import& row : Imports()) {
    EXPECT_TRUE(row.ways == kNone || made.contains(&row)) << row.name;
  }
}

INSTANTIATE_TEST_SUITE_P(, FailingCall, testing::ValuesIn(Scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

}  // namespace
}  // namespace failures
