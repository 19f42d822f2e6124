// Lines of the log as LogLines() returns them.
#ifndef QUILLONID_TESTS_USB_LOG_TEXT_H
#define QUILLONID_TESTS_USB_LOG_TEXT_H

#include <string>
#include <vector>

#include "tests/testing/hex_text.h"

inline std::string Info(const std::string& message) {
  return "  TIME  INFO:    CommDev:  " + message;
}

// The area name does not cover the type's text, whose tail stays.
inline std::string Error(const std::string& message) {
  return "  TIME  !!ERROR:     CommDev:     " + message;
}

inline std::string Dump(const std::string& title, const std::vector<unsigned char>& bytes) {
  std::string digits;
  for (const char c : HexText(bytes)) {
    if (c != ' ') digits += c;
  }
  return " TIME  " + title + "  LEN=" + std::to_string(bytes.size()) + "   HEX: " + digits;
}

#endif
