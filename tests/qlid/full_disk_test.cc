// Standard output that takes nothing: what is lost there never counts as done.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

struct Ended {
  int status;
  std::string err;
};

// Runs qlid with its standard output on a device that is always full.
Ended RunOnFullDisk(const std::string& arguments) {
  int status = 0;
  const std::string err = OutputOf(std::string("LC_ALL=C.UTF-8 " QL_EMULATOR " " QLID_PROGRAM " ") +
                                       arguments + " 2>&1 >/dev/full",
                                   &status);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, err};
}

constexpr char kLost[] = "qlid: standard output could not be written\n";

}  // namespace

TEST(QlidOnAFullDisk, SaysThatACardWasLost) {
  const Bench bench;
  for (const char* form : {"", " --json", " --native -"}) {
    const Ended read = RunOnFullDisk("read --device " + bench.reader.path() + form);

    EXPECT_NE(0, read.status) << form;
    EXPECT_TRUE(Contains(read.err, "  Cause   No space left on device\n")) << form << read.err;
  }
}

TEST(QlidOnAFullDisk, LeavesWithTheStatusOfAFailure) {
  const std::string file = TemporaryFolder() + "/card.bin";
  WriteWholeFile(file, Text(simulator::NativeData(simulator::MakeCard("resident"), false)));
  const std::string log = TemporaryFolder() + "/log";
  WriteWholeFile(log, std::string(100'000, '\n'));

  for (const std::string& arguments :
       {"decode " + file, "decode --json " + file, "decode --explain " + file,
        "decode --packet " + file, "log " + log, std::string("devices --known"),
        std::string("explain"), std::string("explain -5"), std::string("completion bash"),
        std::string("simulate --person help"), std::string("doctor --print-udev-rules"),
        std::string("read --help"), std::string("--version")}) {
    const Ended ended = RunOnFullDisk(arguments);

    EXPECT_EQ(8, ended.status) << arguments;
    EXPECT_TRUE(Contains(ended.err, kLost)) << arguments << ": " << ended.err;
  }
}

TEST(QlidOnAFullDisk, KeepsTheStatusOfAnotherFailure) {
  const Ended doctor = RunOnFullDisk("doctor --device /dev/quillonid-none");

  EXPECT_EQ(1, doctor.status);
  EXPECT_TRUE(Contains(doctor.err, kLost)) << doctor.err;
}
