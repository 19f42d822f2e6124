#include "tools/qlid/line_tap.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <thread>

#include "simulator/line_speed.h"
#include "support/handles.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

int OpenMaster(std::string* path) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  std::array<char, 128> name{};
  if (master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0 &&
      ptsname_r(master, name.data(), name.size()) == 0) {
    *path = name.data();
    return master;
  }
  if (master >= 0) close(master);
  return -1;
}

// Bytes as they are, no echo, no modem lines.
bool MakeRaw(int tty) {
  termios settings = {};
  if (tcgetattr(tty, &settings) != 0) return false;
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  return tcsetattr(tty, TCSANOW, &settings) == 0;
}

}  // namespace

class LineTap::Line {
 public:
  Line(const std::string& port, Listener listener)
      : listener_(std::move(listener)),
        start_(Clock::now()),
        port_(open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)),
        master_(OpenMaster(&path_)),
        keeper_(master_.get() < 0 ? -1 : open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)),
        wake_(eventfd(0, EFD_CLOEXEC)) {
    sound_ = port_.get() >= 0 && keeper_.get() >= 0 && wake_.get() >= 0 && MakeRaw(port_.get()) &&
             MakeRaw(keeper_.get());
    if (sound_) thread_ = std::thread([this] { Run(); });
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() {
    if (!thread_.joinable()) return;
    eventfd_write(wake_.get(), 1);
    thread_.join();
  }
  bool sound() const { return sound_; }
  const std::string& path() const { return path_; }

 private:
  void Run() {
    while (true) {
      std::array<pollfd, 3> waits = {
          {{wake_.get(), POLLIN, 0}, {master_.get(), POLLIN, 0}, {port_.get(), POLLIN, 0}}
      };
      if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) break;
      if (waits[0].revents != 0) break;
      if (waits[1].revents != 0 && !Forward(master_.get(), port_.get(), true)) break;
      if (waits[2].revents != 0 && !Forward(port_.get(), master_.get(), false)) break;
    }
    keeper_.Close();
    master_.Close();
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
    if (tcgetattr(master_.get(), &host) != 0 || tcgetattr(port_.get(), &port) != 0) return;
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
  std::string path_;
  Descriptor port_;
  Descriptor master_;
  Descriptor keeper_;  // holds the library's side open, or each close would look like a hang-up
  Descriptor wake_;    // written to: the thread ends
  bool sound_ = false;
  bool told_speed_ = false;
  std::thread thread_;  // last: it uses the rest
};

std::unique_ptr<LineTap> LineTap::Open(const std::string& port, Listener listener) {
  auto line = std::make_unique<Line>(port, std::move(listener));
  if (!line->sound()) return nullptr;
  return std::unique_ptr<LineTap>(new LineTap(std::move(line)));
}

LineTap::LineTap(std::unique_ptr<Line> line) : line_(std::move(line)) {}
LineTap::~LineTap() = default;
const std::string& LineTap::path() const { return line_->path(); }

}  // namespace qlid
