// Includes point down only: each layer knows the layers below it that its row names, and nobody
// else. Read from the include lines of the source tree, so that this stays true.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Layers = std::set<std::string>;

// Layer, those it may include from besides itself.
const std::map<std::string, Layers> kKnown = {
    {"api",       {"reader", "image", "carddata", "link", "support"}                    },
    {"reader",    {"image", "carddata", "link", "support"}                              },
    {"image",     {"carddata", "support"}                                               },
    {"carddata",  {"support"}                                                           },
    {"link",      {"transport", "support"}                                              },
    {"transport", {"support"}                                                           },
    {"support",   {}                                                                    },
    {"simulator", {}                                                                    },
    {"tools",     {"api", "reader", "image", "carddata", "link", "support", "simulator"}},
};

// Published headers that belong to no layer: declarations alone.
const Layers kCommon = {"quillonid/export.h", "quillonid/records.h", "quillonid/results.h"};

// Published headers that are not named as their layer.
const std::map<std::string, std::string> kLayersOfPublished = {
    {"quillonid/quillonid.h", "api"  },
    {"quillonid/images.h",    "image"},
};

// Small headers that may be seen from elsewhere, and by whom; "" is any layer.
const std::multimap<std::string, std::string> kLeaves = {
    {"udev_rules.h",         "tools/qlid/permission.cc"   }, // generated
    {"link/str.h",           ""                           },
    {"link/usb_ids.h",       "tools/qlid/devices.cc"      },
    {"api/published.h",      "tools/qlid/check_reader.cc" },
    {"carddata/layout.h",    "tools/qlid/byte_meanings.cc"},
    {"carddata/layout.h",    "tools/qlid/card_view.cc"    },
    {"reader/native_data.h", "carddata/json.cc"           },
    {"image/photo_block.h",  "carddata/json.cc"           },
};

// "link/packet.cc", "quillonid/link.h" and "include/quillonid/link.h" are of the layer "link".
std::string LayerOf(std::string path) {
  if (path.starts_with("include/")) path.erase(0, 8);
  if (const auto known = kLayersOfPublished.find(path); known != kLayersOfPublished.end()) {
    return known->second;
  }
  if (path.starts_with("quillonid/")) return fs::path(path).stem();
  return path.substr(0, path.find('/'));
}

bool MayInclude(const std::string& file, const std::string& header) {
  const std::string from = LayerOf(file);
  const std::string to = LayerOf(header);
  if (kCommon.contains(header) || from == to) return true;
  // Tools and simulator are applications: of the library they see published headers alone.
  const bool is_library = from != "tools" && from != "simulator";
  for (auto [leaf, end] = kLeaves.equal_range(header); leaf != end; ++leaf) {
    if (leaf->second.empty() ? is_library && from != "support" : leaf->second == file) return true;
  }
  if (!is_library && to != "simulator" && !header.starts_with("quillonid/")) return false;
  return kKnown.contains(from) && kKnown.at(from).contains(to);
}

// The headers a file includes: quoted ones, and those of the project in angle brackets.
std::vector<std::string> Includes(const fs::path& file) {
  static const std::regex line_form(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  std::vector<std::string> headers;
  std::ifstream in(file);
  std::smatch match;
  for (std::string line; std::getline(in, line);) {
    if (!std::regex_search(line, match, line_form)) continue;
    const std::string header = match[2];
    if (match[1] == "\"" || header.starts_with("quillonid/") || kKnown.contains(LayerOf(header))) {
      headers.push_back(header);
    }
  }
  return headers;
}

std::vector<std::string> SourceFiles() {
  const fs::path root = QL_SOURCE_DIR;
  std::vector<std::string> files;
  for (const char* folder : {"api", "reader", "image", "carddata", "link", "transport", "support",
                             "simulator", "tools", "include"}) {
    if (!fs::exists(root / folder)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      const std::string extension = entry.path().extension();
      if (extension == ".h" || extension == ".cc" || extension == ".c" || extension == ".inc") {
        files.push_back(entry.path().lexically_relative(root));
      }
    }
  }
  return files;
}

}  // namespace

TEST(Includes, PointDownOnly) {
  const std::vector<std::string> files = SourceFiles();
  ASSERT_TRUE(std::find(files.begin(), files.end(), "support/log.cc") != files.end());
  std::size_t headers = 0;

  for (const std::string& file : files) {
    for (const std::string& header : Includes(fs::path(QL_SOURCE_DIR) / file)) {
      EXPECT_TRUE(MayInclude(file, header)) << file << " includes \"" << header << '"';
      ++headers;
    }
  }

  EXPECT_GT(headers, files.size());
}

TEST(Includes, AreJudgedByTheRule) {
  EXPECT_TRUE(MayInclude("api/read.cc", "reader/native_data.h"));
  EXPECT_TRUE(MayInclude("api/read.cc", "quillonid/link.h"));
  EXPECT_FALSE(MayInclude("api/read.cc", "quillonid/transport.h"));
  EXPECT_FALSE(MayInclude("reader/read_cycle.cc", "quillonid/quillonid.h"));
  EXPECT_FALSE(MayInclude("image/photo.cc", "reader/native_data.h"));
  EXPECT_FALSE(MayInclude("image/photo.cc", "quillonid/reader.h"));
  EXPECT_TRUE(MayInclude("link/str.cc", "support/hex_text.h"));
  EXPECT_TRUE(MayInclude("include/quillonid/link.h", "quillonid/transport.h"));
  EXPECT_FALSE(MayInclude("include/quillonid/transport.h", "quillonid/link.h"));
  EXPECT_FALSE(MayInclude("include/quillonid/records.h", "quillonid/carddata.h"));
  EXPECT_FALSE(MayInclude("transport/serial.cc", "link/packet.h"));
  EXPECT_TRUE(MayInclude("transport/serial.cc", "link/str.h"));
  EXPECT_FALSE(MayInclude("support/log.cc", "link/str.h"));
  EXPECT_FALSE(MayInclude("support/log.cc", "quillonid/link.h"));
  EXPECT_TRUE(MayInclude("support/log.cc", "quillonid/support.h"));
  EXPECT_TRUE(MayInclude("carddata/json.cc", "image/photo_block.h"));
  EXPECT_FALSE(MayInclude("carddata/nation.cc", "image/photo_block.h"));
  EXPECT_FALSE(MayInclude("link/packet.cc", "tests/testing/hex_text.h"));
  EXPECT_FALSE(MayInclude("link/packet.cc", "simulator/card.h"));
  EXPECT_FALSE(MayInclude("link/packet.cc", "packet.h"));
  EXPECT_TRUE(MayInclude("tools/qlid/main.cc", "simulator/card.h"));
  EXPECT_TRUE(MayInclude("tools/qlid/main.cc", "quillonid/link.h"));
  EXPECT_FALSE(MayInclude("tools/qlid/main.cc", "link/str.h"));
  EXPECT_FALSE(MayInclude("tools/qlid/main.cc", "link/usb_ids.h"));
  EXPECT_TRUE(MayInclude("tools/qlid/devices.cc", "link/usb_ids.h"));
  EXPECT_FALSE(MayInclude("simulator/card.cc", "quillonid/carddata.h"));
}
