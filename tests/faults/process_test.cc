// Whole reads in a process that has no descriptors left or very many, gets signals, whose clock is
// stepped, in other locales, and in an application with function names of the library's.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "quillonid/image.h"
#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "support/handles.h"
#include "tests/testing/private_root.h"
#include "tests/testing/program.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace faults {
namespace {

using simulator::MakeCard;
using simulator::TtyReader;

constexpr int kTimeLimit = 8;  // seconds
constexpr double kSearches = kTimeLimit + 5;
constexpr double kFast = 5;            // the library's clock, where nothing comes
constexpr double kHeldUp = 2 * kFast;  // a busy machine

int Read(const TtyReader& reader, int limit = kTimeLimit) {
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_COLLECT record = {};
  return APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, limit, photo.data(), &record);
}

// Descriptors -----------------------------------------------------------------------------------

int LowestFreeDescriptor() {
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(fd);
  return fd;
}

void LimitDescriptors(int count) {
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = static_cast<rlim_t>(count);
  ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &limit));
}

struct Left {
  int descriptors;
  int result;
};

void PrintTo(const Left& row, std::ostream* out) { *out << row.descriptors; }

class DescriptorsLeft : public testing::TestWithParam<Left> {};

// The port, the decoder and the photo take one in turn.
TEST_P(DescriptorsLeft, DecideHowFarAReadGets) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  TemporaryFolder();
  LimitDescriptors(LowestFreeDescriptor() + GetParam().descriptors);

  EXPECT_EQ(GetParam().result, Read(reader));

  LimitDescriptors(256);
  EXPECT_EQ(0, Read(reader));
}

INSTANTIATE_TEST_SUITE_P(, DescriptorsLeft, testing::Values(Left{0, -1}, Left{1, 0}),
                         [](const auto& test) { return std::to_string(test.param.descriptors); });

TEST(Descriptors, Above1024ServeAsWell) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  LimitDescriptors(1200);
  std::vector<int> taken;
  while (taken.size() < 1100) taken.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_LT(1024, taken.back());
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));

  EXPECT_EQ(0, Read(reader));

  for (const int fd : taken) close(fd);
}

// Signals ---------------------------------------------------------------------------------------

volatile std::sig_atomic_t s_signals;

// A hundred a second, none of which lets a system call go on; they interrupt this thread alone.
class Signals {
 public:
  Signals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { s_signals = s_signals + 1; };
    sigaction(SIGALRM, &action, nullptr);
    Set(10'000);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals() { Set(0); }

 private:
  static void Set(int microseconds) {
    const itimerval every = {
        {0, microseconds},
        {0, microseconds}
    };
    setitimer(ITIMER_REAL, &every, nullptr);
  }
};

struct SignalledRead {
  const char* fault;
  int result;
};

void PrintTo(const SignalledRead& row, std::ostream* out) { *out << row.fault; }

class ReadUnderSignals : public testing::TestWithParam<SignalledRead> {};

TEST_P(ReadUnderSignals, EndsAsWithoutThem) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  stand_in_clock::UseSystemClock();
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  sigprocmask(SIG_BLOCK, &alarm, nullptr);
  TtyReader reader;  // whose thread has them blocked
  sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
  reader.PutCard(MakeCard("resident"));
  if (*GetParam().fault != '\0') reader.SetFault(*simulator::ParseFault(GetParam().fault));
  const double start = stand_in_clock::Seconds();
  const Signals signals;

  EXPECT_EQ(GetParam().result, Read(reader, 2));

  const double taken = stand_in_clock::Seconds() - start;
  EXPECT_LE(taken, 2 + 5 + kHeldUp);
  EXPECT_TRUE(GetParam().result == 0 || taken >= 2) << taken;
  EXPECT_LT(0, s_signals);
}

INSTANTIATE_TEST_SUITE_P(, ReadUnderSignals,
                         testing::Values(SignalledRead{"slow=1000", 0}, SignalledRead{"silent", -5},
                                         SignalledRead{"no-card", -5}));

// Clock -----------------------------------------------------------------------------------------

struct ClockStep {
  double seconds;
  const char* fault;
  int result;
};

void PrintTo(const ClockStep& row, std::ostream* out) { *out << row.seconds << " s " << row.fault; }

class ClockStepped : public testing::TestWithParam<ClockStep> {};

TEST_P(ClockStepped, AtEveryCommandChangesNothing) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  if (*GetParam().fault != '\0') {
    stand_in_clock::SetSpeed(kFast);
    reader.SetFault(*simulator::ParseFault(GetParam().fault));
  }
  reader.SetTrace([](const simulator::TraceEvent& event) {
    if (event.direction == simulator::TraceEvent::Direction::kFromHost) {
      stand_in_clock::StepWallClock(GetParam().seconds);
    }
  });
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(GetParam().result, Read(reader));

  const double taken = stand_in_clock::Seconds() - start;
  EXPECT_LE(taken, kSearches + kHeldUp);
  EXPECT_TRUE(GetParam().result == 0 || taken >= kTimeLimit) << taken;
}

INSTANTIATE_TEST_SUITE_P(, ClockStepped,
                         testing::Values(ClockStep{3600, "", 0}, ClockStep{-3600, "", 0},
                                         ClockStep{3600, "silent", -5},
                                         ClockStep{-3600, "silent", -5},
                                         ClockStep{3600, "no-card", -5},
                                         ClockStep{-3600, "no-card", -5}));

// Output that nobody takes ----------------------------------------------------------------------

TEST(SerialRead, OfALineThatTakesNothingEndsInTime) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(kFast);
  TtyReader reader;
  const Descriptor line(open(reader.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(0, tcflow(line.get(), TCOOFF));
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(-5, Read(reader));

  EXPECT_LE(stand_in_clock::Seconds() - start, kTimeLimit + 7 + kHeldUp);
  EXPECT_EQ(0u, reader.counters().bytes_received);
}

// Locales ---------------------------------------------------------------------------------------

std::string JsonOf(const TtyReader& reader) {
  std::string text(8192, '\0');
  char no_photo[] = "";
  EXPECT_EQ(0, APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 9600, kTimeLimit, 1,
                                            no_photo, text.data()));
  text.resize(text.find('\0'));
  return text;
}

struct Locale {
  const char* name;
  const char* source;
  const char* charset;
};

void PrintTo(const Locale& row, std::ostream* out) { *out << row.name; }

// Warnings are no failure: the caller sees whether the locale can be set.
void Compile(const std::string& source, const std::string& charset, const std::string& target) {
  const std::string command =
      "localedef -c -i " + source + " -f " + charset + " " + target + " >/dev/null 2>&1";
  // The test's own words.
  [[maybe_unused]] const int status = std::system(command.c_str());
}

class ReadInLocale : public testing::TestWithParam<Locale> {};

TEST_P(ReadInLocale, GivesWhatItGivesInEveryOther) {
  NEEDS_PRIVATE_ROOT();
  const auto& [name, source, charset] = GetParam();
  const std::string folder = TemporaryFolder() + "/";
  Compile(source, charset, folder + name);
  setenv("LOCPATH", folder.c_str(), 1);
  TtyReader reader;
  for (const simulator::Specimen& specimen : simulator::Specimens()) {
    reader.PutCard(MakeCard(specimen, true));
    std::setlocale(LC_ALL, "C");
    const std::string expected = JsonOf(reader);
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, name));

    EXPECT_EQ(expected, JsonOf(reader)) << specimen.id;
  }
  // The lower case of "HID" is another word in Turkish; -13 is for a device text of no meaning.
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  for (const char* usb : {"HID", "hid"}) {
    EXPECT_NE(-13, APP_ID_ReadCollectIDCard(usb, "", 9600, 1, no_photo, &record)) << usb;
  }
  // Neither is that of "*.GIF".
  char image[64] = {};
  GetImgPathEx("/no/such/*.GIF", "", "N", image, sizeof image);
  EXPECT_STREQ("/no/such/N.GIF", image);
}

INSTANTIATE_TEST_SUITE_P(, ReadInLocale,
                         testing::Values(Locale{"zh_CN.GBK", "zh_CN", "GBK"},
                                         Locale{"tr_TR.UTF-8", "tr_TR", "UTF-8"}),
                         [](const auto& test) { return std::string(test.param.source); });

// Names -----------------------------------------------------------------------------------------

TEST(Application, MayHaveFunctionsOfTheSameNames) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  SwitchLogging(true);

  const Output output = RunProgram({QL_OWN_NAMES, reader.path(), TemporaryFolder() + "/photo.bmp"});

  EXPECT_EQ(0, output.exit);
  EXPECT_EQ("0\n", output.out);
  EXPECT_TRUE(FileExists(TemporaryFolder() + "/photo.bmp"));
}

}  // namespace
}  // namespace faults
