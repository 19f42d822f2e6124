// What a trial looks at bites: steps that do one thing wrong when a call fails, and the problem
// that has to be told. They make their calls through the stand-ins, as the library does.
#include "tests/failures/trial.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/failures/calls.h"
#include "tests/testing/private_root.h"
#include "tests/usb/fake_libusb.h"

namespace failures {
namespace {

constexpr char kNamed[] = "named";
constexpr int kGood = 0, kFailed = -1, kUnknown = -99;

// Made first in every step, and made to fail. The fault of the step shows only then.
bool FirstCallFails() {
  timespec time = {};
  return ClockGettime(CLOCK_MONOTONIC, &time) != 0;
}

int OpenTty() { return Open(TheWorld().tty.path().c_str(), O_RDWR | O_NOCTTY); }

void SetBaud(int fd, speed_t baud) {
  termios settings = TheWorld().tty.Settings();
  cfsetspeed(&settings, baud);
  Tcsetattr(fd, TCSAFLUSH, &settings);
}

StepResult Fail() { return {kFailed, ""}; }

// Steps --------------------------------------------------------------------------------------

StepResult DoesNothingWrong() { return FirstCallFails() ? Fail() : StepResult{kGood, "out"}; }

StepResult KeepsNothing() {
  if (FirstCallFails()) return Fail();
  pollfd line = {-1, POLLOUT, 0};
  return Poll(&line, 1, 0) < 0 ? Fail() : StepResult{kGood, ""};
}

StepResult GivesAnUnknownResult() { return {FirstCallFails() ? kUnknown : kGood, ""}; }

StepResult LeavesHalfAnOutput() {
  return FirstCallFails() ? StepResult{kFailed, "ou"} : StepResult{kGood, "out"};
}

StepResult GivesAnotherOutput() { return {kGood, FirstCallFails() ? "in" : "out"}; }

// What a step keeps is not lost, or leaks would be reported. Volatile, since nobody reads it.
void* volatile s_kept;

StepResult KeepsABlock() {
  void* const block = Malloc(8);
  if (FirstCallFails()) {
    s_kept = block;
    return Fail();
  }
  Free(block);
  return {kGood, ""};
}

StepResult FreesTwice() {
  void* const block = Malloc(8);
  if (FirstCallFails()) Free(block);
  Free(block);
  return {kGood, ""};
}

StepResult KeepsADescriptor() {
  const int fd = Open("/dev/null", O_RDONLY);
  if (FirstCallFails()) return Fail();
  Close(fd);
  return {kGood, ""};
}

// Past the stand-ins, so that the kernel's count alone tells it.
StepResult KeepsAnUnknownDescriptor() {
  if (FirstCallFails() && open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) return Fail();
  return {kGood, ""};
}

StepResult ClosesTwice() {
  const int fd = Open("/dev/null", O_RDONLY);
  if (FirstCallFails()) Close(fd);
  Close(fd);
  return {kGood, ""};
}

StepResult KeepsTheDecoder() {
  void* const decoder = Dlopen(kDecoderFile, 2);
  if (FirstCallFails()) return Fail();
  Dlclose(decoder);
  return {kGood, ""};
}

std::atomic<bool> s_thread_ends;
std::thread s_thread;

StepResult KeepsAThread() {
  if (!FirstCallFails()) return {kGood, ""};
  s_thread = std::thread([] { s_thread_ends.wait(false); });
  return Fail();
}

StepResult KeepsTheSettings() {
  const int fd = OpenTty();
  SetBaud(fd, B1200);
  const bool failed = FirstCallFails();
  if (!failed) Tcsetattr(fd, TCSAFLUSH, &TheWorld().first_settings);
  Close(fd);
  return failed ? Fail() : StepResult{kGood, ""};
}

// Of three changes the second fails; nothing was in the way of restoring.
StepResult KeepsTheSettingsThatItCouldRestore() {
  const int fd = OpenTty();
  SetBaud(fd, B1200);
  termios settings = TheWorld().tty.Settings();
  cfsetspeed(&settings, B2400);
  const bool failed = Tcsetattr(fd, TCSAFLUSH, &settings) != 0;
  if (!failed) Tcsetattr(fd, TCSAFLUSH, &TheWorld().first_settings);
  Close(fd);
  return failed ? Fail() : StepResult{kGood, ""};
}

StepResult CannotRestoreTheSettings() {
  const int fd = OpenTty();
  SetBaud(fd, B1200);
  const bool failed = Tcsetattr(fd, TCSAFLUSH, &TheWorld().first_settings) != 0;
  Close(fd);
  return failed ? Fail() : StepResult{kGood, ""};
}

StepResult LeavesAFile() {
  if (!FirstCallFails()) return {kGood, ""};
  WriteWholeFile(PathOf("unnamed"), "");
  return Fail();
}

StepResult LeavesAFileBesideTheLog() {
  if (!FirstCallFails()) return {kGood, ""};
  WriteWholeFile("/home/quillon/unnamed", "");
  return Fail();
}

StepResult WritesSomethingElse() {
  const bool failed = FirstCallFails();
  WriteWholeFile(PathOf(kNamed), failed ? "gar" : "good");
  return failed ? Fail() : StepResult{kGood, ""};
}

StepResult WritesTheBeginning() {
  const bool failed = FirstCallFails();
  WriteWholeFile(PathOf(kNamed), failed ? "go" : "good");
  return failed ? Fail() : StepResult{kGood, ""};
}

StepResult SaysGoodWithoutTheFile() {
  if (!FirstCallFails()) WriteWholeFile(PathOf(kNamed), "good");
  return {kGood, ""};
}

StepResult ChangesTheInput() {
  if (!FirstCallFails()) return {kGood, ""};
  WriteWholeFile(PathOf(kNamed), "changed");
  return Fail();
}

StepResult TakesTooLong() {
  if (!FirstCallFails()) return {kGood, ""};
  Pass(61);
  return Fail();
}

StepResult SpoilsTheNextRun() {
  static bool spoilt = false;
  if (!FirstCallFails()) return {std::exchange(spoilt, false) ? kFailed : kGood, ""};
  spoilt = true;
  return Fail();
}

StepResult GivesUpAfterASignal() {
  pollfd line = {-1, POLLOUT, 0};
  return Poll(&line, 1, 0) < 0 ? Fail() : StepResult{kGood, ""};
}

StepResult UseUsb(bool keeps_all, bool keeps_claim) {
  UsbInit(nullptr);
  libusb_device** list = nullptr;
  UsbList(nullptr, &list);
  libusb_device_handle* handle = nullptr;
  UsbOpen(list[0], &handle);
  UsbClaim(handle, 0);
  const bool failed = FirstCallFails();
  if (failed && keeps_all) {
    s_kept = list;
    return Fail();
  }
  if (!failed || !keeps_claim) UsbRelease(handle, 0);
  libusb_close(handle);
  libusb_free_device_list(list, 1);
  libusb_exit(nullptr);
  return failed ? Fail() : StepResult{kGood, ""};
}

StepResult KeepsAClaim() { return UseUsb(false, true); }
StepResult KeepsAllOfUsb() { return UseUsb(true, true); }

// Preparations ----------------------------------------------------------------------------------

void Nothing() {}

void Decoder() {
  std::filesystem::copy_file(QL_SPECIMEN_DECODER, kDecoderFile,
                             std::filesystem::copy_options::overwrite_existing);
}

void Input() { WriteWholeFile(PathOf(kNamed), "input"); }

// -----------------------------------------------------------------------------------------------

struct Fault {
  const char* name;
  StepResult (*run)();
  Problems problems;
  const char* function = "clock_gettime";  // that fails
  std::size_t call = 1;                    // of that function
  Way way = kError;
  void (*prepare)() = Nothing;
};

void PrintTo(const Fault& row, std::ostream* out) { *out << row.name; }

// clang-format off
const Fault kFaults[] = {
    {"Nothing",           DoesNothingWrong,         {}},
    {"UnknownResult",     GivesAnUnknownResult,     {"step = -99"}},
    {"HalfAnOutput",      LeavesHalfAnOutput,       {"step = -1 with the wrong output"}},
    {"AnotherOutput",     GivesAnotherOutput,       {"step = 0", }},
    {"Signal",            GivesUpAfterASignal,      {"step = -1 although nothing was lost"}, "poll", 1, kInterrupted},
    {"Block",             KeepsABlock,              {"1 blocks kept"}},
    {"BlockFreedTwice",   FreesTwice,               {"frees a block that it does not hold"}},
    {"Descriptor",        KeepsADescriptor,         {"a descriptor kept open", "descriptors gained"}},
    {"UnknownDescriptor", KeepsAnUnknownDescriptor, {"descriptors gained"}},
    {"ClosedTwice",       ClosesTwice,              {"closes a descriptor that it does not hold"}},
    {"Decoder",           KeepsTheDecoder,          {"the decoder kept open"}, "clock_gettime", 1, kError, Decoder},
    {"Thread",            KeepsAThread,             {"threads gained"}},
    {"Claim",             KeepsAClaim,              {"an interface kept claimed"}},
    {"AllOfUsb",          KeepsAllOfUsb,            {"libusb kept initialised", "a device list kept",
                                                     "an interface kept claimed", "a USB device kept open"}},
    {"Settings",          KeepsTheSettings,         {"the tty keeps the reader's settings"}},
    {"SettingsAfterAnotherChangeFailed", KeepsTheSettingsThatItCouldRestore,
                                                    {"the tty keeps the reader's settings"}, "tcsetattr", 2},
    {"NoSettingsThatTheSystemRefuses",   CannotRestoreTheSettings, {}, "tcsetattr", 2},
    {"File",              LeavesAFile,              {"left the file unnamed"}},
    {"FileBesideTheLog",  LeavesAFileBesideTheLog,  {"left the file /home/quillon/unnamed"}},
    {"OtherContent",      WritesSomethingElse,      {"wrote something else to the file named"}},
    {"NotTheBeginning",   WritesTheBeginning,       {}},
    {"NoFileThough",      SaysGoodWithoutTheFile,   {"good, but not the file named"}},
    {"ChangedInput",      ChangesTheInput,          {"changed the file named", "next run: good, but not the file named"},
                                                    "clock_gettime", 1, kError, Input},
    {"Time",              TakesTooLong,             {"took 61 s"}},
    {"NextRun",           SpoilsTheNextRun,         {"next run: step = -1 although nothing was lost"}},
};
// clang-format on

class TrialOfAStepThatKeeps : public testing::TestWithParam<Fault> {};

TEST_P(TrialOfAStepThatKeeps, TellsIt) {
  NEEDS_PRIVATE_ROOT();
  const Fault& fault = GetParam();
  const Scenario scenario = {
      "step", fault.prepare, {{"step", fault.run, kGood, {kFailed}}}, {kNamed}};
  Trial trial(scenario);
  ASSERT_EQ(Problems{}, trial.problems());
  std::vector<std::size_t> positions;  // of the function's calls
  for (std::size_t i = 0; i < trial.calls().size(); ++i) {
    if (trial.calls()[i].import->name == fault.function) positions.push_back(i + 1);
  }
  ASSERT_LE(fault.call, positions.size());

  EXPECT_EQ(fault.problems, trial.Try({positions[fault.call - 1], fault.way, false}));

  s_thread_ends = true;
  s_thread_ends.notify_all();
  if (s_thread.joinable()) s_thread.join();
}

INSTANTIATE_TEST_SUITE_P(, TrialOfAStepThatKeeps, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

// One result of one call is not one of another.
TEST(Trial, KnowsTheResultsOfEachCall) {
  NEEDS_PRIVATE_ROOT();
  const auto of_call = [](std::string_view name) {
    return name == "poll" ? std::vector<int>{kFailed} : std::vector<int>{};
  };
  const Scenario scenario = {
      "step", Nothing, {{"step", KeepsNothing, kGood, {}, Leaves::kNothing, of_call}}, {}};
  Trial trial(scenario);
  ASSERT_EQ(2u, trial.calls().size());

  EXPECT_EQ(Problems{"step = -1"}, trial.Try({1, kError, false}));
  EXPECT_EQ(Problems{}, trial.Try({2, kError, false}));
}

}  // namespace
}  // namespace failures
