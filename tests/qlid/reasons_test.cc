// Why a read failed, for programs: the `reason` and its fields in the JSON of an error.
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>
#include <set>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/qlid/usb_machine.h"
#include "tests/testing/private_root.h"

namespace {

using simulator::FaultId;

// The error of a command that prints one JSON document, which it says in both languages.
Json ErrorOf(std::vector<std::string> arguments) {
  arguments.emplace_back("--json");
  const Output output = RunQlid(std::move(arguments));
  Json document = Parse(output.out);
  EXPECT_NE(nullptr, document) << output.out << output.err;
  EXPECT_EQ("", output.err);
  return {cJSON_DetachItemFromObject(document.get(), "error"), cJSON_Delete};
}

std::string ReasonOf(const std::vector<std::string>& arguments) {
  return Member(ErrorOf(arguments).get(), "reason");
}

std::vector<std::string> Texts(const Json& error, const char* key) {
  std::vector<std::string> texts;
  const cJSON* text = nullptr;
  cJSON_ArrayForEach(text, Child(error, key)) texts.emplace_back(text->valuestring);
  return texts;
}

std::vector<std::string> Keys(const cJSON* object) {
  std::vector<std::string> keys;
  const cJSON* item = nullptr;
  cJSON_ArrayForEach(item, object) keys.emplace_back(item->string);
  return keys;
}

}  // namespace

TEST(QlidReason, TellsTheThreeKindsOfTimeOutApart) {
  simulator::TtyReader empty;
  Bench silent;
  silent.reader.SetFault({FaultId::kSilent, 0});
  Bench pulled;
  pulled.reader.SetFault({FaultId::kHangUp, 700});
  Bench unread;
  unread.reader.SetFault({FaultId::kBadCheck, 0});

  EXPECT_EQ("no-card", ReasonOf({"read", "--timeout", "1", "--device", empty.path()}));
  EXPECT_EQ("silent", ReasonOf(silent.Read({"--timeout", "1"})));
  EXPECT_EQ("unplugged", ReasonOf(pulled.Read()));
  EXPECT_EQ("unread", ReasonOf(unread.Read({"--timeout", "1"})));
}

TEST(QlidReason, TellsTheKindsOfPortsThatDoNotOpenApart) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;

  EXPECT_EQ("no-device", ReasonOf({"read", "--device", "/dev/quillonid-none"}));
  EXPECT_EQ("not-opened", ReasonOf({"read", "--device", "/dev/null"}));
  const Rival rival(bench.reader.path());
  const Json held = ErrorOf(bench.Read());
  EXPECT_EQ("held", Member(held.get(), "reason"));
  EXPECT_EQ(bench.reader.path(), Member(held.get(), "node"));
  const cJSON* holder = cJSON_GetArrayItem(Child(held, "holders"), 0);
  EXPECT_EQ(rival.Named(), Member(holder, "program") + " (pid " + Member(holder, "pid") + ")");
}

TEST(QlidReason, NamesTheNodeThatIsNotThere) {
  const Json error = ErrorOf({"read", "--device", "/dev/quillonid-none"});

  EXPECT_EQ("/dev/quillonid-none", Member(error.get(), "node"));
  EXPECT_EQ(1U, Texts(error, "next").size());
}

TEST(QlidReason, IsThatOfTheCodeWhereNothingMoreIsKnown) {
  const Bench bench("permit");
  Bench module;
  module.reader.SetFault({FaultId::kIcPowerOn, 0});

  EXPECT_EQ("card-kind", ReasonOf(bench.Read({"--kind", "resident"})));
  EXPECT_EQ("other", ReasonOf(module.Read()));
  EXPECT_EQ("argument", ReasonOf({"read", "--device", "COM1"}));
}

// The one cause of a photo that is missing, in words and for programs.
TEST(QlidReason, NamesTheOneCauseOfAMissingPhoto) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  Bench refused;
  refused.reader.SetFault({FaultId::kPhotoRefused, 0});
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  const std::string sound = ReadWholeFile(SPECIMEN_DECODER);
  std::string other_machine = sound;
  other_machine[18] = 21;  // e_machine: 64-bit PowerPC
  other_machine[19] = 0;
  std::string nameless = sound;
  for (std::size_t at = nameless.find("unpack"); at != std::string::npos;
       at = nameless.find("unpack", at))
    nameless[at] = 'U';
  struct Case {
    const char* reason;
    const char* cause;
    std::string decoder;
    const Bench* bench;
  };
  const Case cases[] = {
      {"decoder-unreadable", "/libwlt.so is no shared library",          "not a program", &bench  },
      {"decoder-machine",    "/libwlt.so is for ",                       other_machine,   &bench  },
      {"decoder-function",   "/libwlt.so has no function \"unpack\"",    nameless,        &bench  },
      {"decoder-refused",    "the decoder /libwlt.so refused the photo", sound,           &refused},
      {"decoder-missing",    "there is no /libwlt.so",                   "",              &bench  },
  };

  for (const Case& each : cases) {
    WriteWholeFile(kDecoderFile, each.decoder);
    if (each.decoder.empty()) unlink(kDecoderFile);
    const Output read = RunQlid(each.bench->Read({"--photo", photo}));
    EXPECT_EQ(7, read.exit) << each.reason;
    EXPECT_TRUE(Contains(read.err, std::string("  Cause   ") + each.cause)) << read.err;
    EXPECT_EQ(each.reason, ReasonOf(each.bench->Read({"--photo", photo})));
  }
}

// A node of root's needs several steps: each is an entry of `next`, and no label is empty.
TEST(QlidReason, GivesEachStepInEitherLanguage) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  chown(bench.reader.path().c_str(), 0, 0);
  chmod(bench.reader.path().c_str(), 0);
  prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */);

  const Json english = ErrorOf(bench.Read());
  const Json chinese = ErrorOf(bench.Read({"--lang", "zh"}));

  for (const Json* error : {&english, &chinese}) {
    EXPECT_EQ("no-permission", Member(error->get(), "reason"));
    EXPECT_EQ(bench.reader.path(), Member(error->get(), "node"));
    const std::vector<std::string> next = Texts(*error, "next");
    ASSERT_EQ(2U, next.size());
    EXPECT_EQ(0U, next[0].find("sudo chgrp dialout /dev/pts/")) << next[0];
    EXPECT_EQ(0U, next[1].find("sudo usermod -aG dialout ")) << next[1];
    const std::vector<std::string> labels = Keys(Child(*error, "details"));
    EXPECT_EQ(labels.size(), std::set<std::string>(labels.begin(), labels.end()).size());
    for (const std::string& label : labels) EXPECT_NE("", label);
  }
  EXPECT_NE(Member(english.get(), "message"), Member(chinese.get(), "message"));
}

TEST(QlidReason, IsOneOfTheSameInEverySchema) {
  const auto error_in = [](const std::string& name) {
    const Json schema = Parse(ReadWholeFile(SCHEMAS "/qlid." + name + "-1.schema.json"));
    return Json(cJSON_Duplicate(cJSON_GetObjectItem(Child(schema, "properties"), "error"), 1),
                cJSON_Delete);
  };

  const Json read = error_in("read");

  ASSERT_NE(nullptr, read);
  for (const char* name : {"explain", "packet", "probe", "usage"}) {
    EXPECT_TRUE(cJSON_Compare(read.get(), error_in(name).get(), 1)) << name;
  }
}

// The schema, the manual page and the Chinese one list the same reasons.
TEST(QlidReason, EachStandsInTheSchemaAndTheManualPages) {
  const Json schema = Parse(ReadWholeFile(SCHEMAS "/qlid.read-1.schema.json"));
  const cJSON* error = cJSON_GetObjectItem(Child(schema, "properties"), "error");
  const cJSON* reason = cJSON_GetObjectItem(cJSON_GetObjectItem(error, "properties"), "reason");
  std::set<std::string> listed;
  const cJSON* word = nullptr;
  cJSON_ArrayForEach(word, cJSON_GetObjectItem(reason, "enum")) listed.insert(word->valuestring);

  EXPECT_LT(20U, listed.size());
  for (const char* page : {"/qlid.1.scd", "/zh_CN/qlid.1.scd"}) {
    std::string text = ReadWholeFile(std::string(MANUAL_PAGES) + page);
    text.erase(0, text.find("[- *no-card*"));
    text.erase(text.find("\n# "));
    std::set<std::string> described;
    const std::regex bold("\\*([a-z][a-z-]*)\\*");
    for (std::sregex_iterator found(text.begin(), text.end(), bold), end; found != end; ++found)
      described.insert((*found)[1]);
    EXPECT_EQ(listed, described) << page;
  }
}
