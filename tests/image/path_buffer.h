// A path argument that is written back, for tests of what is written.
#ifndef QUILLONID_TESTS_IMAGE_PATH_BUFFER_H
#define QUILLONID_TESTS_IMAGE_PATH_BUFFER_H

#include <string>

#include "quillonid/image.h"

// A path in a buffer of the size that the header asks for, with bytes behind it that must stay.
class PathBuffer {
 public:
  explicit PathBuffer(const std::string& path) : bytes_(path + '\0') {
    bytes_.resize(QL_IMAGE_PATH_SIZE + 4096, '\xEE');
  }
  char* data() { return bytes_.data(); }
  std::string text() const { return bytes_.substr(0, bytes_.find('\0')); }
  bool IsUntouchedBehind(std::size_t size) const {
    return bytes_.find_first_not_of('\xEE', size) == std::string::npos;
  }

 private:
  std::string bytes_;
};

#endif
