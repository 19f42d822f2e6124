#include "tools/qlid/picture.h"

#include <png.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "quillonid/carddata.h"
#include "quillonid/image.h"
#include "quillonid/results.h"
#include "tools/qlid/files.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::size_t kBmpHeaders = 54;
constexpr int kLargestSide = 4096;

std::uint32_t Little32(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
  return bytes[offset] | static_cast<std::uint32_t>(bytes[offset + 1]) << 8 |
         static_cast<std::uint32_t>(bytes[offset + 2]) << 16 |
         static_cast<std::uint32_t>(bytes[offset + 3]) << 24;
}

using Color = std::array<int, 3>;

// Mean colour of the pixels that fall into one cell of a coarser grid.
Color CellColor(const Picture& picture, int column, int columns, int row, int rows) {
  const int left = column * picture.width / columns;
  const int right = std::max(left + 1, (column + 1) * picture.width / columns);
  const int top = row * picture.height / rows;
  const int bottom = std::max(top + 1, (row + 1) * picture.height / rows);
  Color sum = {};
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      for (std::size_t i = 0; i < 3; ++i) {
        sum[i] += picture.rgb[3 * static_cast<std::size_t>(y * picture.width + x) + i];
      }
    }
  }
  const int pixels = (right - left) * (bottom - top);
  return {sum[0] / pixels, sum[1] / pixels, sum[2] / pixels};
}

}  // namespace

bool ReadBmp(const std::vector<std::uint8_t>& file, Picture* picture) {
  if (file.size() < kBmpHeaders || file[0] != 'B' || file[1] != 'M' || file[28] != 24) return false;
  const std::uint32_t offset = Little32(file, 10);
  const std::uint32_t width = Little32(file, 18);
  const std::uint32_t height = Little32(file, 22);
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) return false;
  const std::size_t row_size = (3 * std::size_t{width} + 3) / 4 * 4;
  if (offset > file.size() || file.size() - offset < row_size * height) return false;
  picture->width = static_cast<int>(width);
  picture->height = static_cast<int>(height);
  picture->rgb.resize(3 * std::size_t{width} * height);
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* row = file.data() + offset + (height - 1 - y) * row_size;
    for (std::size_t x = 0; x < width; ++x) {
      for (std::size_t i = 0; i < 3; ++i)
        picture->rgb[3 * (y * width + x) + i] = row[3 * x + 2 - i];
    }
  }
  return true;
}

std::vector<std::uint8_t> EncodePng(const Picture& picture) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = 0;
  if (!png_image_write_to_memory(&image, nullptr, &size, 0, picture.rgb.data(), 0, nullptr))
    return {};
  std::vector<std::uint8_t> file(size);
  if (!png_image_write_to_memory(&image, file.data(), &size, 0, picture.rgb.data(), 0, nullptr))
    return {};
  file.resize(size);
  return file;
}

std::string HalfBlocks(const Picture& picture, int columns) {
  columns = std::clamp(columns, 1, picture.width);
  // A character cell is about twice as high as wide, so one half block is about square.
  const int lines = std::max(1, (picture.height * columns / picture.width + 1) / 2);
  std::string text;
  for (int line = 0; line < lines; ++line) {
    for (int column = 0; column < columns; ++column) {
      const Color upper = CellColor(picture, column, columns, 2 * line, 2 * lines);
      const Color lower = CellColor(picture, column, columns, 2 * line + 1, 2 * lines);
      text += Format("\x1b[38;2;%d;%d;%d;48;2;%d;%d;%dm\u2580", upper[0], upper[1], upper[2],
                     lower[0], lower[1], lower[2]);
    }
    text += "\x1b[0m\n";
  }
  return text;
}

int DecodePhoto(const std::vector<std::uint8_t>& native, bool fingerprints_asked,
                const std::string& decoder, std::vector<std::uint8_t>* bmp) {
  unsigned char data[QL_NATIVE_DATA_SIZE] = {};
  std::copy_n(native.begin(), std::min(native.size(), sizeof data), data);
  unsigned char block[QL_PHOTO_BLOCK_SIZE] = {};
  int published = 0;
  if (tFunc_GetPhotoData(fingerprints_asked ? 1 : 0, data, block) < 0) {
    TY_Id_ConvertErr(RET_BUSI_ID_PHOTO_LEN_ERR, &published);
    return published;
  }
  // The decoder's result goes to a file of the library's; the caller's file is then written whole.
  const TemporaryFile file("/tmp/qlid-photo");
  std::string problem;
  if (file.path().empty() || GetPhotoBmp(decoder.c_str(), block, file.path().c_str()) == 0 ||
      !ReadFile(file.path(), 1 << 20, bmp, &problem)) {
    TY_Id_ConvertErr(RET_BUSI_ID_PHOTO_DECODE_ERR, &published);
    return published;
  }
  return QL_SUCCESS;
}

bool IsPngName(const std::string& path) {
  return path.size() > 4 && strcasecmp(path.c_str() + path.size() - 4, ".png") == 0;
}

bool IsPictureName(const std::string& path) {
  return IsPngName(path) ||
         (path.size() > 4 && strcasecmp(path.c_str() + path.size() - 4, ".bmp") == 0);
}

}  // namespace qlid
