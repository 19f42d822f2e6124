// Files that the tool reads and writes. They hold personal data: written whole or not at all,
// readable by their owner alone.
#ifndef QUILLONID_TOOLS_QLID_FILES_H
#define QUILLONID_TOOLS_QLID_FILES_H

#include <cstdint>
#include <string>
#include <vector>

namespace qlid {

// What an errno value means, in the chosen language.
std::string SystemProblem(int error);

// Reads a file of at most `limit` bytes; "-" is standard input. False with the reason in `problem`.
bool ReadFile(const std::string& path, std::size_t limit, std::vector<std::uint8_t>* bytes,
              std::string* problem);

// Writes through a temporary name beside the target, mode 0600. "-" is standard output.
bool WriteFile(const std::string& path, const std::vector<std::uint8_t>& bytes,
               std::string* problem);

// Whether WriteFile is likely to succeed; else false, with the reason in `problem`.
bool CanBeWritten(const std::string& path, std::string* problem);

// An empty file of a name of its own, mode 0600, removed with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& beside);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();
  const std::string& path() const { return path_; }  // empty when none could be made
  int Release();                                     // the descriptor is the caller's

 private:
  std::string path_;
  int fd_;
};

}  // namespace qlid

#endif
