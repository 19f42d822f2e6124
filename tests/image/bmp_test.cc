#include <gtest/gtest.h>

#include <climits>

#include "quillonid/image.h"
#include "tests/image/photo_data.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

std::string Path() { return TemporaryFolder() + "/picture.bmp"; }

std::string FileHex() {
  const std::string file = ReadWholeFile(Path());
  return HexText(file.data(), file.size());
}

constexpr std::size_t kHeadersText = 162;  // headers in hexadecimal

const Bytes kFourPixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

}  // namespace

TEST(SaveBmp, ExchangesRedAndBlueAndFillsEveryRow) {
  ASSERT_EQ(1, SaveBmp(Path().c_str(), kFourPixels.data(), 2, 2));

  EXPECT_EQ(
      "42 4D 46 00 00 00 00 00 00 00 36 00 00 00 "  // 70 bytes
      "28 00 00 00 02 00 00 00 02 00 00 00 01 00 18 00 00 00 00 00 00 00 00 00 00 00 00 00 "
      "00 00 00 00 00 00 00 00 00 00 00 00 "
      "03 02 01 06 05 04 96 08 09 08 07 0C 0B 0A 96 08",
      FileHex());
}

TEST(SaveBmp, FillsWithTwoBytesWhateverTheWidth) {
  ASSERT_EQ(1, SaveBmp(Path().c_str(), kFourPixels.data(), 4, 1));
  EXPECT_EQ("03 02 01 06 05 04 09 08 07 0C 0B 0A 96 08", FileHex().substr(kHeadersText));

  ASSERT_EQ(1, SaveBmp(Path().c_str(), kFourPixels.data(), 1, 3));
  EXPECT_EQ("03 02 01 96 08 06 05 04 96 08 09 08 07 96 08", FileHex().substr(kHeadersText));
}

TEST(SaveBmp, ReplacesAFile) {
  WriteWholeFile(Path(), std::string(100000, 'x'));

  ASSERT_EQ(1, SaveBmp(Path().c_str(), kFourPixels.data(), 2, 2));

  EXPECT_EQ(70U, ReadWholeFile(Path()).size());
}

TEST(SaveBmp, WritesHeadersOnlyForAPictureWithoutPixels) {
  for (const auto& [width, height] : {
           std::pair{0,   126    },
           {102, 0      },
           {-1,  5      },
           {0,   INT_MIN}
  }) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));

    EXPECT_EQ(1, SaveBmp(Path().c_str(), kFourPixels.data(), width, height));

    EXPECT_EQ(54U, ReadWholeFile(Path()).size());
  }
}

TEST(SaveBmp, LeavesTheHeadersWhenThereIsNoMemoryForThePixels) {
  NEEDS_PRIVATE_ROOT();
  for (const auto& [width, height] : {
           std::pair{40000,   40000  },
           {INT_MAX, INT_MAX},
           {INT_MIN, -1     }
  }) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
    SwitchLogging(true);

    EXPECT_EQ(0, SaveBmp(Path().c_str(), kFourPixels.data(), width, height));

    EXPECT_EQ(54U, ReadWholeFile(Path()).size());
    EXPECT_EQ((std::vector<std::string>{
                  ApiLine("[SaveBmp] Start  " + Path() + " "),
                  ApiLine("open Start "),
                  ApiLine("SaveBmp :szBmpFile is:" + Path() + "\n"),
                  ApiLine("malloc  pRGBData : error"),
              }),
              LogLines());
  }
}

TEST(SaveBmp, FailsWhenTheFileCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, SaveBmp("/no/such/folder/a.bmp", kFourPixels.data(), 2, 2));
  EXPECT_EQ(0, SaveBmp(nullptr, kFourPixels.data(), 2, 2));

  EXPECT_EQ((std::vector<std::string>{
                ApiLine("[SaveBmp] Start  /no/such/folder/a.bmp "),
                ApiLine("open Start "),
                ApiLine("SaveBmp :szBmpFile is:/no/such/folder/a.bmp\n"),
                ApiLine("[SaveBmp] Start  (null) "),
                ApiLine("open Start "),
                ApiLine("SaveBmp :szBmpFile is:(null)\n"),
            }),
            LogLines());
}

TEST(SaveBmp, NoticesAFullDisk) {
  // A small file fails when it is closed, a large one when it is written.
  const Bytes pixels(38556);
  EXPECT_EQ(0, SaveBmp("/dev/full", pixels.data(), 2, 2));
  EXPECT_EQ(0, SaveBmp("/dev/full", pixels.data(), 102, 126));
}

TEST(SaveBmp, RefusesNullPixels) { EXPECT_EQ(0, SaveBmp(Path().c_str(), nullptr, 2, 2)); }

TEST(Convert2RGBData, ExchangesTheFirstAndThirdByteOfEachPixel) {
  Bytes out(12 + 1, 0xEE);

  Convert2RGBData(kFourPixels.data(), 2, 2, out.data());

  EXPECT_EQ("03 02 01 06 05 04 09 08 07 0C 0B 0A EE", HexText(out));
}

TEST(Convert2RGBData, WritesNothingUnlessTheProductIsPositive) {
  Bytes out(3, 0xEE);

  Convert2RGBData(kFourPixels.data(), 0, 5, out.data());
  Convert2RGBData(kFourPixels.data(), -1, 1, out.data());
  Convert2RGBData(kFourPixels.data(), 65536, -65536, out.data());

  EXPECT_EQ("EE EE EE", HexText(out));
}
