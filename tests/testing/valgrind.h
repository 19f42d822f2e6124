// Whether the program runs where everything takes twenty to fifty times as long.
#ifndef QUILLONID_TESTS_TESTING_VALGRIND_H
#define QUILLONID_TESTS_TESTING_VALGRIND_H

#include <cstdlib>
#include <string_view>

inline bool UnderValgrind() {
  const char* const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::string_view(preloaded).find("vgpreload") != std::string::npos;
}

inline bool RunsSlowly() {
#ifdef QL_EMULATED
  return true;
#else
  return UnderValgrind();
#endif
}

#endif
