#include "tests/transport/terminal_child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support/handles.h"

Child::Child(int standard_output, const std::function<std::string()>& program) {
  int ends[2] = {-1, -1};
  EXPECT_EQ(0, pipe(ends));
  std::fflush(stdout);  // What stands in the buffer would go out to the terminal as well.
  pid_ = fork();
  if (pid_ == 0) {
    close(ends[0]);
    close(STDOUT_FILENO);
    if (standard_output >= 0) {
      dup2(standard_output, STDOUT_FILENO);
      close(standard_output);
    }
    const std::string text = program();
    const ssize_t put = write(ends[1], text.data(), text.size());
    std::exit(put == static_cast<ssize_t>(text.size()) ? 0 : 1);  // _exit() writes no coverage.
  }
  close(ends[1]);
  results_ = ends[0];
}

Child::~Child() { Output(); }

std::string Child::Output() {
  if (results_ < 0) return "";
  std::string output;
  char bytes[256];
  for (ssize_t got = 0; (got = read(results_, bytes, sizeof bytes)) > 0;) {
    output.append(bytes, static_cast<std::size_t>(got));
  }
  close(results_);
  results_ = -1;
  int status = 0;
  EXPECT_EQ(pid_, waitpid(pid_, &status, 0));
  EXPECT_EQ(0, status);
  return output;
}

Child ChildOn(const Pty& terminal, const std::function<std::string()>& program) {
  const Descriptor fd(open(terminal.path().c_str(), O_RDWR | O_NOCTTY));
  EXPECT_LE(0, fd.get());
  return Child(fd.get(), program);
}
