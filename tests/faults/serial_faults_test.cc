// Every reader fault over a pseudo-terminal, and what only a serial line does.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/faults/reader_faults.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace faults {
namespace {

using simulator::FaultId;
using simulator::MakeCard;
using simulator::TtyReader;

// Library seconds for each real one. The simulated reader runs in real time, the library's pauses
// are skipped but in kReal. Bytes that do not come are waited for in a hurry, bytes that come at a
// rate with patience: a machine that is busy holds the reader up.
constexpr double kReal = 0;
constexpr double kFast = 5;
constexpr double kPatient = 0.1;

double SpeedFor(FaultId id, bool ends_by_time) {
  switch (id) {
    case FaultId::kCardAfter:
      return kReal;
    case FaultId::kLate:
      return 1;
    case FaultId::kSlow:
      return ends_by_time ? 1 : kPatient;
    default:
      return ends_by_time ? kFast : 1;
  }
}

class SerialReadWith : public testing::TestWithParam<ReaderFault> {};

TEST_P(SerialReadWith, EndsSo) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  const simulator::Fault fault = *simulator::ParseFault(GetParam().fault);
  const double speed = SpeedFor(fault.id, !Has(GetParam().serial, 0));
  if (speed == kReal) {
    stand_in_clock::UseSystemClock();
  } else {
    stand_in_clock::SetSpeed(speed);
  }
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(fault);
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_CHA record = {};
  const double start = stand_in_clock::Seconds();

  const int result =
      APP_ID_ReadChinaIDCard(reader.path().c_str(), "", 9600, kTimeLimit, photo.data(), &record);

  EXPECT_PRED2(Has, GetParam().serial, result);
  EXPECT_LE(stand_in_clock::Seconds() - start, GetParam().seconds + Slack(speed));
  EXPECT_EQ(result == 0, FileExists(photo));
  EXPECT_EQ(result == 0, record.name[0] != '\0');
}

INSTANTIATE_TEST_SUITE_P(EveryFault, SerialReadWith, testing::ValuesIn(ReaderFaults()));

TEST(ReaderFaults, AreAllThatTheSimulatedReaderHas) {
  for (const simulator::FaultRow& fault : simulator::FaultTable()) {
    const std::string text = simulator::FaultText({fault.id, fault.value});
    const auto rows = ReaderFaults();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const ReaderFault& each) {
      return simulator::FaultText(*simulator::ParseFault(each.fault)) == text;
    });
    ASSERT_NE(rows.end(), row) << text;
    EXPECT_EQ(std::vector<int>{fault.result}, row->serial) << text;
    if (fault.id == FaultId::kBlocked || fault.id == FaultId::kUnsupportedCard) continue;
    EXPECT_EQ(std::vector<int>{fault.result}, row->usb) << text;
  }
}

TEST(SerialReadWith, AWrongCheckByteReadsAgain) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault("bad-check-once"));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};

  EXPECT_EQ(0, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 10, no_photo, &record));

  std::vector<std::string> meanings;
  for (const auto& request : reader.Requests()) meanings.push_back(request.meaning);
  EXPECT_EQ((std::vector<std::string>{"search card", "select card", "read", "search card",
                                      "select card", "read"}),
            meanings);
}

TEST(SerialReadWith, AReaderThatWasPulledCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  // While it is open nobody else's terminal gets this name.
  const int held = open(reader.path().c_str(), O_RDWR | O_NOCTTY);
  reader.HangUp();
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(-1, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 3, no_photo, &record));

  EXPECT_LE(stand_in_clock::Seconds() - start, kAtOnce + Slack());
  close(held);
}

// A reader at fault leaves nothing behind that the next read would trip over.
class SerialReadAfter : public testing::TestWithParam<ReaderFault> {};

TEST_P(SerialReadAfter, Works) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(kFast);
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  {
    TtyReader faulty;
    faulty.PutCard(MakeCard("resident"));
    faulty.SetFault(*simulator::ParseFault(GetParam().fault));
    APP_ID_ReadCollectIDCard(faulty.path().c_str(), "", 9600, 2, no_photo, &record);
  }
  stand_in_clock::SetSpeed(1);

  EXPECT_EQ(0, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 10, no_photo, &record));
}

INSTANTIATE_TEST_SUITE_P(EveryFault, SerialReadAfter, testing::ValuesIn(ReaderFaults()));

double ProcessorSeconds() {
  timespec time = {};
  syscall(SYS_clock_gettime, CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

class SerialLineGone : public testing::TestWithParam<const char*> {};

TEST_P(SerialLineGone, HardlyUsesTheProcessor) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::UseSystemClock();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault(GetParam()));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  const double start = stand_in_clock::Seconds();
  const double processor = ProcessorSeconds();

  EXPECT_EQ(-5, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 2, no_photo, &record));

  const double taken = stand_in_clock::Seconds() - start;
  EXPECT_GE(taken, 2);
  EXPECT_LT(ProcessorSeconds() - processor, 0.1 * taken);
}

INSTANTIATE_TEST_SUITE_P(InTheSearchAndInTheReply, SerialLineGone,
                         testing::Values("hang-up=0", "hang-up=700"));

}  // namespace
}  // namespace faults
