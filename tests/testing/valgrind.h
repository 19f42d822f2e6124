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

// From one input of a run that tries everything to the next: each is tried but under Valgrind and,
// with sanitizers, in an emulator, where that takes long.
inline unsigned StepThroughEverything() {
#if defined(QL_EMULATED) && defined(__SANITIZE_ADDRESS__)
  return 37;
#else
  return UnderValgrind() ? 37 : 1;
#endif
}

#endif
