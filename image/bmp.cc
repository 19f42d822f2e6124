// Uncompressed 24-bit BMP files, put together in memory and written at once.
#include <fcntl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "quillonid/image.h"
#include "support/byte_shuffle.h"
#include "support/files.h"
#include "support/handles.h"
#include "support/log.h"

namespace {

constexpr std::uint32_t kPixelSize = 3;
constexpr std::uint32_t kInfoHeaderSize = 40;
constexpr std::uint32_t kHeadersSize = 14 + kInfoHeaderSize;
constexpr std::uint64_t kMaxFileSize = UINT32_MAX;  // what the header can say

// On purpose: two bytes after each row whatever the width, and not zeros.
constexpr std::array<unsigned char, 2> kRowFiller = {0x96, 0x08};

struct PixelRows {
  std::uint64_t count;
  std::uint64_t size;  // bytes without the filler

  std::uint64_t FileSize() const { return kHeadersSize + count * (size + kRowFiller.size()); }
};

std::uint64_t Magnitude(int value) { return static_cast<std::uint64_t>(std::abs(long{value})); }

// No rows when the product of the sides is not positive.
PixelRows RowsOf(int width, int height) {
  if (std::int64_t{width} * height <= 0) return {0, 0};
  return {Magnitude(height), Magnitude(width) * kPixelSize};
}

using Headers = std::array<unsigned char, kHeadersSize>;

void PutLittleEndian(Headers& headers, std::size_t at, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) headers[at++] = static_cast<unsigned char>(value >> 8 * i);
}

Headers MakeHeaders(int width, int height) {
  const auto columns = static_cast<std::uint32_t>(width);
  const auto rows = static_cast<std::uint32_t>(height);
  Headers headers{};
  PutLittleEndian(headers, 0, 'B' | 'M' << 8, 2);
  PutLittleEndian(headers, 2, rows * 2 + kHeadersSize + columns * rows * kPixelSize, 4);
  PutLittleEndian(headers, 10, kHeadersSize, 4);  // where the pixels begin
  PutLittleEndian(headers, 14, kInfoHeaderSize, 4);
  PutLittleEndian(headers, 18, columns, 4);
  PutLittleEndian(headers, 22, rows, 4);
  PutLittleEndian(headers, 26, 1, 2);   // planes
  PutLittleEndian(headers, 28, 24, 2);  // bits per pixel
  return headers;
}

// Five pixels at a time, with one byte beyond them that the next pixel is written over: so the last
// pixel is always left. Returns the pixels taken.
QL_BYTE_SHUFFLE std::int64_t ExchangeFives(const unsigned char* src, std::int64_t pixels,
                                           unsigned char* dst) {
  constexpr Table16 kOrder = {2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15};
  constexpr std::ptrdiff_t kAtOnce = 5;  // pixels
  const Bytes16 order = Load16(kOrder);
  std::int64_t taken = 0;
  for (; pixels - taken > kAtOnce;
       taken += kAtOnce, src += kAtOnce * kPixelSize, dst += kAtOnce * kPixelSize) {
    Store16(LookUp(Load16(src), order), dst);
  }
  return taken;
}

// Exchanges red and blue; `in_fives` where the processor can and the blocks lie apart.
void Exchange(const unsigned char* src, std::int64_t pixels, unsigned char* dst, bool in_fives) {
  const std::int64_t taken = in_fives ? ExchangeFives(src, pixels, dst) : 0;
  src += taken * kPixelSize;
  dst += taken * kPixelSize;
  for (std::int64_t i = taken; i < pixels; ++i, src += kPixelSize, dst += kPixelSize) {
    dst[0] = src[2];
    dst[1] = src[1];
    dst[2] = src[0];
  }
}

// Room for a whole file. A portrait's lies on the stack: the heap gives a block of that size back
// to the system and gets it again for every picture, which takes as long as writing it.
class FileBytes {
 public:
  // Null when there is no memory for `size` bytes, or no file may have as many.
  unsigned char* Get(std::uint64_t size) {
    if (size <= sizeof portrait_) return portrait_;
    if (size <= kMaxFileSize) heap_.reset(static_cast<unsigned char*>(std::malloc(size)));
    return heap_.get();
  }

 private:
  unsigned char portrait_[40 * 1024];
  HeapBytes heap_;
};

void PutFile(const Headers& headers, const PixelRows& rows, const unsigned char* pixels,
             unsigned char* out) {
  const auto row_pixels = static_cast<std::int64_t>(rows.size / kPixelSize);
  const bool in_fives = HasByteShuffle();
  std::memcpy(out, headers.data(), headers.size());
  out += headers.size();
  for (std::uint64_t row = 0; row < rows.count; ++row) {
    Exchange(pixels, row_pixels, out, in_fives);
    pixels += rows.size;
    out += rows.size;
    std::memcpy(out, kRowFiller.data(), kRowFiller.size());
    out += kRowFiller.size();
  }
}

}  // namespace

void Convert2RGBData(const unsigned char* src, int width, int height, unsigned char* dst) {
  const std::int64_t pixels = static_cast<std::int64_t>(width) * height;
  // In overlapping blocks the order of reading and writing shows.
  const auto size = static_cast<std::uint64_t>(pixels) * kPixelSize;  // may pass a signed one
  const auto from = reinterpret_cast<std::uintptr_t>(src);
  const auto to = reinterpret_cast<std::uintptr_t>(dst);
  const bool apart = pixels <= 0 || (from < to ? to - from : from - to) >= size;
  Exchange(src, pixels, dst, apart && HasByteShuffle());
}

int SaveBmp(const char* path, const unsigned char* pixels, int width, int height) {
  LOG_API("[%s] Start  %s ", __func__, PrintableText(path));
  const Headers headers = MakeHeaders(width, height);
  LOG_API("open Start ");
  Descriptor bmp(path == nullptr || pixels == nullptr ? -1 : open(path, kWritingOver, 0666));
  LOG_API("SaveBmp :szBmpFile is:%s\n", PrintableText(path));
  if (!bmp) return 0;

  const PixelRows rows = RowsOf(width, height);
  FileBytes room;  // Not cleared: PutFile() fills what is written.
  unsigned char* const file = room.Get(rows.FileSize());
  if (file == nullptr) {
    LOG_API("malloc  pRGBData : error");
    ReplaceContent(bmp.get(), headers.data(), headers.size());
    return 0;
  }
  PutFile(headers, rows, pixels, file);
  const bool written = ReplaceContent(bmp.get(), file, rows.FileSize());
  LOG_API("SaveBmp : close the fp");
  const bool closed = bmp.Close();
  LOG_API("#############1[%s] End ", __func__);
  return written && closed ? 1 : 0;
}
