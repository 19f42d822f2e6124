// Every value of the length of a photo, and every result code from -70,000 to 70,000.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "quillonid/image.h"
#include "quillonid/results.h"
#include "tests/testing/published_results.h"

TEST(EveryPhotoLength, ButTheOneOfAPhotoIsRefused) {
  std::vector<unsigned char> native(4096, 0x5A);
  native[10] = 1;  // text of 256 bytes
  native[11] = 0;
  for (int mode = -1; mode <= 2; ++mode) {
    for (int length = 0; length <= 0xFFFF; ++length) {
      native[12] = static_cast<unsigned char>(length / 256);
      native[13] = static_cast<unsigned char>(length % 256);
      std::vector<unsigned char> photo(1024, 0xEE);

      const int result = tFunc_GetPhotoData(mode, native.data(), photo.data());

      ASSERT_EQ(length == 1024 ? 1024 : -2, result) << mode << ' ' << length;
      const unsigned char expected = length == 1024 ? 0x5A : 0xEE;
      ASSERT_EQ(1024, std::count(photo.begin(), photo.end(), expected)) << mode << ' ' << length;
    }
  }
}

TEST(EveryResultCode, IsPublishedByTheTable) {
  for (int code = -70000; code <= 70000; ++code) {
    int result = 12345678;

    TY_Id_ConvertErr(code, &result);

    ASSERT_EQ(PublishedResult(code), result) << code;
  }
}
