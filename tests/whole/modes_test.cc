// Settings, limits, device texts and cancelling, seen from both ends of a real line.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

std::function<void()> s_before_flush;  // called before the library flushes its line

}  // namespace
}  // namespace whole

// A serial line has sent what was written before it is flushed; a pseudo-terminal throws away what
// the other end has not taken yet. So a test may wait for that here.
extern "C" int tcflush(int tty, int queue) noexcept {
  if (whole::s_before_flush) whole::s_before_flush();
  return ioctl(tty, TCFLSH, queue);
}

namespace whole {
namespace {

using simulator::MakeCard;
using simulator::TtyReader;
using Meanings = std::vector<std::string>;

// Reads any kind of card without its photo.
int Read(const std::string& device, long baud = 9600, long limit = 10,
         PERSONINFO_COLLECT* record = nullptr) {
  PERSONINFO_COLLECT own = {};
  char no_photo[] = "";
  return APP_ID_ReadCollectIDCard(device.c_str(), "", baud, limit, no_photo,
                                  record != nullptr ? record : &own);
}

Meanings Requests(const TtyReader& reader) {
  Meanings meanings;
  for (const simulator::Request& request : reader.Requests()) meanings.push_back(request.meaning);
  return meanings;
}

TEST(Read, SearchesSelectsAndReads) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("permit"));

  EXPECT_EQ(0, Read(reader.path()));
  EXPECT_EQ((Meanings{"search card", "select card", "read"}), Requests(reader));
  // A second after the select, which this clock skips.
  EXPECT_EQ(1, stand_in_clock::SleepCalls());
  EXPECT_EQ(1U, stand_in_clock::LastSleep());
}

TEST(Read, WithFingerprintsSendsTheOtherCommand) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("permit"));
  PERSONINFO_COLLECT_FP record = {};
  char no_photo[] = "";

  EXPECT_EQ(0, APP_ID_ReadCollectIDCard_FP(reader.path().c_str(), "", 9600, 10, no_photo, &record));

  EXPECT_EQ((Meanings{"search card", "select card", "read with fingerprints"}), Requests(reader));
  EXPECT_STREQ("", record.fingerData1);  // The card carries none.
}

TEST(SearchDirect, ReadsAtOnce) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("permit"));

  APP_ID_SetSearchDirect(1);
  EXPECT_EQ(0, Read(reader.path()));
  EXPECT_EQ((Meanings{"read"}), Requests(reader));

  Linux_QL_ID_SetSearchDirect(0);
  EXPECT_EQ(0, Read(reader.path()));
  EXPECT_EQ((Meanings{"read", "search card", "select card", "read"}), Requests(reader));
}

TEST(OneCommand, ReadsWithOneCommand) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("foreigner"));

  APP_ID_SetOneInstrReadInfo(1);
  Linux_QL_ID_SetOneInstrReadInfo();  // On purpose: changes nothing.
  EXPECT_EQ(0, Read(reader.path()));
  EXPECT_EQ((Meanings{"one-command read"}), Requests(reader));

  APP_ID_SetOneInstrReadInfo(0);
  EXPECT_EQ(0, Read(reader.path()));
  EXPECT_EQ(4U, Requests(reader).size());
}

TEST(OneCommand, ReadsFingerprintsFromAReaderThatSendsThem) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  const simulator::Card card = MakeCard("foreigner", true);
  reader.PutCard(card);
  reader.module().SetOneCommandFingerprints(true);
  PERSONINFO_COLLECT_FP record = {};
  char no_photo[] = "";

  APP_ID_SetOneInstrReadInfo(1);

  ASSERT_EQ(0, APP_ID_ReadCollectIDCard_FP(reader.path().c_str(), "", 9600, 10, no_photo, &record));
  EXPECT_EQ(PlainHex(FingerTemplate(card, 2)), record.fingerData2);
}

struct Raised {
  long baud;
  const char* command;
};

TEST(RaiseBaud, ReachesTheReaderAt9600AndRaisesIt) {
  NEEDS_PRIVATE_ROOT();
  QL_APP_Id_RaiseBaundFlag(1);
  for (const Raised& row : {
           Raised{115200, "1B 25 53 31"},
           Raised{38400,  "1B 25 53 32"},
           Raised{19200,  "1B 25 53 33"}
  }) {
    TtyReader reader;
    reader.PutCard(MakeCard("resident"));
    reader.module().SetSpeedMatters(true);
    int flushes = 0;
    s_before_flush = [&] {
      // The first opening flushes three times, the speed command goes out before the second one.
      if (++flushes > 3) reader.WaitForRequests(1, 5000);
    };

    EXPECT_EQ(0, Read(reader.path(), row.baud)) << row.baud;

    s_before_flush = nullptr;

    ASSERT_TRUE(reader.WaitForRequests(5, 5000));
    const auto requests = reader.Requests();
    EXPECT_EQ(row.command, HexText(requests.front().bytes));
    EXPECT_EQ("1B 25 42", HexText(requests.back().bytes));
    EXPECT_EQ(9600, reader.module().Speed());
  }
}

TEST(RaiseBaud, LeavesAReadAt9600Alone) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.module().SetSpeedMatters(true);

  Linux_QL_ID_RaiseBaundFlag(1);

  EXPECT_EQ(0, Read(reader.path(), 9600));
  EXPECT_EQ((Meanings{"search card", "select card", "read"}), Requests(reader));
}

TEST(Baud, IsUsedAtOnceWithoutRaising) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  int seen = 0;
  // Only at the first request: by the last reply the port may be closed and its old speed be back.
  reader.SetTrace([&](const simulator::TraceEvent&) {
    if (seen == 0) seen = reader.LineSpeed();
  });

  EXPECT_EQ(0, Read(reader.path(), 115200));
  reader.HangUp();

  EXPECT_EQ(115200, seen);
}

TEST(Baud, OfAnotherReaderIsNotUnderstood) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(5);
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.module().SetSpeedMatters(true);

  EXPECT_EQ(-5, Read(reader.path(), 115200, 2));
}

TEST(Limit, IsOneToAHundredAndTwentySeconds) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));

  for (const long limit : {-1L, 0L, 121L, 2147483648L, 4294967301L}) {
    EXPECT_EQ(-13, Read(reader.path(), 9600, limit)) << limit;
  }
  EXPECT_EQ(0U, reader.counters().requests);
  EXPECT_EQ(0, Read(reader.path(), 9600, 1));
  EXPECT_EQ(0, Read(reader.path(), 9600, 120));
}

TEST(Device, ThatIsNoneCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  EXPECT_EQ(-1, Read(""));
  EXPECT_EQ(-1, Read("/dev/no-such-port"));
  EXPECT_EQ(-1, Read("/dev/null"));
  for (const char* device : {"COM1", "AUX1", "SDT", "PCSC", "BLUETOOTH:00:11:22:33:44:55"}) {
    EXPECT_EQ(-1, Read(device)) << device;
  }
  EXPECT_EQ(-13, Read("COM1", 57600));
  EXPECT_EQ(-13, Read("ttyS0"));

  PERSONINFO_COLLECT record = {};
  char no_photo[] = "";
  EXPECT_EQ(-1, APP_ID_ReadCollectIDCard(nullptr, "", 9600, 10, no_photo, &record));
}

TEST(Line, GetsItsSettingsBack) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  const int tty = open(reader.path().c_str(), O_RDWR | O_NOCTTY);
  termios before = {};
  ASSERT_EQ(0, tcgetattr(tty, &before));
  before.c_iflag |= ICRNL | IXON;
  before.c_cc[VMIN] = 7;
  cfsetospeed(&before, B2400);
  cfsetispeed(&before, B2400);
  ASSERT_EQ(0, tcsetattr(tty, TCSANOW, &before));

  EXPECT_EQ(0, Read(reader.path(), 115200));

  termios after = {};
  ASSERT_EQ(0, tcgetattr(tty, &after));
  EXPECT_EQ(before.c_iflag, after.c_iflag);
  EXPECT_EQ(before.c_oflag, after.c_oflag);
  EXPECT_EQ(before.c_cflag, after.c_cflag);
  EXPECT_EQ(before.c_lflag, after.c_lflag);
  EXPECT_EQ(7, after.c_cc[VMIN]);
  close(tty);
}

// Cancels again until the read has returned, as a cancel between two commands may be missed.
int CancelledRead(const TtyReader& reader, std::size_t requests, int (*cancel)()) {
  std::atomic<bool> done{false};
  std::thread canceller([&] {
    reader.WaitForRequests(requests, 10000);
    while (!done) {
      EXPECT_EQ(0, cancel());
      poll(nullptr, 0, 20);
    }
  });
  const int result = Read(reader.path(), 9600, 120);
  done = true;
  canceller.join();
  return result;
}

TEST(Cancel, EndsAReadOfASilentReader) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.SetFault(*simulator::ParseFault("silent"));

  EXPECT_EQ(-9, CancelledRead(reader, 1, APP_ID_CancelRead));
}

TEST(Cancel, EndsAReadThatWaitsForACard) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::UseSystemClock();
  TtyReader reader;

  EXPECT_EQ(-9, CancelledRead(reader, 2, Linux_QL_ID_CancelRead));
}

TEST(Cancel, BeforeAReadIsForgotten) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));

  EXPECT_EQ(0, APP_ID_CancelRead());

  EXPECT_EQ(0, Read(reader.path()));
}

TEST(Card, MayComeWhileTheReadWaits) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::UseSystemClock();
  TtyReader reader;
  std::thread person([&] {
    reader.WaitForRequests(2, 10000);
    reader.PutCard(MakeCard("permit-macau"));
  });
  PERSONINFO_COLLECT record = {};

  EXPECT_EQ(0, Read(reader.path(), 9600, 20, &record));

  person.join();
  EXPECT_STREQ("J", record.cardType);
}

TEST(Card, MayBeAnotherOneEachTime) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  for (const simulator::Specimen& specimen : simulator::Specimens()) {
    reader.PutCard(MakeCard(specimen));
    PERSONINFO_COLLECT record = {};

    EXPECT_EQ(0, Read(reader.path(), 9600, 10, &record));

    EXPECT_EQ(RecordTexts(MakeCard(specimen), Members<PERSONINFO_COLLECT>(), false, true),
              TextsOf(&record, Members<PERSONINFO_COLLECT>()))
        << specimen.id;
  }
}

}  // namespace
}  // namespace whole
