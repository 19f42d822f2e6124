// Files at the library's fixed paths, in the private root that the program runs in.
#ifndef QUILLONID_BENCH_FILES_H
#define QUILLONID_BENCH_FILES_H

#include <string>

namespace bench {

inline constexpr char kConfiguration[] = "/home/quillon/QLConfig.ini";
inline constexpr char kLog[] = "/home/quillon/Alg_debug.log";

// False where the machine forbids user namespaces: then /home/quillon is not ours to write to.
bool HaveFolder();

std::string ReadWhole(const char* path);
void WriteWhole(const char* path, const std::string& bytes);

// What the configuration file says. The log starts anew.
enum class Logging { kNoFile, kOff, kOn };
void SetLogging(Logging logging);

// The log without its time stamps.
std::string LogWithoutTimes();

}  // namespace bench

#endif
