#include "tools/qlid/line_tap.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <thread>

#include "simulator/line_speed.h"
#include "simulator/pseudo_terminal.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

// Bytes as they are, no echo, no modem lines. Throws std::system_error.
void MakeRaw(int port, const std::string& name) {
  termios settings = {};
  if (tcgetattr(port, &settings) == 0) {
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    if (tcsetattr(port, TCSANOW, &settings) == 0) return;
  }
  throw std::system_error(errno, std::generic_category(), name);
}

}  // namespace

class LineTap::Line {
 public:
  Line(const std::string& port, Listener listener)
      : listener_(std::move(listener)),
        start_(Clock::now()),
        port_(open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), port.c_str()),
        wake_(eventfd(0, EFD_CLOEXEC), "eventfd") {
    MakeRaw(port_.get(), port);
    thread_ = std::thread([this] { Run(); });
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() {
    eventfd_write(wake_.get(), 1);
    thread_.join();
  }
  const std::string& path() const { return terminal_.path(); }

 private:
  void Run() {
    while (true) {
      std::array<pollfd, 3> waits = {
          {{wake_.get(), POLLIN, 0}, {terminal_.master(), POLLIN, 0}, {port_.get(), POLLIN, 0}}
      };
      if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) break;
      if (waits[0].revents != 0) break;
      if (waits[1].revents != 0 && !Forward(terminal_.master(), port_.get(), true)) break;
      if (waits[2].revents != 0 && !Forward(port_.get(), terminal_.master(), false)) break;
    }
    terminal_.HangUp();
  }

  // Takes what has come on one side to the other. False when a side is gone.
  bool Forward(int from, int to, bool from_host) {
    std::array<std::uint8_t, 4096> bytes;
    const ssize_t got = read(from, bytes.data(), bytes.size());
    if (got < 0) return errno == EINTR || errno == EAGAIN;
    if (got == 0) return false;
    simulator::RecordedPiece piece;
    if (from_host) FollowSpeed();
    piece.at = Now();
    piece.from_host = from_host;
    piece.bytes.assign(bytes.begin(), bytes.begin() + got);
    listener_(piece);
    return WriteAll(to, piece.bytes);
  }

  // The port takes the speed that the library has set on its side.
  void FollowSpeed() {
    termios host = {};
    termios port = {};
    if (tcgetattr(terminal_.master(), &host) != 0 || tcgetattr(port_.get(), &port) != 0) return;
    const bool followed = cfgetospeed(&host) == cfgetospeed(&port);
    if (told_speed_ && followed) return;
    told_speed_ = true;
    if (!followed) {
      cfsetispeed(&port, cfgetospeed(&host));
      cfsetospeed(&port, cfgetospeed(&host));
      tcsetattr(port_.get(), TCSADRAIN, &port);
    }
    simulator::RecordedPiece piece;
    piece.at = Now();
    piece.speed = simulator::BitsPerSecond(host);
    if (piece.speed != 0) listener_(piece);
  }

  bool WriteAll(int to, const simulator::Bytes& bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t written = write(to, bytes.data() + done, bytes.size() - done);
      if (written > 0) {
        done += static_cast<std::size_t>(written);
      } else if (errno == EAGAIN) {
        std::array<pollfd, 2> waits = {
            {{to, POLLOUT, 0}, {wake_.get(), POLLIN, 0}}
        };
        poll(waits.data(), waits.size(), -1);
        if (waits[1].revents != 0) return false;
      } else if (errno != EINTR) {
        return false;
      }
    }
    return true;
  }

  std::chrono::microseconds Now() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_);
  }

  const Listener listener_;
  const Clock::time_point start_;
  simulator::Descriptor port_;
  simulator::PseudoTerminal terminal_;  // what the library opens instead of the port
  simulator::Descriptor wake_;          // written to: the thread ends
  bool told_speed_ = false;
  std::thread thread_;  // last: it uses the rest
};

std::unique_ptr<LineTap> LineTap::Open(const std::string& port, Listener listener) {
  try {
    auto line = std::make_unique<Line>(port, std::move(listener));
    return std::unique_ptr<LineTap>(new LineTap(std::move(line)));
  } catch (const std::system_error&) {
    return nullptr;
  }
}

LineTap::LineTap(std::unique_ptr<Line> line) : line_(std::move(line)) {}
LineTap::~LineTap() = default;
const std::string& LineTap::path() const { return line_->path(); }

}  // namespace qlid
