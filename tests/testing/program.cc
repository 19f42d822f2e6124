#include "tests/testing/program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <utility>

namespace {

// The words before the program: an emulator and its options where the program is for another
// architecture.
std::vector<std::string> Emulator() {
  std::vector<std::string> words;
  std::istringstream text(QL_EMULATOR);
  for (std::string word; text >> word;) words.push_back(word);
  return words;
}

void MakePipe(int (&ends)[2]) {
  if (pipe2(ends, O_CLOEXEC) != 0) abort();
}

void MakeTerminal(int (&ends)[2]) {
  ends[0] = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (ends[0] < 0 || grantpt(ends[0]) != 0 || unlockpt(ends[0]) != 0) abort();
  ends[1] = open(ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (ends[1] < 0) abort();
}

// Takes what is there. False at the end of the stream.
bool Take(int fd, std::string* text) {
  std::array<char, 4096> piece;
  const ssize_t got = read(fd, piece.data(), piece.size());
  if (got < 0)
    return errno == EINTR || errno == EAGAIN;  // A terminal whose other side is closed gives EIO.
  text->append(piece.data(), static_cast<std::size_t>(got));
  return got > 0;
}

// Whether `text` stands in `whole` at least so many times; looked for from the end, where it is
// new.
bool Holds(const std::string& whole, const std::string& text, std::size_t times) {
  std::size_t at = whole.rfind(text);
  for (; at != std::string::npos && times > 1; --times)
    at = at == 0 ? std::string::npos : whole.rfind(text, at - 1);
  return at != std::string::npos;
}

}  // namespace

Program::Program(std::vector<std::string> words, const std::vector<std::string>& environment,
                 bool terminal, bool keyboard, bool service) {
  const std::vector<std::string> emulator = Emulator();
  words.insert(words.begin(), emulator.begin(), emulator.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  int in[2];
  int out[2];
  int err[2];
  MakePipe(in);
  MakePipe(out);
  if (terminal) {
    MakeTerminal(err);
  } else {
    MakePipe(err);
  }
  pid_ = fork();
  if (pid_ == 0) {
    for (const char* name :
         {"QLID_DEVICE", "QLID_BAUD", "QLID_TIMEOUT", "NO_COLOR", "LC_ALL", "LC_MESSAGES"}) {
      unsetenv(name);
    }
    setenv("LANG", "C.UTF-8", 1);
    setenv("TERM", "xterm-256color", 1);
    for (const std::string& entry : environment) putenv(const_cast<char*>(entry.c_str()));
    if (keyboard || service) setsid();
    if (keyboard) {
      ioctl(err[1], TIOCSCTTY, 0);
    }
    dup2(keyboard ? err[1] : in[0], STDIN_FILENO);
    dup2(keyboard ? err[1] : out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  close(err[1]);
  in_ = in[1];
  out_ = out[0];
  err_ = err[0];
  if (keyboard) {
    close(in_);
    in_ = fcntl(err_, F_DUPFD_CLOEXEC, 0);
  }
}

Program::~Program() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  for (const int fd : {in_, out_, err_}) {
    if (fd >= 0) close(fd);
  }
}

void Program::Signal(int number) const { kill(pid_, number); }

void Program::Type(const std::string& text) const {
  if (write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) abort();
}

void Program::EndInput() {
  close(in_);
  in_ = -1;
}

void Program::CloseTerminal() {
  for (int* const end : {&in_, &err_}) {
    close(*end);
    *end = -1;
  }
}

bool Program::Pump(int milliseconds) {
  pollfd ends[] = {
      {out_, POLLIN, 0},
      {err_, POLLIN, 0}
  };
  if (out_ < 0 && err_ < 0) return false;
  if (poll(ends, 2, milliseconds) <= 0) return true;
  if (ends[0].revents != 0 && !Take(out_, &output_.out)) {
    close(out_);
    out_ = -1;
  }
  if (ends[1].revents != 0 && !Take(err_, &output_.err)) {
    close(err_);
    err_ = -1;
  }
  return true;
}

bool Program::WaitFor(const std::string& text, std::size_t times) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < end) {
    if (Holds(output_.out, text, times) || Holds(output_.err, text, times)) return true;
    if (!Pump(100)) return false;
  }
  return false;
}

Output Program::Finish() {
  while (Pump(1000)) {
  }
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  output_.exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return output_;
}

Output RunProgram(std::vector<std::string> words, const std::vector<std::string>& environment) {
  Program program(std::move(words), environment);
  return program.Finish();
}

std::string OutputOf(const std::string& command, int* status) {
  std::string text;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return "cannot be started";
  std::array<char, 4096> piece;
  while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), pipe)) {
    text.append(piece.data(), got);
  }
  const int ended = pclose(pipe);
  if (status != nullptr) *status = ended;
  return text;
}
