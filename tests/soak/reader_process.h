// The simulated reader in a process of its own, so that what it allocates and which threads it has
// do not show in the process that reads.
#ifndef QUILLONID_TESTS_SOAK_READER_PROCESS_H
#define QUILLONID_TESTS_SOAK_READER_PROCESS_H

#include <sys/types.h>

#include <string>

class ReaderProcess {
 public:
  // Forks: to be made before the program has threads.
  ReaderProcess();
  ReaderProcess(const ReaderProcess&) = delete;
  ReaderProcess& operator=(const ReaderProcess&) = delete;
  ~ReaderProcess();

  // Plugs a reader in place of the one before, with the specimen's card on it and this fault (""
  // for none). Returns its device path.
  std::string Prepare(const std::string& specimen, bool fingerprints, const std::string& fault);

 private:
  pid_t pid_ = -1;
  int line_ = -1;
};

#endif
