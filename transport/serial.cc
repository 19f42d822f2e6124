// Serial port: the one open tty of the process, raw 8N1. The terminal auxiliary port reads and
// writes through the same descriptor.
#include "transport/serial.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "support/clock.h"
#include "support/log.h"
#include "support/terminal_wait.h"

namespace {

// The open port. Set by COMM_Com_OpenLinux and SetAuxFd; kNoPort after a close or a failed open.
std::atomic<int> g_AuxFd{kNoPort};

// Line settings found at open, and the descriptor they belong to: a descriptor handed in by
// SetAuxFd has none, and settings of all zeros would hang up its line.
termios g_stOldTermAttr;
int s_nSettingsFd = kNoPort;

// 1: stop the read, or a write that waits for the line. Set by COMM_Com_CancelLinuxRead, from any
// thread; cleared when a read or write starts, so that a cancel between them is forgotten.
std::atomic<int> s_bCancelLinuxComRead;
std::atomic<int> s_bLinuxComIsReading;  // 1 during a read
std::atomic<int> s_bLinuxComIsWriting;  // 1 during a write

constexpr int kSlice = 100;       // milliseconds: longest time between two looks at the cancel flag
constexpr int kPass = 50;         // milliseconds: longest pass of a read on a live line
constexpr int kStuck = 5000;      // milliseconds that a line may take no byte
constexpr int kSlowestByte = 40;  // milliseconds; a byte lasts 33 at 300 bit/s
constexpr int kUnblockWait = 1000;  // milliseconds
constexpr int kMostSignals = 1000;  // that may come while settings are applied

struct Rate {
  int baud;
  speed_t code;
};
constexpr Rate kRates[] = {
    {300,    B300   },
    {1200,   B1200  },
    {2400,   B2400  },
    {4800,   B4800  },
    {9600,   B9600  },
    {19200,  B19200 },
    {38400,  B38400 },
    {57600,  B57600 },
    {115200, B115200},
    {230400, B230400},
};

speed_t SpeedCode(int baud) {
  for (const Rate& rate : kRates) {
    if (rate.baud == baud) return rate.code;
  }
  return B9600;
}

// 8 data bits, no parity, 1 stop bit, modem lines ignored; a read returns after 0.1 s at most.
termios RawSettings(const termios& old, int baud) {
  // The upper halves stay as they are (CRTSCTS is there): the settings are those that the 16-bit
  // fields of System V's termio record reach.
  constexpr tcflag_t kUpperHalf = 0xFFFF0000;
  termios raw = old;
  raw.c_iflag &= kUpperHalf;
  raw.c_oflag &= kUpperHalf;
  raw.c_cflag = (old.c_cflag & kUpperHalf) | CS8 | CREAD | CLOCAL;
  cfsetspeed(&raw, SpeedCode(baud));
  raw.c_lflag &= ~tcflag_t{ISIG | ICANON | ECHO | NOFLSH};
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 1;
  raw.c_cc[VQUIT] = 0x7F;
  return raw;
}

// The time that bytes on their way out are given.
Patience PatienceFor(std::int64_t bytes) { return {kStuck, kStuck + kSlowestByte * bytes}; }

// Waits until the output has left. What is stuck, as on a line whose other end holds the flow
// control, is discarded in the end: the kernel's own wait would have none. Returns the bytes that
// are left even so: some drivers keep what they were to discard.
int Drain(int fd) {
  int bytes = QueuedOutput(fd);
  if (bytes == 0) return 0;
  Patience patience = PatienceFor(bytes);
  while (bytes > 0 && !patience.IsOver()) {
    Nap(kShortestLook);
    const int left = QueuedOutput(fd);
    if (left < bytes) patience.SeeProgress();
    bytes = left;
  }
  if (bytes == 0) return 0;
  tcflush(fd, TCOFLUSH);
  return QueuedOutput(fd);
}

// Drains output, discards input and sets. A signal that comes while the last byte leaves must
// neither fail an open nor leave a tty with the reader's settings; bytes that cannot leave must not
// hold them up.
bool DrainAndSet(int fd, const termios& settings) {
  const bool is_stuck = Drain(fd) > 0;
  if (is_stuck) tcflush(fd, TCIFLUSH);
  for (int i = 0; i < kMostSignals; ++i) {
    if (tcsetattr(fd, is_stuck ? TCSANOW : TCSAFLUSH, &settings) == 0) return true;
    if (errno != EINTR) return false;
  }
  return false;
}

// Applies the raw settings, draining output and discarding input first, and keeps those it found.
bool ApplySettings(int fd, int baud) {
  termios found = {};
  if (tcgetattr(fd, &found) != 0) return false;
  const termios raw = RawSettings(found, baud);
  if (!DrainAndSet(fd, raw)) return false;
  g_stOldTermAttr = found;
  s_nSettingsFd = fd;
  return true;
}

void RestoreSettings(int fd) {
  if (fd == s_nSettingsFd) DrainAndSet(fd, g_stOldTermAttr);
}

// While it lives, a write takes what the line has room for and returns. Reads need the blocking
// mode: VTIME is their clock.
class NonBlocking {
 public:
  explicit NonBlocking(int fd) : fd_(fd), flags_(fcntl(fd, F_GETFL)) {
    if (flags_ >= 0) fcntl(fd_, F_SETFL, flags_ | O_NONBLOCK);
  }
  NonBlocking(const NonBlocking&) = delete;
  NonBlocking& operator=(const NonBlocking&) = delete;
  ~NonBlocking() {
    if (flags_ >= 0) fcntl(fd_, F_SETFL, flags_);
  }

 private:
  int fd_;
  int flags_;
};

// The writes of QL_SendDataToTransPort. Returns the bytes written.
int WriteAll(int fd, const unsigned char* data, int len) {
  const NonBlocking guard(fd);
  // On purpose: a read of no bytes goes before every write. It, too, would wait for another program
  // that reads from the same terminal.
  unsigned char none = 0;
  [[maybe_unused]] const ssize_t nothing = read(fd, &none, 0);
  // Bytes that were written before leave first.
  Patience patience = PatienceFor(std::int64_t{len} + QueuedOutput(fd));
  int sent = 0;
  bool took_nothing = false;
  while (sent < len) {
    const ssize_t put = write(fd, data + sent, static_cast<std::size_t>(len - sent));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0 && errno == EAGAIN) {
      if (!WaitForRoom(fd, patience, &s_bCancelLinuxComRead)) break;
      continue;
    }
    if (put < 0 || (put == 0 && took_nothing)) break;
    took_nothing = put == 0;
    sent += static_cast<int>(put);
    if (put > 0) patience.SeeProgress();
  }
  return sent;
}

// One pass of a read: what the line has, or what comes in its time. Returns read's result. VTIME
// alone would hold a cancel up for the tenth of a second and the tick of the kernel above it. For
// no bytes there is nothing to wait for.
ssize_t ReadPass(int fd, unsigned char* dest, std::size_t room) {
  return room > 0 && WaitForTerminal(fd, POLLIN, kPass) == 0 ? 0 : read(fd, dest, room);
}

// The passes of COMM_Com_ReadLinux, up to its result.
int ReadMessage(int fd, unsigned char* buffer, std::int64_t wanted, int timeout_s,
                QL_END_CONDITION end_condition) {
  const int limit = timeout_s < 0 ? 1 : timeout_s;
  const std::int64_t start = MonotonicSeconds();
  std::int64_t count = 0;
  for (;;) {
    const std::int64_t pass_start = MonotonicMilliseconds();
    const ssize_t got = ReadPass(fd, buffer + count, static_cast<std::size_t>(wanted - count));
    if (got < 0 && errno != EINTR) return RET_PUB_READ_ERROR;
    if (got > 0) count += got;
    if (count >= wanted) return static_cast<int>(wanted);
    if (end_condition && end_condition(buffer, static_cast<int>(count)) == 0) {
      return static_cast<int>(count);
    }
    if (MonotonicSeconds() - start > limit) return RET_PUB_TIMEOUT;
    if (s_bCancelLinuxComRead) return RET_PUB_CANCEL;
    // A line that was hung up reads as empty at once, for ever.
    if (got == 0) NapRestOfSlice(pass_start, kPass, kSlice);
  }
}

}  // namespace

int SerialDescriptor() { return g_AuxFd; }

QL_API int COMM_Com_OpenLinux(const char* path, int baud) {
  LOG_DEVICE("[%s ] Start ", __func__);
  LOG_DEVICE(" szTtyName = %s nBaud = %d  ", path ? path : "(null)", baud);
  if (g_AuxFd >= 0) {
    COMM_Com_CloseLinux();
    NapMicroseconds(50);
  }

  const int fd = path ? open(path, O_RDWR) : -1;
  if (fd < 0) {
    g_AuxFd = kNoPort;
    return RET_PUB_OPEN_ERROR;
  }
  fcntl(fd, F_SETFD, FD_CLOEXEC);
  g_AuxFd = fd;

  Nap(1);
  tcflush(fd, TCIFLUSH);
  tcflush(fd, TCOFLUSH);
  tcflush(fd, TCIOFLUSH);
  LOG_DEVICE("open linux com success!\r\n");

  if (!ApplySettings(fd, baud)) {
    close(fd);
    g_AuxFd = kNoPort;
    return -1;
  }
  return RET_PUB_SUCCESS;
}

QL_API int QL_SendDataToTransPort(const unsigned char* data, int len) {
  const int fd = g_AuxFd;
  if (fd < 0 || !data || len <= 0) return RET_PUB_INVAL_PARAM;

  s_bCancelLinuxComRead = 0;
  s_bLinuxComIsWriting = 1;
  const int sent = WriteAll(fd, data, len);
  s_bLinuxComIsWriting = 0;
  return sent;
}

QL_API int COMM_Com_WriteLinux(const unsigned char* data, int len) {
  return QL_SendDataToTransPort(data, len);
}

QL_API int COMM_Com_ReadLinux(unsigned char* buffer, std::uint32_t wanted, int timeout_s,
                              QL_END_CONDITION end_condition) {
  const int fd = g_AuxFd;
  const bool negative = wanted > INT32_MAX;  // a negative count made unsigned
  if (fd < 0 || !buffer || negative) {
    LOG_DEVICE("[RET_PUB_INVAL_PARAM]  ");
    return RET_PUB_INVAL_PARAM;
  }
  s_bCancelLinuxComRead = 0;
  s_bLinuxComIsReading = 1;
  const int result = ReadMessage(fd, buffer, wanted, timeout_s, end_condition);
  s_bLinuxComIsReading = 0;
  return result;
}

QL_API int COMM_Com_CancelLinuxRead() {
  if (g_AuxFd == 0) return RET_PUB_CANCEL;  // On purpose: descriptor 0 answers that.
  if (s_bLinuxComIsReading || s_bLinuxComIsWriting) s_bCancelLinuxComRead = 1;
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Com_CloseLinux() {
  const int fd = g_AuxFd;
  if (fd < 0) return RET_PUB_SUCCESS;
  RestoreSettings(fd);  // Drains the output first: a command just written still leaves.
  close(fd);
  g_AuxFd = kNoPort;
  s_nSettingsFd = kNoPort;
  return RET_PUB_SUCCESS;
}

QL_API void ClearReceiveBuffer() {
  const int fd = g_AuxFd;
  if (fd >= 0) tcflush(fd, TCIFLUSH);
}

QL_API int SetAuxFd(int fd) {
  g_AuxFd = fd;
  return RET_PUB_SUCCESS;
}

QL_API int ResetAux() {
  const int fd = g_AuxFd;
  if (fd >= 0) RestoreSettings(fd);
  return RET_PUB_SUCCESS;
}

QL_API int ReadBlock(unsigned char* buffer, int len) {
  const int fd = g_AuxFd;
  if (fd < 0 || !buffer || len < 0) return RET_PUB_INVAL_PARAM;
  return static_cast<int>(read(fd, buffer, static_cast<std::size_t>(len)));
}

QL_API int WriteBlock(const unsigned char* buffer, int len) {
  const int fd = g_AuxFd;
  if (fd < 0 || !buffer || len < 0) return RET_PUB_INVAL_PARAM;
  return static_cast<int>(write(fd, buffer, static_cast<std::size_t>(len)));
}

QL_API int ReadUnBlock(unsigned char* buffer, int len) {
  LOG_DEVICE("ReadUnblock\n");
  const int fd = g_AuxFd;
  if (fd < 0) return RET_PUB_INVAL_PARAM;
  const int ready = WaitForTerminal(fd, POLLIN, kUnblockWait);
  return ready > 0 ? ReadBlock(buffer, len) : ready;
}

QL_API int WriteUnBlock(const unsigned char* buffer, int len) {
  LOG_DEVICE("WriteUnblock\n");
  const int fd = g_AuxFd;
  if (fd < 0) return RET_PUB_INVAL_PARAM;
  const int ready = WaitForTerminal(fd, POLLOUT, kUnblockWait);
  if (ready == 0) tcflush(fd, TCOFLUSH);
  return ready > 0 ? WriteBlock(buffer, len) : ready;
}
