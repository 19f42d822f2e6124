#include "tests/reader/scripted_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "tests/testing/hex_text.h"

namespace {

constexpr std::size_t kFrameHead = 7;

void WriteAll(int fd, const Bytes& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t wrote = write(fd, bytes.data() + done, bytes.size() - done);
    if (wrote <= 0) return;
    done += static_cast<std::size_t>(wrote);
  }
}

bool WaitUntil(const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

Bytes WithCheckByte(Bytes bytes) {
  unsigned check = 0;
  for (std::size_t i = 5; i + 1 < bytes.size(); ++i) check ^= bytes[i];
  bytes.back() = static_cast<std::uint8_t>(check);
  return bytes;
}

Bytes ReadReply(std::size_t size, unsigned seed) {
  Bytes reply = FromHex("AA AA AA 96 69 00 00 00 00 90");
  reply.resize(size);
  reply[5] = static_cast<std::uint8_t>((size - kFrameHead) / 256);
  reply[6] = static_cast<std::uint8_t>((size - kFrameHead) % 256);
  for (std::size_t i = 10; i < size; ++i) {
    seed = seed * 1103515245U + 12345U;
    reply[i] = static_cast<std::uint8_t>(seed >> 16);
  }
  return WithCheckByte(reply);
}

ScriptedReader::ScriptedReader() {
  master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_GE(master_, 0);
  EXPECT_EQ(0, grantpt(master_));
  EXPECT_EQ(0, unlockpt(master_));
  char name[128] = {};
  EXPECT_EQ(0, ptsname_r(master_, name, sizeof name));
  path_ = name;
  line_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_GE(line_, 0);
  termios raw = {};
  EXPECT_EQ(0, tcgetattr(line_, &raw));
  cfmakeraw(&raw);
  EXPECT_EQ(0, tcsetattr(line_, TCSANOW, &raw));
  EXPECT_EQ(0, pipe2(stop_, O_CLOEXEC));
  thread_ = std::thread(&ScriptedReader::Serve, this);
}

ScriptedReader::~ScriptedReader() {
  HangUp();
  close(stop_[0]);
}

void ScriptedReader::HangUp() {
  if (!thread_.joinable()) return;
  close(stop_[1]);
  thread_.join();
  close(line_);
  close(master_);
}

void ScriptedReader::On(const std::string& command, Bytes answer, std::function<void()> first) {
  const std::lock_guard lock(mutex_);
  script_[command].push_back({std::move(answer), std::move(first)});
}

void ScriptedReader::On(const std::string& command, const std::string& answer,
                        std::function<void()> first) {
  On(command, FromHex(answer), std::move(first));
}

void ScriptedReader::HoldCard(const Bytes& reply) {
  On(kSearchCommand, kFoundAnswer);
  On(kSelectCommand, kSelectedAnswer);
  for (const std::string& command : {kReadCommand, kFingerCommand, kOneCommand}) On(command, reply);
}

void ScriptedReader::SendAhead(const Bytes& bytes) {
  WriteAll(master_, bytes);
  ASSERT_TRUE(WaitUntil([&] {
    int waiting = 0;
    return ioctl(line_, FIONREAD, &waiting) == 0 && waiting == static_cast<int>(bytes.size());
  }));
}

std::vector<std::string> ScriptedReader::Commands() const {
  const std::lock_guard lock(mutex_);
  return commands_;
}

Bytes ScriptedReader::Received() const {
  const std::lock_guard lock(mutex_);
  return received_;
}

Bytes ScriptedReader::Received(std::size_t size) const {
  WaitUntil([&] { return Received().size() >= size; });
  return Received();
}

void ScriptedReader::Serve() {
  Bytes pending;
  for (;;) {
    pollfd waited[2] = {
        {master_,  POLLIN, 0},
        {stop_[0], POLLIN, 0}
    };
    if (poll(waited, 2, -1) < 0 || waited[1].revents != 0) return;
    std::uint8_t block[512];
    const ssize_t got = read(master_, block, sizeof block);
    if (got <= 0) return;
    pending.insert(pending.end(), block, block + got);
    {
      const std::lock_guard lock(mutex_);
      received_.insert(received_.end(), block, block + got);
    }
    TakeFrames(&pending);
  }
}

void ScriptedReader::TakeFrames(Bytes* pending) {
  for (;;) {
    while (!pending->empty() && pending->front() != 0xAA) pending->erase(pending->begin());
    if (pending->size() < kFrameHead) return;
    const std::size_t size = kFrameHead + std::size_t{(*pending)[5]} * 256 + (*pending)[6];
    if (pending->size() < size) return;
    const std::string command = HexText(pending->data(), size);
    pending->erase(pending->begin(), pending->begin() + static_cast<std::ptrdiff_t>(size));
    Respond(command);
  }
}

void ScriptedReader::Respond(const std::string& command) {
  Answer answer;
  {
    const std::lock_guard lock(mutex_);
    commands_.push_back(command);
    std::deque<Answer>& answers = script_[command];
    if (answers.empty()) return;
    answer = answers.front();
    if (answers.size() > 1) answers.pop_front();
  }
  if (answer.first) answer.first();
  WriteAll(master_, answer.bytes);
}
