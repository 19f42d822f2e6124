// qlid doctor: a verdict for every link of the chain, a remedy for each that fails.
#include <elf.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "tests/qlid/bench.h"
#include "tests/qlid/usb_machine.h"
#include "tests/testing/private_root.h"

namespace {

// The verdict of the first check of that id in that group; its text and remedy in `words`.
std::string VerdictOf(const Json& document, const char* group_id, const char* check_id,
                      std::string* words = nullptr) {
  const cJSON* group = nullptr;
  cJSON_ArrayForEach(group, Child(document, "groups")) {
    if (Member(group, "id") != group_id) continue;
    const cJSON* check = nullptr;
    cJSON_ArrayForEach(check, cJSON_GetObjectItemCaseSensitive(group, "checks")) {
      if (Member(check, "id") != check_id) continue;
      if (words) {
        *words = Member(check, "text");
        const cJSON* step = nullptr;
        cJSON_ArrayForEach(step, cJSON_GetObjectItemCaseSensitive(check, "remedy")) {
          *words += std::string("\n") + step->valuestring;
        }
      }
      return Member(check, "verdict");
    }
  }
  return "no such check";
}

std::string Verdict(const std::vector<std::string>& more, const char* group, const char* check,
                    std::string* words) {
  std::vector<std::string> arguments = {"doctor", "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const Output doctor = RunQlid(arguments);
  const Json document = Parse(doctor.out);
  EXPECT_NE(nullptr, document) << doctor.out << doctor.err;
  return VerdictOf(document, group, check, words);
}

std::string Verdict(const char* group, const char* check, std::string* words) {
  return Verdict({}, group, check, words);
}

std::string SpecimenDecoder() { return ReadWholeFile(SPECIMEN_DECODER); }

}  // namespace

TEST(QlidDoctor, FindsNothingWrongWithASoundReader) {
  NEEDS_PRIVATE_ROOT();
  WriteWholeFile(kDecoderFile, SpecimenDecoder());
  const Bench bench;

  const Output doctor = RunQlid({"doctor", "--device", bench.reader.path()});

  EXPECT_TRUE(Contains(doctor.out, "card module ready, answered in")) << doctor.out;
  EXPECT_TRUE(Contains(doctor.out, "a card was found and selected (not read)")) << doctor.out;
  EXPECT_TRUE(Contains(doctor.out, "exports \"unpack\"")) << doctor.out;
  EXPECT_TRUE(Contains(doctor.out, "libquillonid 1.0.0 (libquillonid.so.1)")) << doctor.out;
}

TEST(QlidDoctor, ExitStatusAndSumAgreeWithTheVerdicts) {
  const Output doctor = RunQlid({"doctor", "--json"});

  const Json document = Parse(doctor.out);
  ASSERT_NE(nullptr, document) << doctor.out;
  EXPECT_EQ("qlid.doctor/1", Member(document.get(), "schema"));
  int failed = 0;
  const cJSON* group = nullptr;
  cJSON_ArrayForEach(group, Child(document, "groups")) {
    const cJSON* check = nullptr;
    cJSON_ArrayForEach(check, cJSON_GetObjectItemCaseSensitive(group, "checks")) {
      const std::string verdict = Member(check, "verdict");
      failed += verdict == "fail" ? 1 : 0;
      EXPECT_NE("", Member(check, "text"));
      if (verdict == "fail" || verdict == "warn") {
        EXPECT_NE(0, cJSON_GetArraySize(cJSON_GetObjectItemCaseSensitive(check, "remedy")))
            << Member(check, "text");
      }
    }
  }
  EXPECT_EQ(std::to_string(failed), Member(document.get(), "problems"));
  EXPECT_EQ(failed == 0 ? "true" : "false", Member(document.get(), "ok"));
  EXPECT_EQ(failed == 0 ? 0 : 1, doctor.exit);
}

TEST(QlidDoctor, SaysThatTheDecoderIsMissing) {
  NEEDS_PRIVATE_ROOT();
  std::string words;

  EXPECT_EQ("fail", Verdict("decoder", "file", &words));

  EXPECT_TRUE(Contains(words, "there is no /libwlt.so")) << words;
  EXPECT_EQ("skip", Verdict("decoder", "function", &words));
}

TEST(QlidDoctor, SaysThatTheDecoderIsForAnotherMachine) {
  NEEDS_PRIVATE_ROOT();
  std::string decoder = SpecimenDecoder();
  decoder[offsetof(Elf64_Ehdr, e_machine)] = EM_386;
  decoder[offsetof(Elf64_Ehdr, e_machine) + 1] = 0;
  WriteWholeFile(kDecoderFile, decoder);
  std::string words;

  EXPECT_EQ("fail", Verdict("decoder", "file", &words));

  EXPECT_TRUE(Contains(words, "/libwlt.so is for x86; this machine is ")) << words;
  EXPECT_EQ("skip", Verdict("decoder", "function", &words));
}

TEST(QlidDoctor, SaysThatTheDecoderHasNoUnpack) {
  NEEDS_PRIVATE_ROOT();
  std::string decoder = SpecimenDecoder();
  const std::string name("\0unpack\0", 8);
  const std::string other("\0unpick\0", 8);
  for (std::size_t at = 0; (at = decoder.find(name, at)) != std::string::npos;)
    decoder.replace(at, name.size(), other);
  WriteWholeFile(kDecoderFile, decoder);
  std::string words;

  EXPECT_EQ("fail", Verdict("decoder", "function", &words));

  EXPECT_TRUE(Contains(words, "no function \"unpack\"")) << words;
  EXPECT_EQ("ok", Verdict("decoder", "file", &words));
}

TEST(QlidDoctor, LooksIntoADamagedDecoderWithoutHarm) {
  NEEDS_PRIVATE_ROOT();
  const std::string decoder = SpecimenDecoder();
  std::string words;

  WriteWholeFile(kDecoderFile, "no library at all, but a text of some length\n");
  EXPECT_EQ("fail", Verdict("decoder", "file", &words));
  EXPECT_TRUE(Contains(words, "is no shared library")) << words;

  for (const std::size_t size : {20U, 63U, 64U, 200U}) {
    WriteWholeFile(kDecoderFile, decoder.substr(0, size));
    EXPECT_EQ("skip", Verdict("decoder", "function", &words)) << size << words;
  }
}

TEST(QlidDoctor, WarnsThatLoggingIsOnAndOfWhatTheLogHolds) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  WriteWholeFile(kLogFile, "line\r\n");
  chmod(kLogFile, 0644);
  std::string words;

  EXPECT_EQ("warn", Verdict("library", "log", &words));

  EXPECT_TRUE(Contains(words, "mode 0644, readable by everyone")) << words;
  EXPECT_TRUE(Contains(words, "qlid log --redact")) << words;
}

TEST(QlidDoctor, FindsALogFlagThatIsIgnored) {
  NEEDS_PRIVATE_ROOT();
  WriteWholeFile(kConfigurationFile, "[QuillonLog]\nLogFlag=1");
  std::string words;

  EXPECT_EQ("warn", Verdict("library", "configuration", &words));

  EXPECT_TRUE(Contains(words, "no line feed")) << words;
}

TEST(QlidDoctor, FindsAConfigurationThatIsNoFile) {
  NEEDS_PRIVATE_ROOT();
  ASSERT_EQ(0, mkdir(kConfigurationFile, 0700));
  std::string words;

  EXPECT_EQ("fail", Verdict("library", "configuration", &words));
}

TEST(QlidDoctor, TellsASilentReaderFromAReadyOne) {
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});
  std::string words;

  EXPECT_EQ("fail", Verdict({"--device", silent.path()}, "reader", "answer", &words));

  EXPECT_TRUE(Contains(words, "did not answer")) << words;
  EXPECT_TRUE(Contains(words, "--baud 9600")) << words;
}

TEST(QlidDoctor, SkipsTheCardWhenNoneLiesThere) {
  simulator::TtyReader empty;
  std::string words;

  EXPECT_EQ("skip", Verdict({"--device", empty.path()}, "reader", "card", &words));

  EXPECT_TRUE(Contains(words, "no card lies on the reader")) << words;
}

TEST(QlidDoctor, SaysWhyACardIsNotSelected) {
  const std::pair<simulator::FaultId, const char*> kFaults[] = {
      {simulator::FaultId::kSelectNoCard,  "(-10)" },
      {simulator::FaultId::kIcPowerOn,     "(-100)"},
      {simulator::FaultId::kSelectUnknown, "(-2)"  },
  };
  for (const auto& [fault, code] : kFaults) {
    Bench bench;
    bench.reader.SetFault({fault, 0});
    std::string words;

    EXPECT_EQ("fail", Verdict({"--device", bench.reader.path()}, "reader", "card", &words));

    EXPECT_TRUE(Contains(words, "a card was found and not selected: ")) << words;
    EXPECT_TRUE(Contains(words, code)) << words;
  }
}

TEST(QlidDoctor, RefusesWhatTheLibraryWouldMisunderstand) {
  const Bench bench;
  std::string speed;
  std::string device;

  EXPECT_EQ("fail", Verdict({"--device", bench.reader.path(), "--baud", "14400"}, "reader", "open",
                            &speed));
  EXPECT_EQ("fail", Verdict({"--device", "COM1"}, "reader", "open", &device));

  EXPECT_TRUE(Contains(speed, "14400 is not a speed of this reader link")) << speed;
  EXPECT_TRUE(Contains(speed, "115200 230400")) << speed;
  EXPECT_TRUE(Contains(device, "\"COM1\" names no device on Linux")) << device;
  EXPECT_TRUE(Contains(device, "--device /dev/ttyUSB0")) << device;
  EXPECT_TRUE(bench.reader.Requests().empty());
}

// As /proc looks to a user from whom mount options hide the programs of others, the first of all
// among them.
TEST(QlidDoctor, FindsNobodyInnocentWhereProgramsAreHidden) {
  NEEDS_PRIVATE_ROOT();
  const UsbMachine machine;
  ASSERT_EQ(0, mount("tmpfs", "/proc/1", "tmpfs", 0, nullptr));
  std::string words;

  EXPECT_EQ("skip", Verdict("usb", "holders", &words));
  EXPECT_TRUE(Contains(words, "sudo qlid doctor")) << words;
  EXPECT_EQ("skip", Verdict("serial", "ModemManager", &words));
  EXPECT_TRUE(Contains(words, "whether ModemManager runs")) << words;
  EXPECT_EQ("skip", Verdict("serial", "brltty", &words));
}

TEST(QlidDoctor, FindsThatNobodyMeddlesWhereAllIsShown) {
  std::string words;

  const std::string verdict = Verdict("serial", "brltty", &words);

  EXPECT_TRUE(verdict == "ok" || Contains(words, "brltty (pid ")) << verdict << words;
}

TEST(QlidDoctor, SaysThatTheNamedPortIsNotThere) {
  std::string words;

  EXPECT_EQ("fail", Verdict({"--device", "/dev/quillonid-none"}, "reader", "open", &words));

  EXPECT_TRUE(Contains(words, "there is no /dev/quillonid-none")) << words;
}

TEST(QlidDoctor, ExplainsAMissingPermissionWithCommandsToType) {
  const Bench bench;
  // A superuser without this capability obeys the mode bits.
  prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */);
  chmod(bench.reader.path().c_str(), 0);
  std::string words;

  const std::string verdict = Verdict({"--device", bench.reader.path()}, "reader", "open", &words);
  if (verdict == "ok") GTEST_SKIP() << "this user may open whatever it wants to";

  EXPECT_EQ("fail", verdict);
  EXPECT_TRUE(Contains(words, "may not write to " + bench.reader.path())) << words;
  EXPECT_TRUE(Contains(words, "mode 0000; your groups: ")) << words;
  EXPECT_TRUE(Contains(words, "usermod -aG") || Contains(words, "log out and in again")) << words;
}

TEST(QlidDoctor, PrintsTheRulesThatThePackageInstalls) {
  const Output rules = RunQlid({"doctor", "--print-udev-rules"});

  EXPECT_EQ(0, rules.exit);
  EXPECT_EQ(ReadWholeFile(UDEV_RULES), rules.out);
}

TEST(QlidDoctor, PrintsARuleForAReaderOfAnotherId) {
  const std::string installed = ReadWholeFile(UDEV_RULES);

  const Output rules = RunQlid({"doctor", "--print-udev-rules", "--usb-id", "1234:5678"});

  // The last rule of the file, for that id.
  const std::string last = installed.substr(installed.rfind("SUBSYSTEM"));
  std::string expected = last;
  expected.replace(expected.find("2b46"), 4, "1234").replace(expected.find("bc01"), 4, "5678");
  EXPECT_EQ(installed + expected, rules.out);
}

TEST(QlidDoctor, SpeaksChinese) {
  const Output doctor = RunQlid({"--lang", "zh", "doctor", "--device", "/dev/quillonid-none"});

  EXPECT_EQ(1, doctor.exit);
  EXPECT_TRUE(Contains(doctor.out, "没有 /dev/quillonid-none")) << doctor.out;
}
