// Lists in environment variables, as a program that is started sees them.
#ifndef QUILLONID_SIMULATOR_ENVIRONMENT_H
#define QUILLONID_SIMULATOR_ENVIRONMENT_H

#include <string>

namespace simulator {

// The value of this process's variable with one more entry behind a colon.
std::string Extended(const char* variable, const std::string& more);

// Sets this process's variable to that.
void Extend(const char* variable, const std::string& more);

}  // namespace simulator

#endif
