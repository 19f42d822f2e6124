#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "quillonid/image.h"
#include "tests/image/photo_data.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

void InstallDecoder(const std::string& behaviour) {
  std::filesystem::copy_file(QL_DECODERS "decoder_" + behaviour + ".so", kDecoderFile,
                             std::filesystem::copy_options::overwrite_existing);
}

std::string BmpPath() { return TemporaryFolder() + "/head.bmp"; }

// What the good decoder makes of a photo: pixels as bytes R, G, B.
Bytes DecodedPixels(const Bytes& photo) {
  Bytes pixels(38556);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<unsigned char>(photo[i % 1024] + i / 1024 + 608);
  }
  return pixels;
}

// The file of these pixels, put together here apart from the library.
std::string BmpOf(const Bytes& pixels) {
  const std::vector<std::uint8_t> headers = FromHex(
      "42 4D  CE 97 00 00  00 00  00 00  36 00 00 00"  // 38,862 bytes, pixels at 54
      "28 00 00 00  66 00 00 00  7E 00 00 00  01 00  18 00"
      "00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00");
  std::string file(headers.begin(), headers.end());
  for (std::size_t pixel = 0; pixel < pixels.size() / 3; ++pixel) {
    file += static_cast<char>(pixels[3 * pixel + 2]);
    file += static_cast<char>(pixels[3 * pixel + 1]);
    file += static_cast<char>(pixels[3 * pixel]);
    if (pixel % 102 == 101) file += "\x96\x08";
  }
  return file;
}

std::string HexOf(const std::string& bytes) { return HexText(bytes.data(), bytes.size()); }

bool DecoderIsLoaded() {
  void* const loaded = dlopen(kDecoderFile, RTLD_NOW | RTLD_NOLOAD);
  if (loaded != nullptr) dlclose(loaded);
  return loaded != nullptr;
}

std::string Dump(const std::string& title, const std::string& byte) {
  std::string line = " TIME  " + title + "  LEN=1024   HEX: ";
  for (int i = 0; i < 1024; ++i) line += byte;
  return line;
}

const std::vector<std::string> kOpening = {
    ApiLine("native  \n"),
    ApiLine(" /libwlt.so\n"),
    ApiLine(" After /libwlt.so\n"),
};

std::vector<std::string> Lines(std::vector<std::string> first,
                               const std::vector<std::string>& more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

}  // namespace

TEST(SavePhotoImage, WritesTheDecodedPhoto) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");

  ASSERT_EQ(0, SavePhotoImage(0, OrdinaryNativeData().data(), BmpPath().c_str()));

  const std::string file = ReadWholeFile(BmpPath());
  EXPECT_EQ(38862U, file.size());
  EXPECT_EQ("96 08", HexOf(file.substr(360, 2)));
  EXPECT_EQ(HexOf(BmpOf(DecodedPixels(TestPhoto()))), HexOf(file));
}

TEST(SavePhotoImage, TakesThePhotoOfTheReadMode) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  for (const int mode : {0, 1, 2}) {
    SCOPED_TRACE(mode);
    const Bytes native = NativeData(256, 1024, (mode == 1 ? 16U : 14U) + 256);

    ASSERT_EQ(0, SavePhotoImage(mode, native.data(), BmpPath().c_str()));

    EXPECT_EQ(HexOf(BmpOf(DecodedPixels(TestPhoto()))), HexOf(ReadWholeFile(BmpPath())));
  }
}

TEST(SavePhotoImage, RefusesAPhotoOfAnotherLength) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  for (const int length : {0, 1023}) {
    SwitchLogging(true);

    EXPECT_EQ(-2008, SavePhotoImage(0, NativeData(256, length, 270).data(), BmpPath().c_str()));

    EXPECT_FALSE(FileExists(BmpPath()));
    EXPECT_EQ((std::vector<std::string>{ApiLine("[SavePhotoImage] Start "),
                                        ApiLine("[RET_BUSI_ID_PHOTO_LEN_ERR] Start ")}),
              LogLines());
  }
}

TEST(SavePhotoImage, ReportsEveryStep) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  const std::string path = BmpPath();
  SwitchLogging(true);

  SavePhotoImage(0, OrdinaryNativeData(Bytes(1024, 0xAB)).data(), path.c_str());

  const std::vector<std::string> before = {
      ApiLine("[SavePhotoImage] Start "),
      Dump("pPhoto ", "AB"),
      Dump("GetPhotoData szPhoto = ", "AB"),
  };
  const std::vector<std::string> after = {
      ApiLine("unpack: nRet is 608"),
      ApiLine("[SaveBmp] Start  " + path + " "),
      ApiLine("open Start "),
      ApiLine("SaveBmp :szBmpFile is:" + path + "\n"),
      ApiLine("SaveBmp : close the fp"),
      ApiLine("#############1[SaveBmp] End "),
      ApiLine("SaveBmp: nRet is 1"),
      ApiLine("unpack != NULL"),
      ApiLine("hInstLibrary != NULL"),
      ApiLine("GetPhotoBmp : the nRet is 1"),
  };
  EXPECT_EQ(Lines(Lines(before, kOpening), after), LogLines());
}

TEST(SavePhotoImage, GivesMinus2000WhenTheFileCannotBeWritten) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  const std::string folder = TemporaryFolder();
  for (const char* path : {folder.c_str(), "", "/no/such/folder/head.bmp", "/dev/full"}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(-2000, SavePhotoImage(0, OrdinaryNativeData().data(), path));
  }
  EXPECT_EQ(-2000, SavePhotoImage(0, OrdinaryNativeData().data(), nullptr));
}

struct BadDecoder {
  const char* name;
  std::vector<std::string> log;
};

TEST(GetPhotoBmp, FailsWithoutAFileWhenTheDecoderDoes) {
  NEEDS_PRIVATE_ROOT();
  const std::vector<std::string> end = {ApiLine("hInstLibrary != NULL"),
                                        ApiErrorLine("GetPhotoBmp : the nRet is 0")};
  const std::string too_much = ApiErrorLine("unpack: more than 38556 bytes written");
  const BadDecoder decoders[] = {
      {"failing",              {ApiErrorLine("unpack: nRet is 0"), ApiLine("unpack != NULL")}       },
      {"without_unpack",       {}                                                                   },
      {"writing_too_much",     {ApiLine("unpack: nRet is 608"), too_much, ApiLine("unpack != NULL")}},
      {"writing_far_too_much",
       {ApiLine("unpack: nRet is 608"), too_much, ApiLine("unpack != NULL")}                        },
  };
  for (const BadDecoder& decoder : decoders) {
    SCOPED_TRACE(decoder.name);
    InstallDecoder(decoder.name);
    SwitchLogging(true);
    const std::ptrdiff_t descriptors = OpenDescriptors();

    EXPECT_EQ(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));

    EXPECT_FALSE(FileExists(BmpPath()));
    EXPECT_FALSE(DecoderIsLoaded());
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_EQ(Lines(Lines(kOpening, decoder.log), end), LogLines());
    std::filesystem::remove(kDecoderFile);
  }
}

TEST(GetPhotoBmp, FailsWithoutADecoder) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  EXPECT_EQ(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));
  EXPECT_EQ(Lines(kOpening,
                  {ApiLine("hInstLibrary != NULL"), ApiErrorLine("GetPhotoBmp : the nRet is 0")}),
            LogLines());

  WriteWholeFile(kDecoderFile, "not a library\n");
  EXPECT_EQ(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));
  EXPECT_FALSE(FileExists(BmpPath()));
}

TEST(GetPhotoBmp, LeavesNothingLoadedOrOpen) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  const std::ptrdiff_t descriptors = OpenDescriptors();

  for (int i = 0; i < 20; ++i) {
    ASSERT_NE(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));
  }

  EXPECT_FALSE(DecoderIsLoaded());
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(GetPhotoBmp, LoadsFromTheRootByName) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  std::filesystem::rename(kDecoderFile, "/home/quillon/other.so");

  EXPECT_EQ(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));
  EXPECT_NE(0, GetPhotoBmp("home/quillon/other.so", TestPhoto().data(), BmpPath().c_str()));
}

TEST(GetPhotoBmp, ShowsBlackWhereTheDecoderWroteNothing) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("writing_little");
  Bytes pixels(38556);
  std::copy_n(TestPhoto().begin(), 3, pixels.begin());

  ASSERT_NE(0, GetPhotoBmp("libwlt.so", TestPhoto().data(), BmpPath().c_str()));

  EXPECT_EQ(HexOf(BmpOf(pixels)), HexOf(ReadWholeFile(BmpPath())));
}

TEST(GetPhotoBmp, RefusesNamesAndPhotosThatCannotBe) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good");
  const std::string long_name(5000, 'x');

  EXPECT_EQ(0, GetPhotoBmp(long_name.c_str(), TestPhoto().data(), BmpPath().c_str()));
  EXPECT_EQ(0, GetPhotoBmp(nullptr, TestPhoto().data(), BmpPath().c_str()));
  EXPECT_EQ(0, GetPhotoBmp("libwlt.so", nullptr, BmpPath().c_str()));
}
