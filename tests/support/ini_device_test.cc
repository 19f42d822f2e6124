// A configuration that is a character device with a short text: no device gives one at will, so the
// library is told that a file is one.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "quillonid/support.h"
#include "tests/testing/private_root.h"

namespace {

mode_t s_type;  // of every file that is open, or 0: its own

}  // namespace

extern "C" int fstat(int fd, struct stat* status) noexcept {
  static const auto real = reinterpret_cast<decltype(fstat)*>(dlsym(RTLD_NEXT, "fstat"));
  const int result = real(fd, status);
  if (result == 0 && s_type != 0) status->st_mode = s_type | (status->st_mode & ~mode_t{S_IFMT});
  return result;
}

TEST(GetIniKeyString, TakesNothingFromADeviceHoweverShortItsText) {
  const std::string path = TemporaryFolder() + "/device.ini";
  WriteWholeFile(path, "[A]\nkey=1\n");

  s_type = S_IFCHR;
  const std::string of_device = GetIniKeyString("A", "key", "default", path.c_str());
  s_type = 0;

  EXPECT_EQ("default", of_device);
  EXPECT_STREQ("1", GetIniKeyString("A", "key", "default", path.c_str()));
}

TEST(IsWriteLog, IsOffForADeviceHoweverShortItsText) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  s_type = S_IFCHR;
  const int of_device = isWriteLog();
  s_type = 0;

  EXPECT_EQ(0, of_device);
  EXPECT_EQ(1, isWriteLog());
}
