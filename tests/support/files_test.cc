// File helpers: results, what they leave on disk, and their log lines.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "quillonid/support.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

const std::string kPublic = "  TIME  INFO:    Public:  ";
const std::string kMissing = "/nonexistent/file";

std::string PathOf(const std::string& name) { return TemporaryFolder() + "/" + name; }

std::string FileOf(const std::string& text, const std::string& name = "file") {
  fs::remove(PathOf(name));
  WriteWholeFile(PathOf(name), text);
  return PathOf(name);
}

// A file of any size that takes no room.
std::string SparseFile(std::uintmax_t size) {
  std::string path = FileOf("");
  fs::resize_file(path, size);
  return path;
}

std::string Pipe() {
  fs::remove(PathOf("pipe"));
  EXPECT_EQ(0, mkfifo(PathOf("pipe").c_str(), 0600));
  return PathOf("pipe");
}

std::string Pattern(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 + i / 256);
  return text;
}

unsigned char* Data(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

}  // namespace

TEST(GetFileSize, IsTheSizeOrMinusOne) {
  EXPECT_EQ(5, get_file_size(FileOf("12345").c_str()));
  EXPECT_EQ(0, get_file_size(FileOf("").c_str()));
  EXPECT_EQ(5'000'000'000, get_file_size(SparseFile(5'000'000'000).c_str()));
  EXPECT_EQ(-1, get_file_size(kMissing.c_str()));
  EXPECT_EQ(-1, get_file_size(nullptr));
}

TEST(ReadFileData, ReportsTheSize) {
  const std::string path = FileOf("12345");
  unsigned char buffer[8];
  int length = 99;

  EXPECT_EQ(-2, ReadFileData(path.c_str(), nullptr, &length));
  EXPECT_EQ(5, length);
  length = 4;
  EXPECT_EQ(-2, ReadFileData(path.c_str(), buffer, &length));
  EXPECT_EQ(5, length);
}

TEST(ReadFileData, ReportsMinusOneForAMissingFile) {
  unsigned char buffer[8];
  int length = 99;

  EXPECT_EQ(-2, ReadFileData(kMissing.c_str(), nullptr, &length));
  EXPECT_EQ(-1, length);
  EXPECT_EQ(-1, ReadFileData(kMissing.c_str(), buffer, &length));
  EXPECT_EQ(-1, ReadFileData(nullptr, buffer, &length));
  EXPECT_EQ(-1, ReadFileData(kMissing.c_str(), buffer, nullptr));
}

TEST(ReadFileData, ReadsTheWholeFileAndKeepsTheLength) {
  const std::string text = Pattern(38862);
  const std::string path = FileOf(text);
  std::string buffer(40000, '#');
  int length = 40000;

  EXPECT_EQ(0, ReadFileData(path.c_str(), Data(buffer), &length));

  EXPECT_EQ(40000, length);
  EXPECT_TRUE(buffer == text + std::string(40000 - 38862, '#'));
}

TEST(ReadFileData, LogsSizeChunksAndSum) {
  NEEDS_PRIVATE_ROOT();
  const std::string path = FileOf(Pattern(2500));
  std::string buffer(2500, '#');
  int length = 0;
  SwitchLogging(true);

  ReadFileData(path.c_str(), nullptr, &length);
  ReadFileData(path.c_str(), Data(buffer), &length);
  ReadFileData(kMissing.c_str(), Data(buffer), &length);

  EXPECT_EQ(
      (Lines{kPublic + "ReadFileData szImgFile: " + path + ", lenFile = 2500 ", kPublic + "~~~~~~~",
             kPublic + "ReadFileData szImgFile: " + path + ", lenFile = 2500 ",
             kPublic + "!!!!!!!!", kPublic + "ReadFileData lenR : 1024 ",
             kPublic + "ReadFileData lenR : 1024 ", kPublic + "ReadFileData lenR : 452 ",
             kPublic + "ReadFileData pData len : 2500 ",
             kPublic + "ReadFileData szImgFile: " + kMissing + ", lenFile = -1 ",
             kPublic + "!!!!!!!!"}),
      LogLines());
}

TEST(ReadFileData, ReadsNoMoreThanTheBufferHolds) {
  std::string buffer(2000, '#');
  int length = 1500;

  EXPECT_EQ(0, ReadFileData("/dev/zero", Data(buffer), &length));  // Says its size is 0.

  EXPECT_TRUE(buffer == std::string(1500, '\0') + std::string(500, '#'));
  length = 0;
  EXPECT_EQ(0, ReadFileData("/proc/self/status", Data(buffer), &length));
  EXPECT_EQ('\0', buffer[0]);
}

TEST(ReadFileData, SaturatesASizeBeyondInt) {
  int length = 0;

  EXPECT_EQ(-2, ReadFileData(SparseFile(5'000'000'000).c_str(), nullptr, &length));

  EXPECT_EQ(INT_MAX, length);
}

TEST(ReadFileData, DoesNotWaitForAPipe) {
  const std::string path = Pipe();
  std::string buffer(16, '#');
  int length = 16;

  EXPECT_EQ(0, ReadFileData(path.c_str(), Data(buffer), &length));

  EXPECT_EQ(std::string(16, '#'), buffer);
}

TEST(WriteFileData, CreatesAndReplaces) {
  const std::string path = PathOf("written");
  const std::string text = Pattern(5000);

  EXPECT_EQ(1, WriteFileData(path.c_str(), text.data(), 5000));
  EXPECT_TRUE(text == ReadWholeFile(path));
  EXPECT_EQ(1, WriteFileData(path.c_str(), "ab", 2));
  EXPECT_EQ("ab", ReadWholeFile(path));
  EXPECT_EQ(1, WriteFileData(path.c_str(), nullptr, 0));
  EXPECT_TRUE(FileExists(path));
  EXPECT_EQ("", ReadWholeFile(path));
}

TEST(WriteFileData, ReportsFailures) {
  EXPECT_EQ(0, WriteFileData(kMissing.c_str(), "ab", 2));
  EXPECT_EQ(0, WriteFileData("/tmp", "ab", 2));
  EXPECT_EQ(0, WriteFileData(nullptr, "ab", 2));
  EXPECT_EQ(0, WriteFileData("/dev/full", "ab", 2));
}

TEST(WriteFileData, LeavesTheFileForANegativeCountOrNullBytes) {
  const std::string path = FileOf("kept");

  EXPECT_EQ(0, WriteFileData(path.c_str(), "ab", -1));
  EXPECT_EQ(0, WriteFileData(path.c_str(), nullptr, 2));

  EXPECT_EQ("kept", ReadWholeFile(path));
}

TEST(WriteFileData, LogsItsStart) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  WriteFileData(kMissing.c_str(), "ab", 2);

  EXPECT_EQ((Lines{kPublic + "[WriteFileData] Start "}), LogLines());
}

TEST(WriteDataToFile, LogsAndNeverWrites) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  const std::string path = PathOf("never");
  const unsigned char data[] = "ab";

  EXPECT_EQ(-1, WriteDataToFile(nullptr, path.c_str(), data, 2));
  EXPECT_EQ(-1, WriteDataToFile(nullptr, nullptr, nullptr, 0));

  EXPECT_FALSE(FileExists(path));
  EXPECT_EQ((Lines{kPublic + "[WriteDataToFile] Start FileName = " + path + " ",
                   kPublic + " szPath =  ", kPublic + "[WriteDataToFile] Start FileName = (null) ",
                   kPublic + " szPath =  "}),
            LogLines());
}

TEST(CopyFile, CopiesToANewFile) {
  for (const std::size_t size : {0U, 1U, 1024U, 16384U, 16385U, 100000U}) {
    const std::string text = Pattern(size);
    const std::string source = FileOf(text, "source");
    fs::remove(PathOf("target"));

    EXPECT_EQ(1, CopyFile(source.c_str(), PathOf("target").c_str(), 0));

    EXPECT_TRUE(FileExists(PathOf("target")));
    EXPECT_TRUE(text == ReadWholeFile(PathOf("target")));
  }
}

TEST(CopyFile, ReplacesOnlyWhenToldTo) {
  const std::string source = FileOf("new", "source");
  const std::string target = FileOf("existing", "target");

  EXPECT_EQ(0, CopyFile(source.c_str(), target.c_str(), 0));
  EXPECT_EQ("existing", ReadWholeFile(target));
  EXPECT_EQ(1, CopyFile(source.c_str(), target.c_str(), 1));
  EXPECT_EQ("new", ReadWholeFile(target));
  EXPECT_EQ("new", ReadWholeFile(source));
}

TEST(CopyFile, LeavesTheTargetWhenTheSourceCannotBeRead) {
  const std::string target = FileOf("existing", "target");

  EXPECT_EQ(0, CopyFile(kMissing.c_str(), target.c_str(), 1));
  EXPECT_EQ(0, CopyFile("/tmp", target.c_str(), 1));
  EXPECT_EQ(0, CopyFile("/dev/zero", target.c_str(), 1));
  EXPECT_EQ(0, CopyFile(Pipe().c_str(), target.c_str(), 1));
  EXPECT_EQ(0, CopyFile(nullptr, target.c_str(), 1));
  EXPECT_EQ("existing", ReadWholeFile(target));
  EXPECT_EQ(0, CopyFile(kMissing.c_str(), PathOf("none").c_str(), 1));
  EXPECT_FALSE(FileExists(PathOf("none")));
}

TEST(CopyFile, CopiesADeviceThatEnds) {
  const std::string target = FileOf("existing", "target");
  const Pty terminal;
  terminal.Send("line\n\x04");  // Ctrl-D: the end

  EXPECT_EQ(1, CopyFile(terminal.path().c_str(), target.c_str(), 1));
  EXPECT_EQ("line\n", ReadWholeFile(target));
  EXPECT_EQ(1, CopyFile("/dev/null", target.c_str(), 1));
  EXPECT_EQ("", ReadWholeFile(target));
  EXPECT_EQ(1, CopyFile("/dev/null", "/dev/null", 1));
  EXPECT_EQ(0, CopyFile("/dev/null", kMissing.c_str(), 1));
}

TEST(CopyFile, LeavesTheTargetOfADeviceThatDoesNotEnd) {
  const std::string target = FileOf("existing", "target");
  const Pty silent;

  EXPECT_EQ(0, CopyFile(silent.path().c_str(), target.c_str(), 1));
  EXPECT_EQ(0, CopyFile("/dev/zero", target.c_str(), 1));

  EXPECT_EQ("existing", ReadWholeFile(target));
}

TEST(CopyFile, LeavesASourceThatIsTheTarget) {
  const std::string source = FileOf("kept", "source");
  fs::remove(PathOf("link"));
  fs::create_hard_link(source, PathOf("link"));

  EXPECT_EQ(0, CopyFile(source.c_str(), source.c_str(), 1));
  EXPECT_EQ(0, CopyFile(source.c_str(), PathOf("link").c_str(), 1));

  EXPECT_EQ("kept", ReadWholeFile(source));
}

TEST(CopyFile, ReportsFailedWrites) {
  const std::string source = FileOf("text", "source");

  EXPECT_EQ(0, CopyFile(source.c_str(), "/dev/full", 1));
  EXPECT_EQ(0, CopyFile(source.c_str(), kMissing.c_str(), 1));
  EXPECT_EQ(0, CopyFile(source.c_str(), nullptr, 1));
}

TEST(PathIsDirectory, TrustsATrailingSlash) {
  EXPECT_EQ(1, PathIsDirectory("/nonexistent/"));
  EXPECT_EQ(1, PathIsDirectory("/"));
}

TEST(PathIsDirectory, LooksAtTheDiskOtherwise) {
  EXPECT_EQ(1, PathIsDirectory(TemporaryFolder().c_str()));
  EXPECT_EQ(0, PathIsDirectory(FileOf("text").c_str()));
  EXPECT_EQ(0, PathIsDirectory(Pipe().c_str()));
  EXPECT_EQ(0, PathIsDirectory("/nonexistent"));
  EXPECT_EQ(0, PathIsDirectory(""));
  EXPECT_EQ(0, PathIsDirectory(nullptr));
}

TEST(GetBase64DataEx, EncodesAWholeFile) {
  char text[16];
  std::memset(text, '#', sizeof text);

  EXPECT_EQ(0, GetBase64DataEx(FileOf("Man!").c_str(), text));

  EXPECT_EQ(std::string("TWFuIQ==\0#######", 16), std::string(text, 16));
}

TEST(GetBase64DataEx, EncodesAsTheEncoderDoes) {
  const std::string content = Pattern(38862);
  std::string expected(51816, '#');
  ASSERT_EQ(51816, Base64_EncData(reinterpret_cast<const unsigned char*>(content.data()), 38862,
                                  expected.data(), 51816));
  std::string text(51817, '#');

  EXPECT_EQ(0, GetBase64DataEx(FileOf(content).c_str(), text.data()));

  EXPECT_TRUE(expected + '\0' == text);
}

TEST(GetBase64DataEx, ReportsWhatItCannotEncode) {
  char text[] = "#";

  EXPECT_EQ(-1, GetBase64DataEx(FileOf("").c_str(), text));
  EXPECT_EQ(-2, GetBase64DataEx(kMissing.c_str(), text));
  EXPECT_EQ(-2, GetBase64DataEx("/tmp", text));
  EXPECT_EQ(-2, GetBase64DataEx("/dev/zero", text));
  EXPECT_EQ(-2, GetBase64DataEx(Pipe().c_str(), text));
  EXPECT_EQ(-2, GetBase64DataEx(SparseFile((1 << 30) + 1).c_str(), text));
  EXPECT_EQ(-2, GetBase64DataEx(SparseFile(5'000'000'000).c_str(), text));
  EXPECT_EQ(-2, GetBase64DataEx(nullptr, text));
  EXPECT_EQ(-2, GetBase64DataEx(FileOf("text").c_str(), nullptr));
  EXPECT_STREQ("#", text);
}

TEST(GetBase64DataEx, LogsTheTextCutAsAnyMessage) {
  NEEDS_PRIVATE_ROOT();
  const std::string small = FileOf("Man", "small");
  const std::string large = FileOf(std::string(6000, '\0'), "large");
  std::string text(8001, '#');
  SwitchLogging(true);

  GetBase64DataEx(small.c_str(), text.data());
  GetBase64DataEx(large.c_str(), text.data());

  EXPECT_EQ((Lines{" TIME  TWFu", " TIME  " + std::string(4095, 'A')}), LogLines());
}

TEST(GetBase64FromFile, NegotiatesTheSizeAndNeverEncodes) {
  const std::string path = FileOf("Man");
  char text[8];
  std::memset(text, '#', sizeof text);
  int length = 3;

  EXPECT_EQ(-2, GetBase64FromFile(path.c_str(), nullptr, &length));
  EXPECT_EQ(4, length);
  length = 3;
  EXPECT_EQ(-2, GetBase64FromFile(path.c_str(), text, &length));
  EXPECT_EQ(4, length);
  EXPECT_EQ("########", std::string(text, 8));
  EXPECT_EQ(0, GetBase64FromFile(path.c_str(), text, &length));
  EXPECT_EQ(4, length);
  EXPECT_EQ(std::string("\0\0\0\0####", 8), std::string(text, 8));
}

TEST(GetBase64FromFile, ClearsTheWholeRoom) {
  char text[8];
  std::memset(text, '#', sizeof text);
  int length = 7;

  EXPECT_EQ(0, GetBase64FromFile(FileOf("Man").c_str(), text, &length));

  EXPECT_EQ(4, length);
  EXPECT_EQ(std::string("\0\0\0\0\0\0\0#", 8), std::string(text, 8));
}

TEST(GetBase64FromFile, ReportsAnEmptyFile) {
  const std::string path = FileOf("");
  char text[8];
  std::memset(text, '#', sizeof text);
  int length = 99;

  EXPECT_EQ(-2, GetBase64FromFile(path.c_str(), nullptr, &length));
  EXPECT_EQ(0, length);
  length = 4;
  EXPECT_EQ(-2, GetBase64FromFile(path.c_str(), text, &length));
  EXPECT_EQ(4, length);
  EXPECT_EQ(std::string("\0\0\0\0####", 8), std::string(text, 8));
}

TEST(GetBase64FromFile, ReportsAMissingFile) {
  char text[8];
  std::memset(text, '#', sizeof text);
  int length = 99;

  EXPECT_EQ(-2, GetBase64FromFile(kMissing.c_str(), nullptr, &length));
  EXPECT_EQ(0, length);
  length = 8;
  EXPECT_EQ(-2, GetBase64FromFile(kMissing.c_str(), text, &length));
  EXPECT_EQ("########", std::string(text, 8));
  EXPECT_EQ(-2, GetBase64FromFile("", text, &length));
  EXPECT_EQ(-2, GetBase64FromFile(nullptr, text, &length));
  EXPECT_EQ(-2, GetBase64FromFile(kMissing.c_str(), text, nullptr));
}

TEST(GetBase64FromFile, SaturatesASizeBeyondInt) {
  int length = 0;

  EXPECT_EQ(-2, GetBase64FromFile(SparseFile(2'000'000'000).c_str(), nullptr, &length));

  EXPECT_EQ(INT_MAX, length);
}

TEST(GetBase64FromFile, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const std::string path = FileOf("Man");
  char text[8];
  int length = 8;
  SwitchLogging(true);

  GetBase64FromFile(path.c_str(), text, &length);

  const std::string size = kPublic + "ReadFileData szImgFile: " + path + ", lenFile = 3 ";
  EXPECT_EQ((Lines{kPublic + "[GetBase64FromFile] Start ", size, kPublic + "~~~~~~~",
                   kPublic + "GetBase64FromFile nBaseLen : 4 ", size, kPublic + "!!!!!!!!",
                   kPublic + "ReadFileData lenR : 3 ", kPublic + "ReadFileData pData len : 3 "}),
            LogLines());
}

TEST(FileHelpers, LeaveNoDescriptorOpen) {
  const std::string path = FileOf("text");
  const std::string pipe = Pipe();
  char text[16];
  const std::ptrdiff_t before = OpenDescriptors();

  for (const char* each : {path.c_str(), pipe.c_str(), "/tmp", "/dev/zero", kMissing.c_str()}) {
    int length = 16;
    ReadFileData(each, reinterpret_cast<unsigned char*>(text), &length);
    GetBase64DataEx(each, text);
    GetBase64FromFile(each, text, &length);
    PathIsDirectory(each);
    CopyFile(each, PathOf("copy").c_str(), 0);
    CopyFile(each, PathOf("copy").c_str(), 1);
    CopyFile(path.c_str(), "/tmp", 1);
    CopyFile(path.c_str(), "/dev/full", 1);
  }
  WriteFileData(path.c_str(), "ab", 2);
  WriteFileData("/dev/full", "ab", 2);

  EXPECT_EQ(before, OpenDescriptors());
}
