// A pseudo-terminal as a reader's line: the reader works on the master, the host opens the path.
#ifndef QUILLONID_SIMULATOR_PSEUDO_TERMINAL_H
#define QUILLONID_SIMULATOR_PSEUDO_TERMINAL_H

#include <string>

namespace simulator {

// A file descriptor, closed with the object.
class Descriptor {
 public:
  // Throws std::system_error, with errno and `what`, when `value` is negative.
  Descriptor(int value, const char* what);
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  int get() const { return value_; }
  void Close();  // -1 from then on

 private:
  int value_;
};

// The line is raw from the start, 9,600 bit/s, and the master never blocks.
class PseudoTerminal {
 public:
  PseudoTerminal();  // throws std::system_error

  const std::string& path() const { return path_; }
  int master() const { return master_.get(); }
  int host_side() const { return keeper_.get(); }
  void HangUp();  // closes both: the host sees the line go

 private:
  Descriptor master_;
  std::string path_;
  // Holds the host's side open, or the master would see a hang-up at each of the host's closes.
  Descriptor keeper_;
};

}  // namespace simulator

#endif
