// A pseudo-terminal whose other end the test plays: the library opens path(), the test sends and
// receives at the master.
#ifndef QUILLONID_TESTS_TESTING_PTY_H
#define QUILLONID_TESTS_TESTING_PTY_H

#include <termios.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class Pty {
 public:
  // Ignores SIGHUP: the library opens ttys without O_NOCTTY, so that this one may become the
  // controlling terminal of a test that leads a session.
  Pty();
  Pty(const Pty&) = delete;
  Pty& operator=(const Pty&) = delete;
  ~Pty();

  const std::string& path() const { return path_; }
  int master() const { return master_; }

  void Send(std::string_view bytes) const;
  // Waits for `size` bytes; fewer when the other end is closed or nothing comes for 20 s.
  std::string Receive(std::size_t size) const;
  // Everything up to the moment when nobody has the tty open any more.
  std::string ReceiveRest() const;

  // Line settings as the tty's programs see them; they last as long as the Pty.
  termios Settings() const;
  void SetSettings(const termios& settings) const;

  // Closes the master, as a pulled plug does.
  void HangUp();

 private:
  int master_;
  std::string path_;
};

// This process's descriptors on the file at `path`.
std::vector<int> DescriptorsOn(const std::string& path);

#endif
