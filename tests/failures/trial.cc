#include "tests/failures/trial.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "tests/testing/held.h"
#include "tests/testing/private_root.h"
#include "tests/usb/fake_libusb.h"

namespace failures {
namespace {

constexpr double kLongestRun = 60;  // seconds of the library's clock

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
  if (usb.claims != 0) found.emplace_back("an interface kept claimed");
  if (usb.handles != 0) found.emplace_back("a USB device kept open");
  return found;
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

// Whether the step may give this result when a call of this function fails.
bool IsKnown(const Step& step, int result, const Import* failing) {
  const std::vector<int> known = step.failures_of_call != nullptr && failing != nullptr
                                     ? step.failures_of_call(failing->name)
                                     : step.failures;
  return std::find(known.begin(), known.end(), result) != known.end();
}

void Append(const Problems& more, Problems* problems) {
  problems->insert(problems->end(), more.begin(), more.end());
}

}  // namespace

Trial::Trial(const Scenario& scenario) : scenario_(scenario) {
  InstallStandIns();
  SwitchLogging(scenario.logging);
  StartAfresh();
  scenario.prepare();
  kept_ = FilesIn(TemporaryFolder());
  Run({});  // Takes up what is kept for good, such as the C library's time zone.
  descriptors_ = OpenDescriptors();
  threads_ = Threads();
  good_ = Run({});
  calls_ = world_.calls;
  for (std::size_t i = 0; i < good_.steps.size(); ++i) {
    const Step& step = scenario.steps[i];
    if (good_.steps[i].result == step.good) continue;
    problems_.push_back(std::string(step.name) + " = " + std::to_string(good_.steps[i].result));
  }
  if (calls_.empty()) problems_.emplace_back("no call");
  Append(Remains(world_), &problems_);
}

Trial::Outcome Trial::Run(const Plan& plan) {
  for (const std::string& name : FilesIn(TemporaryFolder())) {
    if (!kept_.contains(name)) std::filesystem::remove(PathOf(name));
  }
  if (scenario_.logging) std::filesystem::remove(kLogFile);
  Outcome outcome;
  BeginRun(plan);
  for (const Step& step : scenario_.steps) outcome.steps.push_back(step.run());
  EndRun();
  for (const std::string& file : scenario_.files) {
    const std::string path = PathOf(file);
    outcome.files.push_back(FileExists(path) ? std::optional(ReadWholeFile(path)) : std::nullopt);
  }
  return outcome;
}

Problems Trial::Try(const Plan& plan) {
  const Call& call = calls_[plan.position - 1];
  world_.what = std::string(scenario_.name) + ", " + std::string(call.import->name) + ", call " +
                std::to_string(plan.position) + ", " + NameOf(plan.way) +
                (plan.lasting ? " from then on" : " once");
  const Outcome outcome = Run(plan);
  const bool repeated = !scenario_.once && IsAskedAgain(call, plan);
  Problems problems = ProblemsOf(outcome, repeated || !world_.failed_beyond_log);
  Append(Remains(world_), &problems);
  if (world_.failing != call.import) problems.emplace_back("was not the call that failed");
  if (!RestoredSettings()) problems.emplace_back("the tty keeps the reader's settings");
  LookAround(&problems);
  Forget();

  Problems later = ProblemsOf(Run({}), true);
  Append(Remains(world_), &later);
  for (const std::string& problem : later) problems.push_back("next run: " + problem);
  Forget();
  return problems;
}

Problems Trial::ProblemsOf(const Outcome& outcome, bool must_be_good) const {
  Problems found;
  bool all_good = true;
  for (std::size_t i = 0; i < outcome.steps.size(); ++i) {
    const Step& step = scenario_.steps[i];
    const StepResult& got = outcome.steps[i];
    const StepResult& good = good_.steps[i];
    if (got.result == good.result && got.bytes == good.bytes) continue;
    all_good = false;
    const std::string result = std::string(step.name) + " = " + std::to_string(got.result);
    if (must_be_good) {
      found.push_back(result + " although nothing was lost");
    } else if (!IsKnown(step, got.result, world_.failing) &&
               !(got.result == good.result && step.leaves == Leaves::kBeginning)) {
      found.push_back(result);
    } else if (!IsLeft(step, got, good)) {
      found.push_back(result + " with the wrong output");
    }
  }
  CompareFiles(outcome, all_good, &found);
  return found;
}

// A file that could not be finished holds nothing else than its beginning; one of the preparation
// stays as it was.
void Trial::CompareFiles(const Outcome& outcome, bool all_good, Problems* problems) const {
  for (std::size_t i = 0; i < outcome.files.size(); ++i) {
    const auto& got = outcome.files[i];
    const auto& good = good_.files[i];
    if (got == good) continue;
    const std::string& name = scenario_.files[i];
    if (all_good) {
      problems->push_back("good, but not the file " + name);
    } else if (kept_.contains(name)) {
      problems->push_back("changed the file " + name);
    } else if (got && !(good && good->starts_with(*got))) {
      problems->push_back("wrote something else to the file " + name);
    }
  }
}

// Nobody can restore settings when the system refuses the very call that would.
bool Trial::RestoredSettings() const {
  if (!world_.tty_was_open || SameSettings(world_.first_settings, world_.tty.Settings())) {
    return true;
  }
  return world_.restoring_refused;
}

void Trial::LookAround(Problems* problems) const {
  if (OpenDescriptors() != descriptors_) problems->emplace_back("descriptors gained");
  if (Threads() != threads_) problems->emplace_back("threads gained");
  if (static_cast<double>(world_.nanoseconds) / 1e9 > kLongestRun) {
    problems->push_back("took " + std::to_string(world_.nanoseconds / 1'000'000'000) + " s");
  }
  const std::set<std::string> named(scenario_.files.begin(), scenario_.files.end());
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
void Trial::Forget() {
  world_.misuse.clear();
  world_.blocks.clear();
  world_.libraries.clear();
  world_.descriptors.clear();
  world_.tty.SetSettings(world_.first_settings);
  auto& usb = fake_libusb::Now();
  usb.contexts = usb.lists = usb.claims = usb.handles = 0;
  descriptors_ = OpenDescriptors();
  threads_ = Threads();
}

}  // namespace failures
