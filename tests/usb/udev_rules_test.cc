#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Rules() {
  std::ifstream file(QL_UDEV_RULES_FILE);
  std::vector<std::string> rules;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') rules.push_back(line);
  }
  return rules;
}

struct Reader {
  const char *vendor, *product;
};

// The readers that are known by their ids; udev writes ids in lower case.
constexpr Reader kReaders[] = {
    {"0403", "bcd5"},
    {"0403", "bcd7"},
    {"0403", "bc95"},
    {"2b46", "be11"},
    {"2b46", "be01"},
    {"2b46", "bc01"}
};

TEST(UdevRules, OpenEveryKnownReaderToItsUsersAndNobodyElse) {
  std::vector<std::string> expected;
  for (const Reader& reader : kReaders) {
    expected.push_back(std::string("SUBSYSTEM==\"usb\", ENV{DEVTYPE}==\"usb_device\", ") +
                       "ATTR{idVendor}==\"" + reader.vendor + "\", ATTR{idProduct}==\"" +
                       reader.product + "\", MODE=\"0660\", GROUP=\"plugdev\", TAG+=\"uaccess\", " +
                       "ENV{ID_MM_DEVICE_IGNORE}=\"1\"");
  }

  EXPECT_EQ(expected, Rules());
}

}  // namespace
