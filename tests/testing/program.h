// A program run as a person or a script would: with pipes or on a pseudo-terminal, and signals.
#ifndef QUILLONID_TESTS_TESTING_PROGRAM_H
#define QUILLONID_TESTS_TESTING_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

struct Output {
  int exit = -1;  // exit status, or 128 + signal
  std::string out;
  std::string err;
};

class Program {
 public:
  // Starts a program of this build with its arguments, words[0] being its path. `environment`
  // entries are "NAME=value". With `terminal` standard error is a pseudo-terminal, with `keyboard`
  // too standard input and output, and it is the program's controlling one. Standard input is
  // what is given to `Type`; it stays open until `EndInput`.
  // With `service` it leads a session and has no terminal.
  explicit Program(std::vector<std::string> words, const std::vector<std::string>& environment = {},
                   bool terminal = false, bool keyboard = false, bool service = false);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program();

  void Signal(int number) const;
  pid_t pid() const { return pid_; }

  // The other end of its standard input. With `keyboard` that of its terminal, for the terminal's
  // settings and size.
  int terminal() const { return in_; }

  // Writes to its standard input.
  void Type(const std::string& text) const;

  // With `keyboard`: takes its terminal away, as when a window is closed.
  void CloseTerminal();

  // Ends its standard input.
  void EndInput();

  // Waits until standard output or standard error holds `text`, so many times; false when 20 s pass
  // or the program ends first.
  bool WaitFor(const std::string& text, std::size_t times = 1);

  // What it has written so far.
  const std::string& out() const { return output_.out; }
  const std::string& err() const { return output_.err; }

  // Waits for the end.
  Output Finish();

 private:
  bool Pump(int milliseconds);  // false when both ends are closed

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  int err_ = -1;
  Output output_;
};

// Runs a program to its end.
Output RunProgram(std::vector<std::string> words, const std::vector<std::string>& environment = {});

// Standard output of a command line that a shell of the machine runs; its wait status where asked.
std::string OutputOf(const std::string& command, int* status = nullptr);

#endif
