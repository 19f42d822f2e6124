// The photo block cut out of native data, and BMP files against the layout of the format.
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/work_file.h"
#include "quillonid/image.h"

namespace {

constexpr std::size_t kNativeSize = 4096;

void PutNumber(std::uint32_t value, int size, Bytes* out) {
  for (int i = 0; i < size; ++i, value /= 256)
    out->push_back(static_cast<std::uint8_t>(value % 256));
}

// The file of a picture; one without area has headers alone.
Bytes MakeBmp(const Bytes& pixels, int width, int height) {
  const auto columns = static_cast<std::uint32_t>(width);
  const auto rows = static_cast<std::uint32_t>(height);
  Bytes file = {'B', 'M'};
  // In 32 bits, as the header's field has them.
  const std::uint64_t pixel_bytes = std::uint64_t{columns} * rows * 3 + std::uint64_t{rows} * 2;
  PutNumber(static_cast<std::uint32_t>((pixel_bytes + 54) & 0xFFFFFFFF), 4, &file);
  PutNumber(0, 4, &file);
  PutNumber(54, 4, &file);
  PutNumber(40, 4, &file);
  PutNumber(columns, 4, &file);
  PutNumber(rows, 4, &file);
  PutNumber(1, 2, &file);
  PutNumber(24, 2, &file);
  for (int i = 0; i < 6; ++i) PutNumber(0, 4, &file);
  const std::size_t row = static_cast<std::size_t>(std::abs(width)) * 3;
  for (std::size_t at = 0; at < pixels.size(); at += 3) {
    file.insert(file.end(), {pixels[at + 2], pixels[at + 1], pixels[at]});
    if ((at + 3) % row == 0) file.insert(file.end(), {0x96, 0x08});
  }
  return file;
}

// `size` bytes that repeat the pattern.
Bytes Fill(const Bytes& pattern, std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size && !pattern.empty(); ++i) bytes[i] = pattern[i % pattern.size()];
  return bytes;
}

void CutPhoto(Input& input) {
  const int mode = input.Between(-1, 3);
  const Bytes lengths = input.Take(4);
  Bytes native = Fill(input.Rest(), kNativeSize);
  std::copy(lengths.begin(), lengths.end(), native.begin() + 10);
  const Exact<unsigned char> block(native);
  Guarded photo(QL_PHOTO_BLOCK_SIZE);

  const int result = tFunc_GetPhotoData(mode, block.get(), photo.bytes());

  const std::size_t at = (mode == 1 ? 16U : 14U) + native[10] * 256U + native[11];
  const bool there = native[12] * 256 + native[13] == 1024 && at + 1024 <= kNativeSize;
  FUZZ_CHECK(result == (there ? 1024 : -2));
  if (there) {
    FUZZ_CHECK(std::equal(photo.bytes(), photo.bytes() + 1024, native.data() + at));
  } else {
    FUZZ_CHECK(photo.UntouchedFrom(0));
  }
  // There is no decoder in the private root.
  if (!HavePrivateRoot()) return;
  const std::string path = WorkFolder() + "photo.bmp";
  FUZZ_CHECK(SavePhotoImage(mode, block.get(), path.c_str()) == (there ? -2000 : -2008));
  FUZZ_CHECK(!ReadWorkFile(path));
}

void SavePicture(Input& input) {
  const int width = input.Between(-3, 140);
  const int height = input.Between(-3, 140);
  const bool has_area = width * height > 0;
  const Bytes pixels =
      Fill(input.Rest(), has_area ? static_cast<std::size_t>(width * height) * 3 : 0);
  const Exact<unsigned char> block(pixels);
  const std::string path = WorkFolder() + "picture.bmp";

  FUZZ_CHECK(SaveBmp(path.c_str(), block.get(), width, height) == 1);

  FUZZ_CHECK(ReadWorkFile(path) == MakeBmp(pixels, width, height));
  unlink(path.c_str());
}

void ConvertPixels(Input& input) {
  const int width = input.Between(0, 40), height = input.Between(-1, 40);
  const auto count = static_cast<std::size_t>(std::max(width * height, 0));
  const Bytes pixels = Fill(input.Rest(), 3 * count);
  const Exact<unsigned char> source(pixels);
  Guarded dest(3 * count);

  Convert2RGBData(source.get(), width, height, dest.bytes());

  for (std::size_t i = 0; i < 3 * count; i += 3) {
    const Bytes expected = {pixels[i + 2], pixels[i + 1], pixels[i]};
    FUZZ_CHECK(std::equal(expected.begin(), expected.end(), dest.bytes() + i));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  switch (input.Byte() % 3) {
    case 0:
      CutPhoto(input);
      break;
    case 1:
      SavePicture(input);
      break;
    default:
      ConvertPixels(input);
      break;
  }
  return 0;
}
