// Files at the library's fixed paths, in the private root that every test program runs in.
#ifndef QUILLONID_TESTS_TESTING_PRIVATE_ROOT_H
#define QUILLONID_TESTS_TESTING_PRIVATE_ROOT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

bool HavePrivateRoot();

// First line of a test that touches /home/quillon or /libwlt.so.
#define NEEDS_PRIVATE_ROOT() \
  if (!HavePrivateRoot()) GTEST_SKIP() << "no private root: this machine forbids user namespaces"

inline constexpr char kConfigurationFile[] = "/home/quillon/QLConfig.ini";
inline constexpr char kLogFile[] = "/home/quillon/Alg_debug.log";
inline constexpr char kDecoderFile[] = "/libwlt.so";

void WriteWholeFile(const std::string& path, const std::string& text);
// The file's bytes; empty when there is none.
std::string ReadWholeFile(const std::string& path);
bool FileExists(const std::string& path);

// Logging on or off through the configuration file; the log file is removed.
void SwitchLogging(bool on);

// The log's lines, each without its "\r\n" and with the 13-digit time stamp replaced by "TIME".
std::vector<std::string> LogLines();

// A folder of the test's own under /tmp, removed with all in it at the end of the test program.
std::string TemporaryFolder();

#endif
