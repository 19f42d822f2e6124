#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "quillonid/image.h"
#include "tests/image/path_buffer.h"
#include "tests/image/photo_data.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

constexpr char kUntouched[] = "untouched";

std::string ImagePath(const char* path, const char* suffix, const char* name, int len = 1023) {
  std::string made = kUntouched;
  made.resize(4096);
  GetImgPathEx(path, suffix, name, made.data(), len);
  return made.substr(0, made.find('\0'));
}

struct Naming {
  const char* path;
  const char* suffix;
  const char* name;
  const char* made;
};

constexpr Naming kNamings[] = {
  // A directory, with and without its "/"; one that does not exist counts when it ends in "/".
    {"/tmp",           "-head.bmp", "N",     "/tmp/N-head.bmp"        },
    {"/tmp/",          "-head.bmp", "N",     "/tmp/N-head.bmp"        },
    {"/",              "-head.bmp", "N",     "/N-head.bmp"            },
    {"/no/such/",      "-head.bmp", "N",     "/no/such/N-head.bmp"    },
    {"/tmp",           nullptr,     "N.bmp", "/tmp/N.bmp"             },
    {"/tmp",           "",          "N",     "/tmp/N"                 },
    {"/tmp",           "-head.bmp", nullptr, "/tmp/-head.bmp"         },
    {"/tmp",           "-head.bmp", "../N",  "/tmp/../N-head.bmp"     },
 // Patterns in any letter case; the extension keeps its own.
    {"/tmp/*.bmp",     "-head.bmp", "123",   "/tmp/123-head.bmp.bmp"  },
    {"/tmp/*.jpg",     "-head.bmp", "123",   "/tmp/123-head.bmp.jpg"  },
    {"/tmp/*.png",     "-head.bmp", "123",   "/tmp/123-head.bmp.png"  },
    {"/tmp/*.gif",     "-head.bmp", "123",   "/tmp/123-head.bmp.gif"  },
    {"/tmp/*.PNG",     "-head.bmp", "N",     "/tmp/N-head.bmp.PNG"    },
    {"/tmp/*.GiF",     "",          "N",     "/tmp/N.GiF"             },
    {"*.jpg",          "-head.bmp", "N",     "N-head.bmp.jpg"         },
    {"/no/such/*.bmp", "-head.bmp", "N",     "/no/such/N-head.bmp.bmp"},
    {"/tmp/*.jpg",     "-head.bmp", nullptr, "/tmp/-head.bmp.jpg"     },
 // Anything else stays.
    {"/tmp/a.bmp",     "-head.bmp", "N",     "/tmp/a.bmp"             },
    {"/tmp/*.tif",     "-head.bmp", "N",     "/tmp/*.tif"             },
    {"/tmp/*.jpeg",    "-head.bmp", "N",     "/tmp/*.jpeg"            },
    {"/tmp/a*.jpg",    "-head.bmp", "N",     "/tmp/a*.jpg"            },
    {"/tmp/*.jpg.",    "-head.bmp", "N",     "/tmp/*.jpg."            },
    {"a.bmp",          "-head.bmp", "N",     "a.bmp"                  },
    {"",               "-head.bmp", "N",     ""                       },
    {nullptr,          "-head.bmp", "N",     kUntouched               },
};

}  // namespace

TEST(GetImgPathEx, MakesTheNameOfTheTable) {
  for (const Naming& naming : kNamings) {
    SCOPED_TRACE(naming.path == nullptr ? "(null)" : naming.path);
    EXPECT_EQ(naming.made, ImagePath(naming.path, naming.suffix, naming.name));
  }
}

TEST(GetImgPathEx, TakesADirectoryForOneWhateverItsName) {
  const std::string folder = TemporaryFolder() + "/*.jpg";
  std::filesystem::create_directory(folder);

  EXPECT_EQ(folder + "/N-head.bmp", ImagePath(folder.c_str(), "-head.bmp", "N"));
}

TEST(GetImgPathEx, LimitsOnlyANameThatStays) {
  EXPECT_EQ("/tmp/N-head.bmp", ImagePath("/tmp", "-head.bmp", "N", 1));
  EXPECT_EQ("/tmp/N-head.bmp.jpg", ImagePath("/tmp/*.jpg", "-head.bmp", "N", 1));
  EXPECT_EQ("/tmp/ched", ImagePath("/tmp/a.bmp", "", "N", 5));
  EXPECT_EQ("/tmp/a.bmp", ImagePath("/tmp/a.bmp", "", "N", 10));
  EXPECT_EQ(kUntouched, ImagePath("/tmp/a.bmp", "", "N", 0));
  EXPECT_EQ(kUntouched, ImagePath("/tmp/a.bmp", "", "N", -1));
}

TEST(GetImgPathEx, WritesNotOneByteMoreThanTheText) {
  Bytes made(16, 0xEE);

  GetImgPathEx("/a/b", "", "", reinterpret_cast<char*>(made.data()), 10);

  EXPECT_EQ("2F 61 2F 62 00 EE EE EE EE EE EE EE EE EE EE EE", HexText(made));
}

TEST(GetImgPathEx, TakesAtMost259BytesOfSuffixAndOfAPatternsFolder) {
  const std::string suffix(300, 's');
  const std::string folder = "/" + std::string(298, 'f') + "/";

  EXPECT_EQ("/tmp/N" + suffix.substr(0, 259), ImagePath("/tmp", suffix.c_str(), "N"));
  EXPECT_EQ(folder.substr(0, 259) + "N.jpg", ImagePath((folder + "*.jpg").c_str(), "", "N"));
  EXPECT_EQ(folder + "N", ImagePath(folder.c_str(), "", "N"));
}

TEST(GetImgPathEx, IgnoresANullDestination) { GetImgPathEx("/tmp", "", "N", nullptr, 10); }

TEST(TFuncSaveHeadImg, WritesTheNameBack) {
  const std::pair<const char*, const char*> names[] = {
      {"/tmp",       "/tmp/123-head.bmp"    },
      {"/tmp/",      "/tmp/123-head.bmp"    },
      {"/tmp/*.jpg", "/tmp/123-head.bmp.jpg"},
      {"/tmp/a.bmp", "/tmp/a.bmp"           },
  };
  for (const auto& [given, made] : names) {
    PathBuffer path(given);

    EXPECT_EQ(0, tFuncSaveHeadImg("123", path.data()));

    EXPECT_EQ(made, path.text());
    EXPECT_TRUE(path.IsUntouchedBehind(std::strlen(made) + 1));
  }
}

TEST(TFuncSaveHeadImg, DoesNothingWithoutAPath) {
  PathBuffer path("");

  EXPECT_EQ(0, tFuncSaveHeadImg("123", nullptr));
  EXPECT_EQ(0, tFuncSaveHeadImg("123", path.data()));

  EXPECT_EQ("", path.text());
  EXPECT_TRUE(path.IsUntouchedBehind(1));
}

TEST(TFuncSaveHeadImg, TakesANullName) {
  PathBuffer path("/tmp/");

  EXPECT_EQ(0, tFuncSaveHeadImg(nullptr, path.data()));

  EXPECT_EQ("/tmp/-head.bmp", path.text());
}

TEST(TFuncSaveHeadImg, LeavesAPathAloneThatStays) {
  // A literal lies in memory that cannot be written.
  EXPECT_EQ(0, tFuncSaveHeadImg("123", const_cast<char*>("/tmp/a.bmp")));
}

TEST(TFuncSaveHeadImg, NeverWritesMoreThanThePathBufferHolds) {
  const std::string name(1024, 'n');
  for (const std::string& given : {std::string("/tmp"), std::string("/tmp/*.jpg"),
                                   std::string(1015, '/'), "/" + std::string(1021, 'd') + "/"}) {
    PathBuffer path(given);

    EXPECT_EQ(0, tFuncSaveHeadImg(name.c_str(), path.data()));

    EXPECT_EQ(1023U, path.text().size());
    EXPECT_TRUE(path.IsUntouchedBehind(1024));
  }
}

TEST(TFuncSaveHeadImg, CutsALongPathOfItsOwn) {
  for (const char last : {'/', 'd'}) {
    const std::string given = "/" + std::string(1098, 'd') + last;
    PathBuffer path(given);

    EXPECT_EQ(0, tFuncSaveHeadImg("123", path.data()));

    EXPECT_EQ(given.substr(0, 1023), path.text());
  }
}

TEST(TFuncSaveHeadImg, ReportsItsArguments) {
  NEEDS_PRIVATE_ROOT();
  PathBuffer path("/tmp");
  SwitchLogging(true);

  tFuncSaveHeadImg("123", path.data());
  tFuncSaveHeadImg(nullptr, nullptr);

  EXPECT_EQ((std::vector<std::string>{
                ApiLine("[tFuncSaveHeadImg] Start szHeadName = 123 "),
                ApiLine("szHeadImg = /tmp"),
                ApiLine("[tFuncSaveHeadImg] Start szHeadName = (null) "),
                ApiLine("szHeadImg = (null)"),
            }),
            LogLines());
}

TEST(TFuncSaveHeadImg, LeavesNoDescriptorOpen) {
  const std::ptrdiff_t before = OpenDescriptors();

  for (int i = 0; i < 50; ++i) {
    PathBuffer path("/tmp");
    tFuncSaveHeadImg("123", path.data());
  }

  EXPECT_EQ(before, OpenDescriptors());
}

TEST(SaveBmpToImg, ConvertsNothing) {
  const std::string target = TemporaryFolder() + "/a.jpg";

  EXPECT_EQ(1, SaveBmpToImg("/no/such.bmp", target.c_str()));
  EXPECT_EQ(1, SaveBmpToImg(nullptr, nullptr));

  EXPECT_FALSE(FileExists(target));
}
