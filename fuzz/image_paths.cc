// Names of image files, joined as a plain model joins them. A folder of the target's own stands for
// the directories that exist.
#include <sys/stat.h>

#include <cstring>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/work_file.h"
#include "quillonid/image.h"
#include "quillonid/support.h"

namespace {

constexpr std::size_t kMaxPart = 259;

bool IsDirectory(const std::string& path) {
  if (path.empty()) return false;
  struct stat status = {};
  return path.back() == '/' || (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
}

std::string LowerAscii(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text;
}

struct Made {
  std::string name;
  bool as_it_stands;
};

Made MakeName(const std::string& path, const std::string& suffix, const std::string& name) {
  const std::string ending = suffix.substr(0, kMaxPart);
  if (IsDirectory(path)) return {path + (path.back() == '/' ? "" : "/") + name + ending, false};
  const std::size_t folder = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
  const std::string last = LowerAscii(path.substr(folder));
  if (last == "*.bmp" || last == "*.jpg" || last == "*.png" || last == "*.gif") {
    return {path.substr(0, std::min(folder, kMaxPart)) + name + ending + path.substr(folder + 1),
            false};
  }
  return {path, true};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::string name = input.Text(), suffix = input.Text();
  const int room = input.Between(-1, 1100);
  const bool in_folder = input.Flag();
  const std::string path = (in_folder ? WorkFolder() : "") + input.RestAsText();
  const Exact<char> path_block(path), name_block(name), suffix_block(suffix);
  FUZZ_CHECK(PathIsDirectory(path_block.get()) == (IsDirectory(path) ? 1 : 0));

  const Made made = MakeName(path, suffix, name);
  Guarded dest(made.as_it_stands ? static_cast<std::size_t>(std::max(room, 0))
                                 : made.name.size() + 1);
  GetImgPathEx(path_block.get(), suffix_block.get(), name_block.get(), dest.text(), room);
  if (!made.as_it_stands) {
    FUZZ_CHECK(dest.Text() == made.name);
  } else {
    const std::size_t kept = std::min(dest.size(), made.name.size());
    FUZZ_CHECK(dest.FirstAsText(kept) == made.name.substr(0, kept));
    FUZZ_CHECK(kept == dest.size() || dest.text()[kept] == '\0');
    FUZZ_CHECK(dest.UntouchedFrom(kept + 1));
  }

  Guarded head(QL_IMAGE_PATH_SIZE);
  const std::string given = path.substr(0, QL_IMAGE_PATH_SIZE - 1);
  std::memcpy(head.bytes(), given.c_str(), given.size() + 1);
  FUZZ_CHECK(tFuncSaveHeadImg(name_block.get(), head.text()) == 0);
  FUZZ_CHECK(head.Text() ==
             MakeName(given, "-head.bmp", name).name.substr(0, QL_IMAGE_PATH_SIZE - 1));
  return 0;
}
