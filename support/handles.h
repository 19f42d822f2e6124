// Owners for what a function opens or allocates, so that every early return closes and frees it.
// Guards stay inside functions; where the moment of closing shows, call reset() there.
#ifndef QUILLONID_SUPPORT_HANDLES_H
#define QUILLONID_SUPPORT_HANDLES_H

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using DirectoryPtr = std::unique_ptr<DIR, CloseDirectory>;

struct CloseLibrary {
  void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

struct FreeHeap {
  void operator()(void* block) const { std::free(block); }
};
using HeapBytes = std::unique_ptr<unsigned char[], FreeHeap>;

// A zeroed block of `size` bytes, or null.
inline HeapBytes ZeroedHeap(std::size_t size) {
  return HeapBytes(static_cast<unsigned char*>(std::calloc(size ? size : 1, 1)));
}

// A file descriptor; -1 owns nothing.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

  // Closes now. False when that fails: a disk may report a lost write only here.
  bool Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd >= 0 && close(fd) == 0;
  }

 private:
  int fd_;
};

#endif
