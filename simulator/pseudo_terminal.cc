#include "simulator/pseudo_terminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace simulator {
namespace {

int OpenMaster() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (master < 0) return -1;
  if (grantpt(master) == 0 && unlockpt(master) == 0) return master;
  const int error = errno;
  close(master);
  errno = error;
  return -1;
}

std::string HostPath(int master) {
  std::array<char, 128> name{};
  const int error = ptsname_r(master, name.data(), name.size());
  if (error != 0) throw std::system_error(error, std::generic_category(), "ptsname_r");
  return name.data();
}

void MakeRaw(int tty) {
  termios settings = {};
  if (tcgetattr(tty, &settings) != 0) return;
  cfmakeraw(&settings);
  cfsetispeed(&settings, B9600);
  cfsetospeed(&settings, B9600);
  tcsetattr(tty, TCSANOW, &settings);
}

}  // namespace

Descriptor::Descriptor(int value, const char* what) : value_(value) {
  if (value_ < 0) throw std::system_error(errno, std::generic_category(), what);
}

void Descriptor::Close() {
  if (value_ >= 0) close(value_);
  value_ = -1;
}

PseudoTerminal::PseudoTerminal()
    : master_(OpenMaster(), "pseudo-terminal"),
      path_(HostPath(master_.get())),
      keeper_(open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), path_.c_str()) {
  MakeRaw(keeper_.get());
}

void PseudoTerminal::HangUp() {
  master_.Close();
  keeper_.Close();
}

}  // namespace simulator
