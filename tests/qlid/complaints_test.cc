// What people complain of with readers of identity cards, and the answer that they get here. A test
// for each; docs/troubleshooting.md tells the same in words.
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/testing/private_root.h"

namespace {

// Of a card answer: preamble, length, status, and the lengths of text and photo stand before it.
constexpr std::size_t kTextStart = 14;

std::string WordBehind(const std::string& text, const std::string& label) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  " + label, 0) == 0) return line.substr(2 + label.size());
  }
  return "";
}

}  // namespace

TEST(Complaint, ItWorksAsRootAlone) {
  const Bench bench;
  // A superuser without this capability obeys the mode bits.
  const bool dropped = prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */) == 0;
  if (!dropped && geteuid() == 0) GTEST_SKIP() << "this user may open whatever it wants to";
  chmod(bench.reader.path().c_str(), 0);

  const Output read = RunQlid(bench.Read());
  const Output rules = RunQlid({"doctor", "--print-udev-rules"});

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "no permission to open the reader")) << read.err;
  EXPECT_TRUE(Contains(read.err, "mode 0000; your groups: ")) << read.err;
  EXPECT_TRUE(Contains(read.err, "sudo ") || Contains(read.err, "log out")) << read.err;
  EXPECT_TRUE(Contains(rules.out, "MODE=\"0660\", GROUP=\"plugdev\", TAG+=\"uaccess\""));
}

#ifdef WITH_USB_READER
TEST(Complaint, NoReaderIsFoundAlthoughTheSystemShowsIt) {
  // The kernel has given the reader to a driver of its own.
  const std::vector<std::string> on_usb = {WITH_USB_READER, "--driver", "usbhid", QLID_PROGRAM};
  std::vector<std::string> devices = on_usb;
  devices.emplace_back("devices");
  std::vector<std::string> read = on_usb;
  read.emplace_back("read");

  const Output listed = RunProgram(devices);
  const Output done = RunProgram(read);

  EXPECT_TRUE(Contains(listed.out, "kernel driver usbhid holds it; the library detaches it"))
      << listed.out;
  EXPECT_EQ(0, done.exit) << done.err;
}
#endif

TEST(Complaint, ASerialReaderIsNotFound) {
  const Bench bench;

  const Output found = RunQlid({"devices", "--probe", bench.reader.path()});

  EXPECT_TRUE(Contains(found.out, "a reader answered")) << found.out;
}

TEST(Complaint, ACallNeverReturns) {
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});
  const auto start = std::chrono::steady_clock::now();

  const Output read = RunQlid({"read", "--device", silent.path(), "--timeout", "2"});

  EXPECT_EQ(4, read.exit);
  EXPECT_TRUE(Contains(read.err, "the reader did not answer within 2 s (-5)")) << read.err;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(40));
}

TEST(Complaint, TheReaderIsBusy) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  const Rival rival(bench.reader.path());

  const Output read = RunQlid(bench.Read());

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "Held by  " + rival.Named())) << read.err;
}

TEST(Complaint, ItStopsAfterHours) {
  const std::string port = TemporaryFolder() + "/reader";
  auto reader = std::make_unique<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("resident"));
  std::filesystem::create_symlink(reader->path(), port);
  Program watch(
      Qlid({"read", "--watch", "--json", "--timeout", "1", "--device", "/dev/.." + port}));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  reader.reset();
  ASSERT_TRUE(watch.WaitFor("waiting for it to come back")) << watch.err();
  simulator::TtyReader again;
  again.PutCard(simulator::MakeCard("permit"));
  std::filesystem::remove(port);
  std::filesystem::create_symlink(again.path(), port);

  EXPECT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
  watch.Signal(SIGINT);
  EXPECT_EQ(0, watch.Finish().exit);
}

TEST(Complaint, TheTextIsWrong) {
  const Bench bench("foreigner");
  const std::string file = TemporaryFolder() + "/card.bin";
  const Output read = RunQlid(bench.Read({"--native", file}));
  ASSERT_EQ(0, read.exit) << read.err;

  const Output sound = RunQlid({"decode", "--explain", file});
  std::string bytes = ReadWholeFile(file);
  bytes[kTextStart] = 'Z';  // The first letter of the name is another one on its way.
  WriteWholeFile(file, bytes);
  const Output damaged = RunQlid({"decode", "--explain", file});

  // Every byte stands beside what was made of it, and it is seen on which side the mistake is.
  const std::string name = bench.card.person.text.at("EngName");
  EXPECT_TRUE(Contains(sound.out, "English name, 120 bytes UCS-2")) << sound.out;
  EXPECT_TRUE(Contains(sound.out, "  " + name + "\n")) << sound.out;
  EXPECT_FALSE(Contains(sound.out, "wrong")) << sound.out;
  EXPECT_TRUE(Contains(damaged.out, "  Z" + name.substr(1) + "\n")) << damaged.out;
  EXPECT_TRUE(Contains(damaged.out, "wrong: ")) << damaged.out;
}

TEST(Complaint, ThePhotoIsWrong) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench("foreigner");
  const std::string photo = TemporaryFolder() + "/photo.bmp";

  const Output read = RunQlid(bench.Read({"--photo", photo}));

  EXPECT_EQ(7, read.exit);
  EXPECT_TRUE(Contains(read.out, bench.card.person.text.at("EngName"))) << read.out;
  EXPECT_TRUE(Contains(read.err, "Cause   there is no /libwlt.so\n")) << read.err;
}

TEST(Complaint, ItIsNotPackagedForMyMachine) {
  NEEDS_PRIVATE_ROOT();
  utsname machine = {};
  uname(&machine);
  const bool home = std::string(machine.machine) == "aarch64";
  const std::string mine = home ? "aarch64" : "x86-64";
  const std::string other = home ? "x86-64" : "aarch64";
  std::string decoder = ReadWholeFile(SPECIMEN_DECODER);
  decoder[offsetof(Elf64_Ehdr, e_machine)] = static_cast<char>(home ? EM_X86_64 : EM_AARCH64);
  WriteWholeFile(kDecoderFile, decoder);

  const Output doctor = RunQlid({"doctor", "--device", "/dev/quillonid-none"});

  // Library and decoder are each told with the machine that they are for.
  EXPECT_TRUE(Contains(doctor.out, "(libquillonid.so.1), " + mine + "\n")) << doctor.out;
  EXPECT_TRUE(
      Contains(doctor.out, "FAIL  /libwlt.so is for " + other + "; this machine is " + mine))
      << doctor.out;
  // The packages are made for whatever Linux machine builds them.
  std::istringstream control(ReadWholeFile(DOCUMENTS "/debian/control"));
  int packages = 0;
  for (std::string line; std::getline(control, line);) {
    if (line.rfind("Architecture:", 0) != 0) continue;
    EXPECT_EQ("Architecture: linux-any", line);
    ++packages;
  }
  EXPECT_EQ(3, packages);
}

TEST(Complaint, AnErrorSaysNothing) {
  for (const char* fault : {"select-no-card", "ic-power-on", "select-unknown", "other-kind"}) {
    const Output demo = RunQlid({"demo", "--fault", fault});

    EXPECT_NE(0, demo.exit) << fault;
    EXPECT_TRUE(Contains(demo.err, " (-")) << demo.err;  // what
    EXPECT_NE("", WordBehind(demo.err, "Causes")) << demo.err;
    EXPECT_NE("", WordBehind(demo.err, "Next")) << demo.err;
  }
}

TEST(Complaint, ItIsNotMadeForScripts) {
  const Bench bench;

  const Output good = RunQlid(bench.Read({"--json"}));
  const Output bad = RunQlid({"read", "--json", "--device", "/dev/quillonid-none"});

  EXPECT_EQ(0, good.exit);
  EXPECT_EQ("true", Member(Parse(good.out).get(), "ok"));
  EXPECT_EQ("", good.err);
  EXPECT_EQ(3, bad.exit);
  EXPECT_EQ("false", Member(Parse(bad.out).get(), "ok"));
  EXPECT_EQ("", bad.err);
}

TEST(Complaint, ThereIsNothingToTestWith) {
  const std::string link = TemporaryFolder() + "/reader";
  Program simulate(Qlid({"simulate", "--card", "permit", "--link", link}));
  ASSERT_TRUE(simulate.WaitFor("/dev/pts/")) << simulate.err();
  ASSERT_TRUE(simulate.WaitFor("Ctrl-C ends it.")) << simulate.err();

  const Output read = RunQlid({"read", "--device", "/dev/.." + link});

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, simulator::FindSpecimen("permit")->text.at("passNumber")))
      << read.out;
}
