// A program that holds a port against qlid.
#ifndef QUILLONID_TESTS_QLID_RIVAL_H
#define QUILLONID_TESTS_QLID_RIVAL_H

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

inline constexpr char kRivalName[] = "frontdesk";

// Another program that has a port open for itself.
class Rival {
 public:
  explicit Rival(const std::string& port) {
    int ready[2];
    if (pipe(ready) != 0) abort();
    pid_ = fork();
    if (pid_ == 0) {
      prctl(PR_SET_NAME, kRivalName);
      const int out = dup2(ready[1], STDOUT_FILENO);
      for (int fd = 3; fd < 256; ++fd) close(fd);  // Not the far end, which the test holds.
      const int fd = open(port.c_str(), O_RDWR | O_NOCTTY);
      ioctl(fd, TIOCEXCL);
      if (write(out, "x", 1) != 1) _exit(1);
      for (;;) pause();
    }
    char byte = 0;
    if (read(ready[0], &byte, 1) != 1) abort();
    close(ready[0]);
    close(ready[1]);
  }
  Rival(const Rival&) = delete;
  Rival& operator=(const Rival&) = delete;
  ~Rival() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  std::string Named() const {
    return std::string(kRivalName) + " (pid " + std::to_string(pid_) + ")";
  }

 private:
  pid_t pid_;
};

#endif
