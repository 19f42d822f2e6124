// Signals that come all the time.
#ifndef QUILLONID_TESTS_TESTING_SIGNALS_H
#define QUILLONID_TESTS_TESTING_SIGNALS_H

// While it lives: a hundred a second, none of which lets a system call go on.
class Signals {
 public:
  Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  int count() const;
};

// For the calling thread, and those that it makes meanwhile.
void BlockSignals();
void UnblockSignals();

#endif
