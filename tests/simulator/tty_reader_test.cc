#include "simulator/tty_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"

namespace simulator {
namespace {

constexpr char kSearch[] = "AA AA AA 96 69 00 03 20 01 22";
constexpr char kRead[] = "AA AA AA 96 69 00 03 30 01 32";
constexpr char kFound[] = "AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97";
constexpr char kNoCard[] = "AA AA AA 96 69 00 04 00 00 81 85";
constexpr int kPatience = 5000;  // ms

// A host of its own: the reader's line as a program would open it.
class Host {
 public:
  explicit Host(const TtyReader& reader) : tty_(open(reader.path().c_str(), O_RDWR | O_NOCTTY)) {}
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() { close(tty_); }

  bool IsOpen() const { return tty_ >= 0; }

  void Send(const std::string& hex) {
    const Bytes bytes = FromHex(hex);
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), write(tty_, bytes.data(), bytes.size()));
  }

  // Up to `size` bytes; fewer when the line is dead or nothing comes for `patience` milliseconds.
  Bytes Take(std::size_t size, int patience = kPatience) {
    Bytes bytes(size);
    std::size_t got = 0;
    while (got < size) {
      pollfd wait = {tty_, POLLIN, 0};
      if (poll(&wait, 1, patience) <= 0) break;
      const ssize_t more = read(tty_, bytes.data() + got, size - got);
      if (more <= 0) break;
      got += static_cast<std::size_t>(more);
    }
    bytes.resize(got);
    return bytes;
  }

  std::string Ask(const std::string& hex, std::size_t size) {
    Send(hex);
    return HexText(Take(size));
  }

  // What comes within a short while; for answers that shall not come.
  std::string Rest() { return HexText(Take(4096, 100)); }

  // As serial programs set a line up: drains the output, throws waiting input away.
  void SetLine(speed_t speed) {
    termios settings = {};
    ASSERT_EQ(0, tcgetattr(tty_, &settings));
    settings.c_cflag = CS8 | CREAD | CLOCAL;
    cfsetispeed(&settings, speed);
    cfsetospeed(&settings, speed);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 1;
    ASSERT_EQ(0, tcsetattr(tty_, TCSAFLUSH, &settings));
  }

 private:
  int tty_;
};

TEST(TtyReader, AnswersOnItsPath) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  Host host(reader);

  EXPECT_EQ(kFound, host.Ask(kSearch, 15));
  EXPECT_EQ(HexText(NativeData(MakeCard("resident"), false)), host.Ask(kRead, 1295));
}

TEST(TtyReader, TakesARequestInPieces) {
  TtyReader reader;
  Host host(reader);

  host.Send("AA AA AA 96 69");
  EXPECT_EQ("", host.Rest());
  EXPECT_EQ(kNoCard, host.Ask("00 03 20 01 22", 11));
}

TEST(TtyReader, PassesEveryByteValueUnchanged) {
  TtyReader reader;
  Host host(reader);
  Card card = MakeCard("resident");
  for (std::size_t i = 0; i < card.photo.size(); ++i) {
    card.photo[i] = static_cast<std::uint8_t>(i);
  }
  reader.PutCard(card);

  EXPECT_EQ(HexText(NativeData(card, false)), host.Ask(kRead, 1295));
}

TEST(TtyReader, SurvivesManyOpensAndCloses) {
  TtyReader reader;
  reader.PutCard(MakeCard("permit"));
  const std::ptrdiff_t before = OpenDescriptors();

  for (int i = 0; i < 200; ++i) {
    Host host(reader);
    ASSERT_TRUE(host.IsOpen());
    host.SetLine(i % 2 == 0 ? B9600 : B115200);
    ASSERT_EQ(kFound, host.Ask(kSearch, 15)) << i;
  }
  EXPECT_EQ(before, OpenDescriptors());
  EXPECT_EQ(200U, reader.counters().requests);
}

TEST(TtyReader, LosesWhatTheHostThrowsAway) {
  TtyReader reader;
  Host host(reader);
  host.Send(kSearch);
  ASSERT_TRUE(reader.WaitForRequests(1, kPatience));
  while (reader.counters().bytes_sent < 11) poll(nullptr, 0, 1);
  poll(nullptr, 0, 50);

  host.SetLine(B9600);

  EXPECT_EQ("", host.Rest());
  EXPECT_EQ(kNoCard, host.Ask(kSearch, 11));
}

TEST(TtyReader, NoticesTheLineSpeed) {
  TtyReader reader;
  EXPECT_EQ(9600, reader.LineSpeed());
  Host host(reader);

  host.SetLine(B115200);
  EXPECT_EQ(115200, reader.LineSpeed());
  host.SetLine(B2400);
  EXPECT_EQ(2400, reader.LineSpeed());
}

TEST(TtyReader, AnswersAtItsOwnSpeedOnlyWhenTold) {
  TtyReader reader;
  reader.module().SetSpeedMatters(true);
  Host host(reader);

  host.SetLine(B115200);
  host.Send(kSearch);
  EXPECT_EQ("", host.Rest());
  host.SetLine(B9600);
  EXPECT_EQ(kNoCard, host.Ask(kSearch, 11));
  host.Send("1B 25 53 31");
  ASSERT_TRUE(reader.WaitForRequests(3, kPatience));
  host.SetLine(B115200);
  EXPECT_EQ(kNoCard, host.Ask(kSearch, 11));
}

TEST(TtyReader, LetsTheCardBeChangedFromAnotherThread) {
  TtyReader reader;
  Host host(reader);
  EXPECT_EQ(kNoCard, host.Ask(kSearch, 11));

  std::thread([&] { reader.PutCard(MakeCard("foreigner")); }).join();
  EXPECT_EQ(kFound, host.Ask(kSearch, 15));
  std::thread([&] { reader.RemoveCard(); }).join();
  EXPECT_EQ(kNoCard, host.Ask(kSearch, 11));
}

TEST(TtyReader, Trickles) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*ParseFault("slow=100"));
  Host host(reader);

  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(kFound, host.Ask(kSearch, 15));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(140));
}

TEST(TtyReader, AnswersLate) {
  TtyReader reader;
  reader.SetFault(*ParseFault("late=1"));
  Host host(reader);

  host.Send(kSearch);
  EXPECT_EQ("", HexText(host.Take(11, 500)));
  EXPECT_EQ(kNoCard, HexText(host.Take(11)));
}

TEST(TtyReader, AnswersInOrderWhatComesInTheMeantime) {
  TtyReader reader;
  reader.SetFault(*ParseFault("slow=500"));
  Host host(reader);

  host.Send(kSearch);
  host.Send("AA AA AA 96 69 00 03 11 FF ED");

  EXPECT_EQ(std::string(kNoCard) + " AA AA AA 96 69 00 04 00 00 90 94", HexText(host.Take(22)));
}

TEST(TtyReader, SendsMoreThanTheLineHolds) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*ParseFault("length=65535"));
  Host host(reader);

  host.Send(kRead);
  poll(nullptr, 0, 100);

  EXPECT_EQ(65535U, host.Take(65535).size());
}

TEST(TtyReader, HangsUpAfterItsLastByteIsRead) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*ParseFault("hang-up=700"));
  Host host(reader);

  host.Send(kRead);

  EXPECT_EQ(700U, host.Take(1295).size());
  for (int i = 0; i < 1000 && !reader.HungUp(); ++i) poll(nullptr, 0, 5);
  EXPECT_TRUE(reader.HungUp());
  EXPECT_FALSE(Host(reader).IsOpen());
}

TEST(TtyReader, HangsUpAtOnceWhenTold) {
  TtyReader reader;
  Host host(reader);

  reader.HangUp();
  reader.HangUp();

  EXPECT_TRUE(reader.HungUp());
  EXPECT_EQ(0, reader.LineSpeed());
  EXPECT_EQ("", host.Rest());
}

TEST(TtyReader, CountsRecordsAndTraces) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  std::vector<std::string> trace;
  reader.SetTrace([&](const TraceEvent& event) {
    trace.push_back((event.direction == TraceEvent::Direction::kFromHost ? "< " : "> ") +
                    event.meaning + ": " + HexText(event.bytes));
  });
  Host host(reader);

  EXPECT_EQ(kFound, host.Ask(kSearch, 15));
  host.Send("1B 25 42");
  ASSERT_TRUE(reader.WaitForRequests(2, kPatience));
  EXPECT_FALSE(reader.WaitForRequests(3, 20));
  reader.HangUp();

  EXPECT_EQ((std::vector<std::string>{std::string("< search card: ") + kSearch,
                                      std::string("> card found: ") + kFound,
                                      "< back to the reader's speed: 1B 25 42"}),
            trace);
  EXPECT_EQ(2U, reader.counters().requests);
  EXPECT_EQ(13U, reader.counters().bytes_received);
  EXPECT_EQ(15U, reader.counters().bytes_sent);
  ASSERT_EQ(2U, reader.Requests().size());
  EXPECT_EQ(RequestKind::kSearch, reader.Requests()[0].kind);
  EXPECT_EQ(RequestKind::kSpeed, reader.Requests()[1].kind);
}

TEST(TtyReader, LeavesNoDescriptorsBehind) {
  const std::ptrdiff_t before = OpenDescriptors();

  for (int i = 0; i < 50; ++i) {
    TtyReader reader;
    if (i % 2 == 0) reader.HangUp();
  }

  EXPECT_EQ(before, OpenDescriptors());
}

}  // namespace
}  // namespace simulator
