#include "tools/qlid/card_program.h"

#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "quillonid/results.h"
#include "tools/qlid/files.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPass = 20;                             // ms between looks at the program
constexpr auto kGraceTime = std::chrono::seconds(2);  // from SIGTERM to SIGKILL

// A file in memory alone, at its start. A program that leaves it unread blocks nobody, where a pipe
// would fill or break.
int MemoryFile(const std::string& text) {
  const int fd = memfd_create("card", MFD_CLOEXEC);
  if (fd < 0) return -1;
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    done += static_cast<std::size_t>(written);
  }
  if (done == text.size() && lseek(fd, 0, SEEK_SET) == 0) return fd;
  close(fd);
  return -1;
}

// Starts the shell with `input` as its standard input and the signals as any program has them.
// Returns 0 or an error number.
int Start(const std::string& command, int input, ProgramOutput output, pid_t* pid) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  if (output == ProgramOutput::kToStandardError)
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);

  const char* const arguments[] = {"sh", "-c", command.c_str(), nullptr};
  const int error = posix_spawn(pid, "/bin/sh", &files, &attributes,
                                const_cast<char* const*>(arguments), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

Report ProgramReport(const std::string& command, const std::string& what) {
  Report report = {QL_OTHER_ERROR, kExitOther, what, {{Tr("Command", "命令"), Printable(command)}}};
  report.tell_code = false;  // No call of the library gave it.
  report.reason = "command";
  return report;
}

std::optional<Report> EndReport(const std::string& command, int status) {
  if (WIFSIGNALED(status)) {
    return ProgramReport(
        command,
        Format(Tr("the command was ended by signal %d", "命令被信号 %d 终止"), WTERMSIG(status)));
  }
  if (WEXITSTATUS(status) == 0) return std::nullopt;
  return ProgramReport(command, Format(Tr("the command ended with status %d", "命令以状态 %d 结束"),
                                       WEXITSTATUS(status)));
}

// Ends the program and what it has started.
void End(pid_t pid) {
  kill(-pid, SIGTERM);
  const auto end = Clock::now() + kGraceTime;
  bool gone = false;
  while (!gone && Clock::now() < end) {
    gone = waitpid(pid, nullptr, WNOHANG) != 0;
    if (!gone) usleep(kPass * 1000);
  }
  kill(-pid, SIGKILL);
  if (!gone) waitpid(pid, nullptr, 0);
}

}  // namespace

std::optional<Report> RunForCard(const std::string& command, const std::string& input, int seconds,
                                 ProgramOutput output) {
  const int card = MemoryFile(input);
  pid_t pid = -1;
  const int error = card < 0 ? errno : Start(command, card, output, &pid);
  if (card >= 0) close(card);
  if (error != 0) {
    return ProgramReport(command, Format(Tr("the command was not started: %s", "命令未启动：%s"),
                                         SystemProblem(error).c_str()));
  }
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  while (true) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) return EndReport(command, status);
    const int signal = WaitForSignal(kPass);
    if (AsksToStop(signal)) {
      End(pid);
      return Report{QL_CANCELLED,
                    kExitCancelled,
                    Tr("stopped while the command was running", "命令运行中被停止"),
                    {}};
    }
    if (Clock::now() < end) continue;
    End(pid);
    return ProgramReport(command, Format(Tr("the command did not end within %d s and was stopped",
                                            "命令在 %d 秒内没有结束，已被终止"),
                                         seconds));
  }
}

}  // namespace qlid
