// Every call that the library makes is made to fail, one run for each: whatever fails, the result
// is one that the header names, nothing stays behind, and the next run is as if nothing had been.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <set>

#include "tests/failures/scenarios.h"
#include "tests/failures/world.h"
#include "tests/testing/held.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/testing/valgrind.h"
#include "tests/usb/fake_libusb.h"

namespace failures {

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

namespace {

using Problems = std::vector<std::string>;

constexpr double kLongestRun = 60;     // seconds of the library's clock
constexpr std::size_t kMostShown = 8;  // problems of one scenario
// A read with the log on makes more calls than this, mostly for the log: a line takes eight or nine
// of them. Of those every seventh is tried; QL_EVERY_POSITION in the environment has all tried.
constexpr std::size_t kManyCalls = 1000;
constexpr std::size_t kLogCallStep = 7;
// Under Valgrind and emulation, where a run takes many times as long, every eleventh call is tried.
constexpr std::size_t kStepWhereSlow = 11;

bool RunsSlowly() {
#ifdef QL_EMULATED
  return true;
#else
  return UnderValgrind();
#endif
}

struct Outcome {
  std::vector<StepResult> steps;
  std::vector<std::string> files;
};

std::set<std::string> FilesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename());
  }
  return names;
}

// What the library holds, and what it has done wrong.
Problems Remains(const World& world) {
  const auto& usb = fake_libusb::Now();
  Problems found = world.misuse;
  if (!world.blocks.empty()) found.push_back(std::to_string(world.blocks.size()) + " blocks kept");
  if (!world.libraries.empty()) found.emplace_back("the decoder kept open");
  if (!world.descriptors.empty()) found.emplace_back("a descriptor kept open");
  if (usb.contexts != 0) found.emplace_back("libusb kept initialised");
  if (usb.lists != 0) found.emplace_back("a device list kept");
  if (usb.handles != 0) found.emplace_back("a USB device kept open");
  return found;
}

bool SameSettings(const termios& one, const termios& other) {
  return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag &&
         one.c_cflag == other.c_cflag && one.c_lflag == other.c_lflag &&
         std::equal(std::begin(one.c_cc), std::end(one.c_cc), std::begin(other.c_cc));
}

// Whether the output of a failed step is as it should be.
bool IsLeft(const Step& step, const StepResult& got, const StepResult& good) {
  constexpr int kNoPhoto = -7;
  if (step.leaves == Leaves::kTextWithoutPhoto && got.result == kNoPhoto) {
    return got.bytes == good.bytes;
  }
  auto left = got.bytes.begin();
  if (step.leaves == Leaves::kBeginning) {
    left = std::mismatch(left, got.bytes.end(), good.bytes.begin(), good.bytes.end()).first;
  }
  return std::all_of(left, got.bytes.end(), [](char byte) { return byte == '\0'; });
}

// What is only asked again must not show.
bool IsAskedAgain(const Call& call, const Plan& plan) {
  constexpr std::string_view kAskedAgain[] = {"read",      "write", "poll",
                                              "nanosleep", "sleep", "tcsetattr"};
  if (plan.way == kError) return call.import->name == "nanosleep";
  if (plan.way == kBusy && plan.lasting) return false;
  return std::find(std::begin(kAskedAgain), std::end(kAskedAgain), call.import->name) !=
         std::end(kAskedAgain);
}

const char* NameOf(Way way) {
  return way == kError ? "error" : way == kShort ? "short" : way == kBusy ? "busy" : "signal";
}

class FailingCall : public testing::TestWithParam<Scenario> {
 protected:
  // Once for a test: prepares, and runs with nothing failing. False when that goes wrong.
  bool Prepare() {
    InstallStandIns();
    SwitchLogging(GetParam().logging);
    StartAfresh();
    GetParam().prepare();
    kept_ = FilesIn(TemporaryFolder());
    Run({});  // Takes up what is kept for good, such as the C library's time zone.
    descriptors_ = OpenDescriptors();
    threads_ = Threads();
    settings_ = world_.tty.Settings();
    good_ = Run({});
    calls_ = world_.calls;
    for (std::size_t i = 0; i < good_.steps.size(); ++i) {
      EXPECT_EQ(GetParam().steps[i].good, good_.steps[i].result) << GetParam().steps[i].name;
    }
    for (const std::string& problem : Remains(world_)) ADD_FAILURE() << problem;
    EXPECT_FALSE(calls_.empty());
    return !HasFailure();
  }

  Outcome Run(const Plan& plan) {
    for (const std::string& name : FilesIn(TemporaryFolder())) {
      if (!kept_.contains(name)) std::filesystem::remove(PathOf(name));
    }
    if (GetParam().logging) std::filesystem::remove(kLogFile);
    Outcome outcome;
    BeginRun(plan);
    for (const Step& step : GetParam().steps) outcome.steps.push_back(step.run());
    EndRun();
    for (const std::string& file : GetParam().files) {
      outcome.files.push_back(ReadWholeFile(PathOf(file)));
    }
    return outcome;
  }

  // Fails one call and looks at what is left.
  void Try(const Plan& plan) {
    const Call& call = calls_[plan.position - 1];
    world_.what = std::string(GetParam().name) + ", " + std::string(call.import->name) + ", call " +
                  std::to_string(plan.position) + ", " + NameOf(plan.way) +
                  (plan.lasting ? " from then on" : " once");
    const Outcome outcome = Run(plan);
    const bool repeated = !GetParam().once && IsAskedAgain(call, plan);
    Problems problems = ProblemsOf(outcome, repeated || !world_.failed_beyond_log);
    Append(Remains(world_), &problems);
    if (world_.failing != call.import) problems.emplace_back("was not the call that failed");
    if (!RestoredSettings(plan)) problems.emplace_back("the tty keeps the reader's settings");
    LookAround(&problems);
    Forget();
    ++tried_;

    Problems later = ProblemsOf(Run({}), true);
    Append(Remains(world_), &later);
    for (const std::string& problem : later) problems.push_back("next run: " + problem);
    Forget();
    for (const std::string& problem : problems) Report(problem);
  }

  Problems ProblemsOf(const Outcome& outcome, bool must_be_good) {
    Problems found;
    bool all_good = true;
    for (std::size_t i = 0; i < outcome.steps.size(); ++i) {
      const Step& step = GetParam().steps[i];
      const StepResult& got = outcome.steps[i];
      const StepResult& good = good_.steps[i];
      if (got.result == good.result && got.bytes == good.bytes) continue;
      all_good = false;
      const bool known =
          std::find(step.failures.begin(), step.failures.end(), got.result) != step.failures.end();
      const std::string result = std::string(step.name) + " = " + std::to_string(got.result);
      if (must_be_good) {
        found.push_back(result + " although nothing was lost");
      } else if (!known && !(got.result == good.result && step.leaves == Leaves::kBeginning)) {
        found.push_back(result);
      } else if (!IsLeft(step, got, good)) {
        found.push_back(result + " with the wrong output");
      }
    }
    if (all_good && outcome.files != good_.files) found.emplace_back("good, but not the files");
    return found;
  }

  // Nobody can restore settings that the system refuses to change.
  bool RestoredSettings(const Plan& plan) {
    if (!world_.tty_was_open || SameSettings(settings_, world_.tty.Settings())) return true;
    world_.tty.SetSettings(settings_);
    return plan.way == kError && world_.failing->name == "tcsetattr";
  }

  void LookAround(Problems* problems) {
    if (OpenDescriptors() != descriptors_) problems->emplace_back("descriptors gained");
    if (Threads() != threads_) problems->emplace_back("threads gained");
    if (static_cast<double>(world_.nanoseconds) / 1e9 > kLongestRun) {
      problems->push_back("took " + std::to_string(world_.nanoseconds / 1'000'000'000) + " s");
    }
    std::set<std::string> named(GetParam().files.begin(), GetParam().files.end());
    for (const std::string& name : FilesIn(TemporaryFolder())) {
      if (!named.contains(name)) problems->push_back("left the file " + name);
    }
    for (const std::string& name : FilesIn("/home/quillon")) {
      if (name != "QLConfig.ini" && name != "Alg_debug.log") {
        problems->push_back("left the file /home/quillon/" + name);
      }
    }
  }

  // What was found once is not found again in the next run.
  void Forget() {
    world_.misuse.clear();
    world_.blocks.clear();
    world_.libraries.clear();
    world_.descriptors.clear();
    fake_libusb::Now().contexts = fake_libusb::Now().lists = fake_libusb::Now().handles = 0;
    descriptors_ = OpenDescriptors();
  }

  void Report(const std::string& problem) {
    if (++shown_ <= kMostShown) ADD_FAILURE() << world_.what << ": " << problem;
  }

  static void Append(const Problems& more, Problems* problems) {
    problems->insert(problems->end(), more.begin(), more.end());
  }

  World& world_ = TheWorld();
  std::set<std::string> kept_;
  std::ptrdiff_t descriptors_ = 0;
  std::ptrdiff_t threads_ = 0;
  termios settings_ = {};
  Outcome good_;
  std::vector<Call> calls_;
  std::size_t tried_ = 0;
  std::size_t shown_ = 0;
};

TEST_P(FailingCall, LeavesNothingBehind) {
  NEEDS_PRIVATE_ROOT();
  ASSERT_TRUE(Prepare());
  const bool all = calls_.size() < kManyCalls || std::getenv("QL_EVERY_POSITION") != nullptr;
  const std::size_t step = RunsSlowly() ? kStepWhereSlow : 1;
  for (std::size_t position = 1; position <= calls_.size(); position += step) {
    if (!all && calls_[position - 1].logging && position % kLogCallStep != 0) continue;
    for (const Way way : {kError, kShort, kInterrupted, kBusy}) {
      if ((calls_[position - 1].ways & way) == 0) continue;
      Try({position, way, false});
      Try({position, way, true});
    }
  }

  RecordProperty("calls", static_cast<int>(calls_.size()));
  RecordProperty("runs", static_cast<int>(tried_));
  std::printf("%s: %zu calls, %zu runs with a failure\n", GetParam().name, calls_.size(), tried_);
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
