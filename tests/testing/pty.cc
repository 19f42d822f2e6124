#include "tests/testing/pty.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace {

constexpr int kPatience = 20'000;  // milliseconds

}  // namespace

Pty::Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  std::signal(SIGHUP, SIG_IGN);
  char name[64] = {};
  EXPECT_LE(0, master_);
  EXPECT_EQ(0, grantpt(master_));
  EXPECT_EQ(0, unlockpt(master_));
  EXPECT_EQ(0, ptsname_r(master_, name, sizeof name));
  path_ = name;
}

Pty::~Pty() { HangUp(); }

void Pty::HangUp() {
  if (master_ >= 0) close(master_);
  master_ = -1;
}

void Pty::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t put = write(master_, bytes.data(), bytes.size());
    ASSERT_LT(0, put);
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
}

std::string Pty::Receive(std::size_t size) const {
  std::string received;
  while (received.size() < size) {
    pollfd line = {master_, POLLIN, 0};
    if (poll(&line, 1, kPatience) <= 0) break;
    char bytes[4096];
    const ssize_t got = read(master_, bytes, std::min(sizeof bytes, size - received.size()));
    if (got <= 0) break;
    received.append(bytes, static_cast<std::size_t>(got));
  }
  return received;
}

std::string Pty::ReceiveRest() const { return Receive(std::string::npos); }

termios Pty::Settings() const {
  termios settings = {};
  EXPECT_EQ(0, tcgetattr(master_, &settings));
  return settings;
}

void Pty::SetSettings(const termios& settings) const {
  EXPECT_EQ(0, tcsetattr(master_, TCSANOW, &settings));
}

std::vector<int> DescriptorsOn(const std::string& path) {
  std::vector<int> found;
  std::error_code closed_meanwhile;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    if (std::filesystem::read_symlink(entry.path(), closed_meanwhile) == path) {
      found.push_back(std::stoi(entry.path().filename()));
    }
  }
  return found;
}
