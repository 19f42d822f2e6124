// The C library's converter, to hold the library's tables against.
#ifndef QUILLONID_TESTS_CARDDATA_ICONV_TEXT_H
#define QUILLONID_TESTS_CARDDATA_ICONV_TEXT_H

#include <iconv.h>

#include <optional>
#include <stdexcept>
#include <string>

class Iconv {
 public:
  Iconv(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {
    if (!IsOpen()) throw std::runtime_error("iconv_open");
  }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;
  ~Iconv() { iconv_close(descriptor_); }

  // Nothing for a text that is not valid or cannot be converted exactly.
  std::optional<std::string> operator()(std::string text) const {
    std::string out(4 * text.size() + 4, '\0');
    char* source = text.data();
    char* dest = out.data();
    std::size_t left = text.size();
    std::size_t room = out.size();
    iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(descriptor_, &source, &left, &dest, &room) != 0) return std::nullopt;
    out.resize(out.size() - room);
    return out;
  }

 private:
  // The failure is minus one made a pointer.
  bool IsOpen() const { return reinterpret_cast<std::intptr_t>(descriptor_) != -1; }

  iconv_t descriptor_;
};

#endif
