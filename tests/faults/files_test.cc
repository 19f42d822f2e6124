// Files of the wrong kind wherever the library looks for one: a card is read all the same, or the
// photo alone is missing, and nothing waits for a pipe or a gigabyte.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "quillonid/quillonid.h"
#include "quillonid/support.h"
#include "simulator/tty_reader.h"
#include "tests/faults/reader_faults.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace faults {
namespace {

namespace fs = std::filesystem;

constexpr char kFolder[] = "/home/quillon";
constexpr int kPhotoFailed = -7;

std::string PhotoPath() { return TemporaryFolder() + "/photo.bmp"; }

// Configuration ---------------------------------------------------------------------------------

void Pipe(const char* path) {
  fs::remove_all(path);
  ASSERT_EQ(0, mkfifo(path, 0600));
}

void Folder(const char* path) {
  fs::remove_all(path);
  fs::create_directory(path);
}

void ConfigurationIsAPipe() { Pipe(kConfigurationFile); }
void ConfigurationIsAFolder() { Folder(kConfigurationFile); }
void ConfigurationHasAGibibyte() {
  WriteWholeFile(kConfigurationFile, "");
  fs::resize_file(kConfigurationFile, 1UL << 30);
}
void ConfigurationIsBinary() {
  std::string bytes;
  for (unsigned i = 0; i < 65536; ++i) bytes.push_back(static_cast<char>(i * 31 + i / 256));
  WriteWholeFile(kConfigurationFile, bytes);
}
void ConfigurationHasNoLineFeed() {
  WriteWholeFile(kConfigurationFile, "[QuillonLog]LogFlag=1" + std::string(100'000, 'x'));
}

// Log -------------------------------------------------------------------------------------------

// With the configuration in it, and the log off.
void FolderIsMissing() { fs::remove_all(kFolder); }

// The log stays on: its folder alone goes, once it has taken a line.
void LogFolderIsMissing() {
  const std::string folder = std::string(kFolder) + "/log";
  SwitchLogging(true);
  fs::create_directory(folder);
  SetLogPath("log/lines");
  DPrintLogToFile("%s", "line");
  ASSERT_TRUE(FileExists(folder + "/lines"));
  fs::remove_all(folder);
  ASSERT_NE(0, isWriteLog());
}

// A small file system in the folder's place, for this test's private root alone.
void MountFolder() {
  ASSERT_EQ(0, mount("quillonid", kFolder, "tmpfs", 0, "size=8k")) << "in the private root";
  SwitchLogging(true);
}
void LogFolderIsReadOnly() {
  MountFolder();
  ASSERT_EQ(0, mount("", kFolder, "", MS_REMOUNT | MS_RDONLY, nullptr));
}
void LogFolderIsFull() {
  MountFolder();
  const int filler = open((std::string(kFolder) + "/filler").c_str(), O_CREAT | O_WRONLY, 0600);
  const std::string block(4096, 'x');
  while (write(filler, block.data(), block.size()) > 0) {
  }
  close(filler);
}
void LogIsAPipe() {
  SwitchLogging(true);
  Pipe(kLogFile);
}
void LogIsAFolder() {
  SwitchLogging(true);
  Folder(kLogFile);
}

// Photo and decoder -----------------------------------------------------------------------------

void PhotoIsAFolder() { Folder(PhotoPath().c_str()); }
void PhotoHasNoFolder() { fs::create_symlink("/nonexistent/photo.bmp", PhotoPath()); }
void PhotoIsReadOnly() {
  const std::string folder = TemporaryFolder() + "/read-only";
  fs::create_directory(folder);
  ASSERT_EQ(0, mount("quillonid", folder.c_str(), "tmpfs", MS_RDONLY, nullptr));
  fs::create_symlink(folder + "/photo.bmp", PhotoPath());
}
void PhotoIsAFullDisk() { fs::create_symlink("/dev/full", PhotoPath()); }

void DecoderIsMissing() { fs::remove(kDecoderFile); }
void DecoderIs(const std::string& which) {
  fs::copy_file(QL_DECODERS + which + ".so", kDecoderFile, fs::copy_options::overwrite_existing);
}
void DecoderHasNoUnpack() { DecoderIs("decoder_without_unpack"); }
void DecoderFails() { DecoderIs("decoder_failing"); }
void DecoderWritesTooMuch() { DecoderIs("decoder_writing_too_much"); }
void DecoderWritesFarTooMuch() { DecoderIs("decoder_writing_far_too_much"); }
void DecoderIsNoLibrary() {
  fs::remove(kDecoderFile);
  WriteWholeFile(kDecoderFile,
                 "\x7F"
                 "ELF, but no more");
}

struct FileFault {
  const char* name;
  void (*prepare)();
  int result;
};

void PrintTo(const FileFault& row, std::ostream* out) { *out << row.name; }

constexpr FileFault kFileFaults[] = {
    {"ConfigurationIsAPipe",       ConfigurationIsAPipe,       0           },
    {"ConfigurationIsAFolder",     ConfigurationIsAFolder,     0           },
    {"ConfigurationHasAGibibyte",  ConfigurationHasAGibibyte,  0           },
    {"ConfigurationIsBinary",      ConfigurationIsBinary,      0           },
    {"ConfigurationHasNoLineFeed", ConfigurationHasNoLineFeed, 0           },
    {"FolderIsMissing",            FolderIsMissing,            0           },
    {"LogFolderIsMissing",         LogFolderIsMissing,         0           },
    {"LogFolderIsReadOnly",        LogFolderIsReadOnly,        0           },
    {"LogFolderIsFull",            LogFolderIsFull,            0           },
    {"LogIsAPipe",                 LogIsAPipe,                 0           },
    {"LogIsAFolder",               LogIsAFolder,               0           },
    {"PhotoIsAFolder",             PhotoIsAFolder,             kPhotoFailed},
    {"PhotoHasNoFolder",           PhotoHasNoFolder,           kPhotoFailed},
    {"PhotoIsReadOnly",            PhotoIsReadOnly,            kPhotoFailed},
    {"PhotoIsAFullDisk",           PhotoIsAFullDisk,           kPhotoFailed},
    {"DecoderIsMissing",           DecoderIsMissing,           kPhotoFailed},
    {"DecoderHasNoUnpack",         DecoderHasNoUnpack,         kPhotoFailed},
    {"DecoderFails",               DecoderFails,               kPhotoFailed},
    {"DecoderWritesTooMuch",       DecoderWritesTooMuch,       kPhotoFailed},
    {"DecoderWritesFarTooMuch",    DecoderWritesFarTooMuch,    kPhotoFailed},
    {"DecoderIsNoLibrary",         DecoderIsNoLibrary,         kPhotoFailed},
};

// Whatever was prepared: the folder is empty, the decoder where it belongs.
void TakeAway() {
  umount2(kFolder, MNT_DETACH);
  fs::create_directories(kFolder);
  for (const auto& entry : fs::directory_iterator(kFolder)) fs::remove_all(entry.path());
  whole::InstallDecoder();
}

class ReadWhere : public testing::TestWithParam<FileFault> {};

TEST_P(ReadWhere, EndsSo) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  GetParam().prepare();
  ASSERT_FALSE(HasFatalFailure());
  simulator::TtyReader reader;
  reader.PutCard(simulator::MakeCard("resident"));
  std::string photo = PhotoPath();
  PERSONINFO_COLLECT_FP record = {};
  const double start = stand_in_clock::Seconds();

  const int result =
      APP_ID_ReadCollectIDCard_FP(reader.path().c_str(), "", 9600, 10, photo.data(), &record);

  EXPECT_EQ(GetParam().result, result);
  EXPECT_LE(stand_in_clock::Seconds() - start, kGoodRead + Slack());
  EXPECT_EQ(result == 0, fs::is_regular_file(photo));
  // The text is there also without the photo.
  const auto members = whole::Members<PERSONINFO_COLLECT_FP>();
  EXPECT_EQ(RecordTexts(simulator::MakeCard("resident"), members, true, true),
            TextsOf(&record, members));
  EXPECT_FALSE(fs::is_regular_file(kLogFile) && fs::file_size(kLogFile) > 0);

  TakeAway();
  std::string next_photo = TemporaryFolder() + "/next.bmp";
  record = {};
  EXPECT_EQ(0, APP_ID_ReadCollectIDCard_FP(reader.path().c_str(), "", 9600, 10, next_photo.data(),
                                           &record));
  EXPECT_TRUE(fs::is_regular_file(next_photo));
}

INSTANTIATE_TEST_SUITE_P(, ReadWhere, testing::ValuesIn(kFileFaults),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace faults
