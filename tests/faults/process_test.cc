// Whole reads in a process that has no descriptors left or very many, gets signals, whose clock is
// stepped, in other locales, and in an application with function names of the library's.
#include "tests/faults/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <ostream>
#include <string>

#include "quillonid/image.h"
#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "support/handles.h"
#include "tests/faults/reader_faults.h"
#include "tests/testing/private_root.h"
#include "tests/testing/program.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace faults {
namespace {

using simulator::MakeCard;
using simulator::TtyReader;

constexpr double kSearches = kTimeLimit + 5;
constexpr double kFast = 5;  // the library's clock, where nothing comes

int Read(const TtyReader& reader, int limit = kTimeLimit) {
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_COLLECT record = {};
  return APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, limit, photo.data(), &record);
}

// Descriptors -----------------------------------------------------------------------------------

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
  const Taken taken;

  EXPECT_EQ(GetParam().result, Read(reader));

  EXPECT_LE(taken(), kGoodRead + Slack());
  LimitDescriptors(256);
  EXPECT_EQ(0, Read(reader));
}

INSTANTIATE_TEST_SUITE_P(, DescriptorsLeft, testing::Values(Left{0, -1}, Left{1, 0}),
                         [](const auto& test) { return std::to_string(test.param.descriptors); });

TEST(Descriptors, Above1024ServeAsWell) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  {
    const ManyDescriptors held;
    ASSERT_LT(1024, LowestFreeDescriptor());
    const Taken taken;

    EXPECT_EQ(0, Read(reader));

    EXPECT_LE(taken(), kGoodRead + Slack());
  }
  EXPECT_EQ(0, Read(reader));
}

// Signals ---------------------------------------------------------------------------------------

class ReadUnderSignals : public testing::TestWithParam<SignalledRead> {};

TEST_P(ReadUnderSignals, EndsAsWithoutThem) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  stand_in_clock::UseSystemClock();
  BlockSignals();
  TtyReader reader;  // whose thread has them blocked
  UnblockSignals();
  reader.PutCard(MakeCard("resident"));
  if (*GetParam().fault != '\0') reader.SetFault(*simulator::ParseFault(GetParam().fault));
  const Taken time;
  {
    const Signals signals;

    EXPECT_EQ(GetParam().result, Read(reader, 2));

    EXPECT_LT(0, signals.count());
  }

  const double taken = time();
  EXPECT_LE(taken, 2 + 5 + Slack());
  EXPECT_TRUE(GetParam().result == 0 || taken >= 2) << taken;
  TtyReader next;
  next.PutCard(MakeCard("resident"));
  EXPECT_EQ(0, Read(next));
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
  const Taken time;

  EXPECT_EQ(GetParam().result, Read(reader));

  const double taken = time();
  EXPECT_LE(taken, kSearches + Slack(kFast));
  EXPECT_TRUE(GetParam().result == 0 || taken >= kTimeLimit) << taken;
  stand_in_clock::SetSpeed(1);
  TtyReader next;
  next.PutCard(MakeCard("resident"));
  EXPECT_EQ(0, Read(next));
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
  whole::InstallDecoder();
  stand_in_clock::SetSpeed(kFast);
  TtyReader reader;
  const Descriptor line(open(reader.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(0, tcflow(line.get(), TCOOFF));
  const Taken taken;

  EXPECT_EQ(-5, Read(reader));

  EXPECT_LE(taken(), kTimeLimit + 7 + Slack(kFast));
  EXPECT_EQ(0u, reader.counters().bytes_received);
  stand_in_clock::SetSpeed(1);
  TtyReader next;
  next.PutCard(MakeCard("resident"));
  EXPECT_EQ(0, Read(next));
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
    const Taken taken;

    EXPECT_EQ(expected, JsonOf(reader)) << specimen.id;

    EXPECT_LE(taken(), kGoodRead + Slack());
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
  const auto start = std::chrono::steady_clock::now();  // the program has the real clock

  const Output output = RunProgram({QL_OWN_NAMES, reader.path(), TemporaryFolder() + "/photo.bmp"});

  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  EXPECT_LE(taken.count(), 2 * kGoodRead + Slack());
  EXPECT_EQ(0, output.exit);
  EXPECT_EQ("0\n0\n", output.out);
  EXPECT_TRUE(FileExists(TemporaryFolder() + "/photo.bmp"));
}

}  // namespace
}  // namespace faults
