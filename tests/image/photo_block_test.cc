#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "quillonid/image.h"
#include "tests/image/photo_data.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

struct Place {
  const char* what;
  int mode;
  std::size_t photo_at;
};

constexpr Place kPlaces[] = {
    {"without fingerprints", 0,  14 + 256},
    {"with fingerprints",    1,  16 + 256},
    {"any other mode",       2,  14 + 256},
    {"a negative mode",      -1, 14 + 256},
};

// The last byte of the native data lies before a page that cannot be read.
class GuardedNativeData {
 public:
  GuardedNativeData()
      : pages_(static_cast<unsigned char*>(
            mmap(nullptr, 2 * kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(pages_ + kSize, kSize, PROT_NONE);
  }
  GuardedNativeData(const GuardedNativeData&) = delete;
  GuardedNativeData& operator=(const GuardedNativeData&) = delete;
  ~GuardedNativeData() { munmap(pages_, 2 * kSize); }

  unsigned char* bytes() { return pages_; }

 private:
  static constexpr std::size_t kSize = 4096;
  unsigned char* pages_;
};

}  // namespace

TEST(GetPhotoData, CopiesTheBlockBehindTheText) {
  for (const Place& place : kPlaces) {
    SCOPED_TRACE(place.what);
    const Bytes native = NativeData(256, 1024, place.photo_at);
    Bytes photo(1024 + 1, 0xEE);

    EXPECT_EQ(1024, tFunc_GetPhotoData(place.mode, native.data(), photo.data()));

    EXPECT_EQ(HexText(TestPhoto()) + " EE", HexText(photo));
  }
}

TEST(GetPhotoData, RefusesAnotherPhotoLength) {
  for (const int length : {0, 1, 1023, 1025, 0x0404, 0x8400, 0xFFFF}) {
    if (length == 1024) continue;
    SCOPED_TRACE(length);
    const Bytes native = NativeData(256, length, 14 + 256);
    Bytes photo(1024, 0xEE);

    EXPECT_EQ(-2, tFunc_GetPhotoData(0, native.data(), photo.data()));

    EXPECT_EQ(HexText(Bytes(1024, 0xEE)), HexText(photo));
  }
}

TEST(GetPhotoData, TakesTheBlockBehindTheTextWhateverItsLength) {
  GuardedNativeData native;
  Bytes content(4096);  // No two blocks of it are equal.
  for (std::size_t i = 0; i < content.size(); ++i) {
    content[i] = static_cast<unsigned char>(i * 167 + i / 256);
  }
  content[12] = 1024 / 256;
  content[13] = 0;
  Bytes photo(1024 + 1);
  for (const int mode : {0, 1}) {
    const std::size_t text_at = mode == 1 ? 16 : 14;
    const std::size_t most = 4096 - 1024 - text_at;
    for (std::size_t length = 0; length <= 0xFFFF; ++length) {
      content[10] = static_cast<unsigned char>(length >> 8);
      content[11] = static_cast<unsigned char>(length);
      std::memcpy(native.bytes(), content.data(), content.size());
      std::fill(photo.begin(), photo.end(), 0xEE);

      const int result = tFunc_GetPhotoData(mode, native.bytes(), photo.data());

      ASSERT_EQ(length <= most ? 1024 : -2, result) << length;
      const unsigned char* const block = content.data() + text_at + length;
      ASSERT_TRUE(length > most || std::memcmp(block, photo.data(), 1024) == 0) << length;
      ASSERT_EQ(0xEE, photo[length <= most ? 1024 : 0]) << length;
    }
  }
}

TEST(GetPhotoData, TakesTheLastBlockThatFits) {
  const Bytes native = NativeData(4096 - 1024 - 14, 1024, 4096 - 1024);
  Bytes photo(1024);

  ASSERT_EQ(1024, tFunc_GetPhotoData(0, native.data(), photo.data()));

  EXPECT_EQ(HexText(TestPhoto()), HexText(photo));
}

TEST(GetPhotoData, RefusesNull) {
  const Bytes native = OrdinaryNativeData();
  Bytes photo(1024);

  EXPECT_EQ(-2, tFunc_GetPhotoData(0, nullptr, photo.data()));
  EXPECT_EQ(-2, tFunc_GetPhotoData(0, native.data(), nullptr));
}

TEST(GetPhotoData, DumpsTheBlockItCopied) {
  NEEDS_PRIVATE_ROOT();
  const Bytes native = OrdinaryNativeData(Bytes(1024, 0xC4));
  Bytes photo(1024);
  SwitchLogging(true);

  tFunc_GetPhotoData(0, native.data(), photo.data());
  tFunc_GetPhotoData(0, NativeData(256, 1023, 270).data(), photo.data());

  std::string digits;
  for (int i = 0; i < 1024; ++i) digits += "C4";
  EXPECT_EQ(std::vector<std::string>{" TIME  pPhoto   LEN=1024   HEX: " + digits}, LogLines());
}
