#include "tests/testing/own_locale.h"

#include <clocale>
#include <cstdlib>

#include "tests/testing/private_root.h"

bool MakeOwnLocale(const std::string& source, const std::string& charset) {
  const std::string folder = TemporaryFolder();
  const std::string name = source + "." + charset;
  const std::string command = "localedef -c -i " + source + " -f " + charset + " " + folder + "/" +
                              name + " >/dev/null 2>&1";
  // Warnings make it fail: what counts is whether the locale can be set.
  [[maybe_unused]] const int status = std::system(command.c_str());
  setenv("LOCPATH", folder.c_str(), 1);
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const bool made = std::setlocale(LC_ALL, name.c_str()) != nullptr;
  std::setlocale(LC_ALL, before.c_str());
  return made;
}
