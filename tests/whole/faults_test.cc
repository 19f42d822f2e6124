// Every fault of the simulated reader and the result it is published with.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ostream>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

using simulator::FaultId;
using simulator::MakeCard;
using simulator::TtyReader;

// How the library's time runs. Pauses are skipped but under kReal.
enum class Time {
  kPlain,  // seconds are seconds
  kFast,   // for time-outs of bytes that do not come
  kReal,   // for faults that count real seconds
};

struct FaultyRead {
  std::string fault;
  int result;
  Time time;
};

void PrintTo(const FaultyRead& row, std::ostream* out) { *out << row.fault; }

Time TimeFor(FaultId id) {
  switch (id) {
    case FaultId::kSilent:
    case FaultId::kCut:
    case FaultId::kGarbage:
    case FaultId::kHangUp:
      return Time::kFast;
    case FaultId::kCardAfter:
      return Time::kReal;
    default:
      return Time::kPlain;
  }
}

std::vector<FaultyRead> FaultyReads() {
  std::vector<FaultyRead> rows;
  for (const simulator::FaultRow& row : simulator::FaultTable()) {
    if (row.id == FaultId::kCardAfter || row.id == FaultId::kLate) continue;  // below, shorter
    const std::string text = simulator::FaultText({row.id, row.value});
    rows.push_back({text, row.result, TimeFor(row.id)});
  }
  rows.insert(rows.end(), {
                              {"card-after=1", 0,  Time::kReal },
                              {"late=1",       0,  Time::kPlain},
                              {"length=0",     -5, Time::kFast },
                              {"length=3",     -5, Time::kFast },
                              {"length=11",    -5, Time::kPlain},
                              {"length=1294",  -5, Time::kPlain},
                              {"length=1297",  0,  Time::kPlain},
                              {"length=1298",  -5, Time::kPlain},
                              {"length=2320",  -5, Time::kPlain},
                              {"length=2321",  0,  Time::kPlain},
                              {"length=2322",  -5, Time::kPlain},
                              {"length=4096",  -5, Time::kPlain},
                              {"cut=0",        -5, Time::kFast },
                              {"cut=6",        -5, Time::kFast },
                              {"cut=1294",     -5, Time::kFast },
                              {"cut=1295",     0,  Time::kPlain},
                              {"garbage=0",    0,  Time::kPlain},
                              {"garbage=1",    -5, Time::kFast },
                              {"garbage=100",  -5, Time::kFast },
                              {"garbage=4095", -5, Time::kFast },
                              {"hang-up=0",    -5, Time::kFast },
                              {"slow=20000",   0,  Time::kPlain},
  });
  return rows;
}

class WholeReadWith : public testing::TestWithParam<FaultyRead> {};

TEST_P(WholeReadWith, EndsSo) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  if (GetParam().time == Time::kFast) stand_in_clock::SetSpeed(5);
  if (GetParam().time == Time::kReal) stand_in_clock::UseSystemClock();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault(GetParam().fault));
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_CHA record = {};

  const int result =
      APP_ID_ReadChinaIDCard(reader.path().c_str(), "", 9600, 8, photo.data(), &record);

  EXPECT_EQ(GetParam().result, result);
  EXPECT_EQ(result == 0, FileExists(photo));
  EXPECT_EQ(result == 0, record.name[0] != '\0');
  if (reader.HungUp()) return;

  // It leaves nothing behind: the next read works.
  reader.module().ClearFaults();
  EXPECT_EQ(0, APP_ID_ReadChinaIDCard(reader.path().c_str(), "", 9600, 10, photo.data(), &record));
}

INSTANTIATE_TEST_SUITE_P(EveryFault, WholeReadWith, testing::ValuesIn(FaultyReads()));

TEST(WholeReadWith, AWrongCheckByteReadsAgain) {
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

// What is left of such a reply is taken for the answers to the commands behind it.
TEST(WholeReadWith, AFloodEndsInAnError) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault("length=65535"));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};

  const int result =
      APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 8, no_photo, &record);

  EXPECT_TRUE(result == -2 || result == -5) << result;
}

TEST(WholeReadWith, AReplyThatTakesOverFiveSecondsIsNotRead) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(5);
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault("slow=50"));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};

  EXPECT_EQ(-5, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 5, no_photo, &record));
}

// The line may die before the select goes out, while it is read, or behind it.
TEST(WholeReadWith, ALineThatDiesAfterTheSearchFails) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(5);
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault("hang-up=15"));
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};

  const int result =
      APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 3, no_photo, &record);

  EXPECT_TRUE(result == -2 || result == -3 || result == -5) << result;
}

TEST(WholeReadWith, AReaderThatWasPulledCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  // While it is open nobody else's terminal gets this name.
  const int held = open(reader.path().c_str(), O_RDWR | O_NOCTTY);
  reader.HangUp();
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};

  EXPECT_EQ(-1, APP_ID_ReadCollectIDCard(reader.path().c_str(), "", 9600, 3, no_photo, &record));
  close(held);
}

}  // namespace
}  // namespace whole
