// Names of image files.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "quillonid/image.h"
#include "quillonid/results.h"
#include "quillonid/support.h"
#include "support/log.h"

namespace {

// Longest suffix, and longest folder of a pattern.
constexpr std::size_t kMaxPart = 259;

constexpr char kPatterns[][6] = {"*.bmp", "*.jpg", "*.png", "*.gif"};

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsPattern(std::string_view component) {
  const auto same = [](char a, char b) { return LowerAscii(a) == b; };
  return std::any_of(std::begin(kPatterns), std::end(kPatterns), [&](std::string_view pattern) {
    return std::equal(component.begin(), component.end(), pattern.begin(), pattern.end(), same);
  });
}

std::string_view First(std::string_view text, std::size_t most) {
  return {text.data(), std::min(text.size(), most)};
}

// A file name in parts, to be joined. The parts look into the texts that it is made from.
struct ImagePath {
  std::array<std::string_view, 4> parts;
  bool made;  // false: the caller's path as it stands, in the first part
};

ImagePath MakeImagePath(const char* path, const char* suffix, std::string_view name) {
  const std::string_view whole = path;
  const std::string_view ending = First(suffix != nullptr ? suffix : "", kMaxPart);
  if (PathIsDirectory(path) != 0) {
    const std::string_view separator = whole.ends_with('/') ? "" : "/";
    return {
        .parts = {whole, separator, name, ending},
          .made = true
    };
  }

  const std::size_t folder_size = whole.rfind('/') + 1;  // 0 when there is none
  const std::string_view component = path + folder_size;
  if (!IsPattern(component)) return {.parts = {whole}, .made = false};
  // On purpose: the pattern's extension stands behind the suffix, which may have one of its own.
  const std::string_view extension = path + folder_size + 1;
  const std::string_view folder = First(First(whole, folder_size), kMaxPart);
  return {
      .parts = {folder, name, ending, extension},
        .made = true
  };
}

// Copies at most `room` characters of the joined parts and returns how many.
std::size_t Join(const ImagePath& path, char* dst, std::size_t room) {
  std::size_t length = 0;
  for (const std::string_view whole : path.parts) {
    const std::string_view part = First(whole, room - length);
    if (!part.empty()) std::memcpy(dst + length, part.data(), part.size());
    length += part.size();
  }
  return length;
}

}  // namespace

void GetImgPathEx(const char* path, const char* suffix, const char* name, char* dst, int len) {
  if (path == nullptr || dst == nullptr) return;
  const ImagePath made = MakeImagePath(path, suffix, name != nullptr ? name : "");
  if (made.made) {
    dst[Join(made, dst, SIZE_MAX)] = '\0';  // On purpose: `len` does not limit a made name.
  } else if (len > 0) {
    const auto room = static_cast<std::size_t>(len);
    const std::size_t length = Join(made, dst, room);
    if (length < room) dst[length] = '\0';
  }
}

int SaveBmpToImg(const char* /*bmpFile*/, const char* /*imgFile*/) { return 1; }

int tFuncSaveHeadImg(const char* szHeadName, char* szHeadImg) {
  LOG_API("[%s] Start szHeadName = %s ", __func__, PrintableText(szHeadName));
  LOG_API("szHeadImg = %s", PrintableText(szHeadImg));
  if (szHeadImg == nullptr) return RET_PUB_SUCCESS;

  // The caller's buffer has the same size: a name that is too long for it is cut.
  char name[QL_IMAGE_PATH_SIZE];
  const ImagePath made =
      MakeImagePath(szHeadImg, "-head.bmp", szHeadName != nullptr ? szHeadName : "");
  const std::size_t length = Join(made, name, sizeof name - 1);
  name[length] = '\0';
  if (SaveBmpToImg(szHeadImg, name) == 0) return RET_BUSI_ID_SAVE_IMAGE_ERR;
  // A name that stays may lie in memory that cannot be written.
  if (std::strcmp(szHeadImg, name) != 0) std::memcpy(szHeadImg, name, length + 1);
  return RET_PUB_SUCCESS;
}
