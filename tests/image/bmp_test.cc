#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "quillonid/image.h"
#include "tests/image/photo_data.h"
#include "tests/support/guarded_block.h"
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

Bytes Counting(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i);
  return bytes;
}

// What a pixel at a time gives, from the first to the last.
void SwapPlainly(const unsigned char* src, std::size_t pixels, unsigned char* dst) {
  for (std::size_t i = 0; i < 3 * pixels; i += 3) {
    dst[i] = src[i + 2];
    dst[i + 1] = src[i + 1];
    dst[i + 2] = src[i];
  }
}

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
  const Bytes pixels(38556);
  EXPECT_EQ(0, SaveBmp("/dev/full", pixels.data(), 2, 2));
  EXPECT_EQ(0, SaveBmp("/dev/full", pixels.data(), 102, 126));
}

// What has no length to cut takes a picture like a file.
TEST(SaveBmp, WritesToADeviceOrPipe) {
  const Bytes pixels(38556);
  EXPECT_EQ(1, SaveBmp("/dev/null", pixels.data(), 2, 2));
  EXPECT_EQ(1, SaveBmp("/dev/null", pixels.data(), 102, 126));

  const std::string pipe = TemporaryFolder() + "/pipe.bmp";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  ASSERT_EQ(1, SaveBmp(pipe.c_str(), kFourPixels.data(), 2, 2));
  char file[128];
  ASSERT_EQ(70, read(reader, file, sizeof file));
  close(reader);
  EXPECT_EQ("03 02 01 06 05 04 96 08 09 08 07 0C 0B 0A 96 08",
            HexText(file, 70).substr(kHeadersText));
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

TEST(Convert2RGBData, EqualsThePlainLoopAtEveryLengthAndAlignment) {
  for (std::size_t pixels = 0; pixels <= 40; ++pixels) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
      const Bytes in = Counting(offset + 3 * pixels);
      Bytes expected(offset + 3 * pixels + 32, 0xEE), out = expected;
      SwapPlainly(in.data() + offset, pixels, expected.data() + offset);

      Convert2RGBData(in.data() + offset, static_cast<int>(pixels), 1, out.data() + offset);

      ASSERT_EQ(HexText(expected), HexText(out)) << pixels << " pixels at " << offset;
    }
  }
}

TEST(Convert2RGBData, StaysWithinItsInputAndOutput) {
  const GuardedBlock in, out;
  for (int pixels = 1; pixels <= 40; ++pixels) {
    const std::size_t size = 3 * static_cast<std::size_t>(pixels);

    Convert2RGBData(in.Last(size), pixels, 1, out.Last(size));
  }
}

TEST(Convert2RGBData, TakesOverlappingBlocksInOrder) {
  for (std::size_t shift = 0; shift <= 48; ++shift) {
    constexpr std::size_t kPixels = 30;
    Bytes forwards = Counting(3 * kPixels + 48), expected = forwards;
    SwapPlainly(expected.data(), kPixels, expected.data() + shift);
    Convert2RGBData(forwards.data(), kPixels, 1, forwards.data() + shift);
    ASSERT_EQ(HexText(expected), HexText(forwards)) << shift << " bytes up";

    Bytes backwards = Counting(3 * kPixels + 48);
    expected = backwards;
    SwapPlainly(expected.data() + shift, kPixels, expected.data());
    Convert2RGBData(backwards.data() + shift, kPixels, 1, backwards.data());
    ASSERT_EQ(HexText(expected), HexText(backwards)) << shift << " bytes down";
  }
}
