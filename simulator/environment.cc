#include "simulator/environment.h"

#include <cstdlib>

namespace simulator {

std::string Extended(const char* variable, const std::string& more) {
  const char* before = std::getenv(variable);
  return before && *before ? std::string(before) + ":" + more : more;
}

void Extend(const char* variable, const std::string& more) {
  setenv(variable, Extended(variable, more).c_str(), 1);
}

}  // namespace simulator
