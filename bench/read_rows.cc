// Reading a card from a simulated reader on a pseudo-terminal, with the pauses taken out, against a
// program that makes the same calls of the system and does nothing else. The time is that of the
// calling thread: what the reader takes to answer is nobody's merit.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "bench/files.h"
#include "bench/floor.h"
#include "bench/stand_ins.h"
#include "bench/table.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "simulator/tty_reader.h"
#include "support/hex.h"

namespace bench {
namespace {

constexpr auto kCheckDevice = Hex("AA AA AA 96 69 00 03 11 FF ED");
constexpr auto kSearch = Hex("AA AA AA 96 69 00 03 20 01 22");
constexpr auto kSelect = Hex("AA AA AA 96 69 00 03 20 02 21");
constexpr auto kRead = Hex("AA AA AA 96 69 00 03 30 01 32");
using Command = decltype(kRead);

constexpr int kBaud = 115200;

// System V's line settings, with which one call reads them and one writes them.
struct LineSettings {
  unsigned short iflag, oflag, cflag, lflag;
  unsigned char line, cc[8];
};

// A read of no bytes, the command, the answer to its announced end.
std::string Exchange(int tty, const Command& command) {
  unsigned char answer[4096];
  benchmark::DoNotOptimize(read(tty, answer, 0));
  benchmark::DoNotOptimize(write(tty, command.data(), command.size()));
  std::size_t got = 0;
  while (got < 7 || got < 7 + (std::size_t{answer[5]} << 8 | answer[6])) {
    const ssize_t count = read(tty, answer + got, sizeof answer - got);
    if (count < 0) return "";
    got += static_cast<std::size_t>(count);
  }
  return std::string(reinterpret_cast<const char*>(answer), got);
}

// Opens the tty with raw settings and keeps those that it found.
int Open(const char* path, LineSettings* found) {
  const int tty = open(path, O_RDWR);
  for (const int queue : {TCIFLUSH, TCOFLUSH, TCIOFLUSH}) ioctl(tty, TCFLSH, queue);
  ioctl(tty, TCGETA, found);
  LineSettings raw = {};
  raw.cflag = CS8 | CREAD | CLOCAL | (B115200 & 0xFFFF);
  raw.cc[VTIME] = 1;
  ioctl(tty, TCSETAF, &raw);
  return tty;
}

void Close(int tty, const LineSettings& found) {
  ioctl(tty, TCSETAF, &found);
  close(tty);
}

// The answer to the read, frame and all, which is what the library keeps as native data.
std::string WholeRead(const char* path) {
  LineSettings found = {};
  const int tty = Open(path, &found);
  Exchange(tty, kSearch);
  Exchange(tty, kSelect);
  std::string answer = Exchange(tty, kRead);
  Close(tty, found);
  return answer;
}

// The log checks that `work` makes once the library knows that there is no configuration file.
template <typename Work>
int CountLogChecks(Work work) {
  SetLogging(Logging::kNoFile);
  work();
  const int before = LogChecks();
  work();
  return LogChecks() - before;
}

void AddExchange(Table& table, const std::shared_ptr<simulator::TtyReader>& reader) {
  const auto open_device = [=] {
    if (tFuncOpenDevice(reader->path().c_str(), "", kBaud, 0, 10) != 0) {
      throw std::runtime_error("tFuncOpenDevice");
    }
  };
  const auto response = std::make_shared<std::string>(), answer = std::make_shared<std::string>();
  const auto exchange = [=] {
    unsigned char bytes[4096];
    const int size = Dev_Zel_IdSendAndReciveData(0, kCheckDevice.data(), kCheckDevice.size(), bytes,
                                                 sizeof bytes);
    response->assign(reinterpret_cast<const char*>(bytes),
                     static_cast<std::size_t>(size < 0 ? 0 : size));
  };
  open_device();
  const int checks = CountLogChecks(exchange);
  LineSettings found = {};
  const int tty = Open(reader->path().c_str(), &found);
  table.NewRow("pty-exchange", "one exchange on a pty", {1.08, 0.85})
      .Before(open_device)
      .Add(Role::kLibrary, "library", exchange, [=] { return *response; })
      .Add(
          Role::kPeer, "system calls, " + std::to_string(checks) + " failing opens",
          [=] {
            for (int i = 0; i < checks; ++i) FailingOpen();
            *answer = Exchange(tty, kCheckDevice);
          },
          [=] { return *answer; });
}

void AddWholeReads(Table& table, const std::shared_ptr<simulator::TtyReader>& reader) {
  const auto read_card = [=] {
    PERSONINFO_COLLECT card;
    if (APP_ID_ReadCollectIDCard(reader->path().c_str(), "", kBaud, 10, nullptr, &card) != 0) {
      throw std::runtime_error("APP_ID_ReadCollectIDCard");
    }
  };
  const auto native = [] {
    std::string bytes(4096, '\0');
    const int size = tFunc_GetIdNativeData(bytes.data(), static_cast<int>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
  };
  const auto answer = std::make_shared<std::string>();
  const int checks = CountLogChecks(read_card);
  table.NewRow("pty-read", "whole read on a pty", {1.08, 0.88})
      .Add(Role::kLibrary, "library", read_card, native)
      .Add(
          Role::kPeer, "system calls, " + std::to_string(checks) + " failing opens",
          [=] {
            for (int i = 0; i < checks; ++i) FailingOpen();
            *answer = WholeRead(reader->path().c_str());
          },
          [=] { return *answer; });

  // One line for each check, all of the mean length.
  SetLogging(Logging::kOn);
  read_card();
  const std::string line(ReadWhole(kLog).size() / static_cast<std::size_t>(checks), 'x');
  table.NewRow("pty-logged", "whole read on a pty, logging on", {1.50, 1.10})
      .Before([] { SetLogging(Logging::kOn); })
      .Add(Role::kLibrary, "library", read_card, native)
      .Add(
          Role::kPeer, "system calls, " + std::to_string(checks) + " lines",
          [=] {
            for (int i = 0; i < checks; ++i) LogPrepared(line);
            *answer = WholeRead(reader->path().c_str());
          },
          [=] { return *answer; });
}

}  // namespace

void AddReadRows(Table& table) {
  if (!HaveFolder()) return;
  const auto reader = std::make_shared<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("resident"));
  AddExchange(table, reader);
  AddWholeReads(table, reader);
}

}  // namespace bench
