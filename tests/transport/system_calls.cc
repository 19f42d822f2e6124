#include "tests/transport/system_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

namespace {

int s_fd = -1;  // -1: nothing is watched
std::vector<std::string> s_noted;
std::deque<system_calls::Answer> s_reads;
std::deque<system_calls::Answer> s_writes;
std::deque<int> s_queue;
bool s_queue_stays;
int s_interrupted_settings;

bool Watched(int fd) { return s_fd != -1 && (s_fd == system_calls::kAny || s_fd == fd); }

// The C library's own function of that name.
template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <typename Call>
ssize_t Answered(std::deque<system_calls::Answer>& script, std::size_t size, Call call) {
  if (script.empty()) return call(size);
  const system_calls::Answer answer = script.front();
  script.pop_front();
  if (answer.count < 0) {
    errno = answer.error;
    return -1;
  }
  return answer.count == 0 ? 0 : call(std::min(size, static_cast<std::size_t>(answer.count)));
}

}  // namespace

namespace system_calls {

void Watch(int fd) {
  s_noted.clear();
  s_fd = fd;
}
const std::vector<std::string>& Noted() { return s_noted; }
void ScriptReads(std::deque<Answer> answers) { s_reads = std::move(answers); }
void ScriptWrites(std::deque<Answer> answers) { s_writes = std::move(answers); }
void ScriptQueue(std::deque<int> bytes, AtFlush at_flush) {
  s_queue = std::move(bytes);
  s_queue_stays = at_flush == AtFlush::kKeeps;
}
void InterruptSettings(int count) { s_interrupted_settings = count; }

}  // namespace system_calls

extern "C" {

ssize_t read(int fd, void* buffer, std::size_t size) {
  static const auto real = Real<decltype(read)>("read");
  if (!Watched(fd)) return real(fd, buffer, size);
  s_noted.push_back("read " + std::to_string(size));
  if (size == 0) return real(fd, buffer, size);
  return Answered(s_reads, size, [=](std::size_t part) { return real(fd, buffer, part); });
}

ssize_t write(int fd, const void* data, std::size_t size) {
  static const auto real = Real<decltype(write)>("write");
  if (!Watched(fd)) return real(fd, data, size);
  s_noted.push_back("write " + std::to_string(size));
  return Answered(s_writes, size, [=](std::size_t part) { return real(fd, data, part); });
}

int tcflush(int fd, int queue) noexcept {
  static const auto real = Real<int(int, int)>("tcflush");
  if (Watched(fd)) {
    s_noted.push_back(queue == TCIFLUSH   ? "tcflush input"
                      : queue == TCOFLUSH ? "tcflush output"
                                          : "tcflush both");
    if (queue != TCIFLUSH && !s_queue_stays) s_queue.clear();
  }
  return real(fd, queue);
}

int tcsetattr(int fd, int action, const termios* settings) noexcept {
  static const auto real = Real<int(int, int, const termios*)>("tcsetattr");
  if (Watched(fd)) {
    s_noted.push_back(action == TCSAFLUSH ? "tcsetattr flush"
                      : action == TCSANOW ? "tcsetattr now"
                                          : "tcsetattr other");
  }
  if (Watched(fd) && s_interrupted_settings > 0) {
    --s_interrupted_settings;
    errno = EINTR;
    return -1;
  }
  return real(fd, action, settings);
}

int ioctl(int fd, unsigned long request, ...) noexcept {
  static const auto real = Real<int(int, unsigned long, void*)>("ioctl");
  va_list arguments;
  va_start(arguments, request);
  void* const value = va_arg(arguments, void*);
  va_end(arguments);
  if (!Watched(fd) || request != TIOCOUTQ || s_queue.empty()) return real(fd, request, value);
  *static_cast<int*>(value) = s_queue.front();
  if (s_queue.size() > 1) s_queue.pop_front();
  return 0;
}

int close(int fd) {
  static const auto real = Real<decltype(close)>("close");
  if (Watched(fd)) s_noted.push_back("close");
  return real(fd);
}

}  // extern "C"
