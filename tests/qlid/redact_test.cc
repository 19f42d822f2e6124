// What --redact leaves of a card: nothing of the fields that identify its holder, in any form of
// output. The cards have every field filled to its last character.
#include <gtest/gtest.h>

#include <set>

#include "simulator/packets.h"
#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

const char* const kFullCards[] = {"resident-full", "foreigner-full", "permit-full"};

// What says nothing about who the holder is. All other fields do.
const std::set<std::string> kHarmless = {"sexCode",    "nationCode", "police",
                                         "validStart", "validEnd",   "version",
                                         "govCode",    "cardType",   "signTimes"};

using Words = std::vector<std::string>;

// clang-format off
const std::vector<Words> kReadForms = {
    {"--redact"},
    {"--redact", "--json"},
    {"--redact", "--exec", "cat"},
    {"--redact", "--trace"},
};
const std::vector<Words> kDecodeForms = {
    {"decode", "--redact"},
    {"decode", "--redact", "--json"},
    {"decode", "--redact", "--explain"},
    {"decode", "--redact", "--explain", "--json"},
    {"decode", "--redact", "--packet"},
    {"decode", "--redact", "--packet", "--json"},
};
// clang-format on

std::string Saved(const simulator::Card& card, bool fingerprints) {
  const std::string file = TemporaryFolder() + "/" + card.person.id + ".bin";
  WriteWholeFile(file, Text(simulator::NativeData(card, fingerprints)));
  return file;
}

std::string HexOf(const simulator::Bytes& bytes, std::size_t most) {
  std::string text;
  char byte[4];
  for (std::size_t i = 0; i < bytes.size() && i < most; ++i) {
    snprintf(byte, sizeof byte, i == 0 ? "%02X" : " %02X", bytes[i]);
    text += byte;
  }
  return text;
}

void ExpectNothingPersonal(const simulator::Card& card, const Output& output) {
  ASSERT_NE("", output.out);
  const std::string text = output.out + output.err;
  for (const auto& [field, value] : card.person.text) {
    if (kHarmless.count(field) != 0) continue;
    EXPECT_FALSE(Contains(text, value)) << field << " in " << text;
    // As many bytes as a line of decode --explain shows.
    EXPECT_FALSE(Contains(text, HexOf(simulator::Ucs2(value), 8))) << field << " in " << text;
  }
  const std::string birthday = card.person.text.at("birthday");
  EXPECT_FALSE(Contains(text, birthday.substr(0, 4))) << "year of birth in " << text;
  EXPECT_FALSE(Contains(text, birthday.substr(2, 6))) << "date in the number, in " << text;
}

}  // namespace

TEST(QlidRedact, LeavesNothingPersonalOfACardThatIsRead) {
  for (const char* id : kFullCards) {
    const Bench bench(id);
    for (const Words& form : kReadForms) {
      ExpectNothingPersonal(bench.card, RunQlid(bench.Read(form)));
    }
  }
}

TEST(QlidRedact, LeavesNothingPersonalOfACardThatIsWatched) {
  for (const char* id : kFullCards) {
    const Bench bench(id);
    Program watch(Qlid(bench.Read({"--watch", "--json", "--redact"})));
    ASSERT_TRUE(watch.WaitFor("elapsed_ms")) << watch.err();

    watch.Signal(SIGINT);
    ExpectNothingPersonal(bench.card, watch.Finish());
  }
}

TEST(QlidRedact, LeavesNothingPersonalOfASavedAnswer) {
  for (const char* id : kFullCards) {
    const simulator::Card card = simulator::MakeCard(id, true);
    for (Words form : kDecodeForms) {
      form.push_back(Saved(card, true));
      ExpectNothingPersonal(card, RunQlid(form));
    }
  }
}

TEST(QlidRedact, LeavesWhatFindsFaults) {
  const simulator::Card resident = simulator::MakeCard("resident-full", true);
  const simulator::Card foreigner = simulator::MakeCard("foreigner-full", true);

  const Json masked = Parse(RunQlid({"decode", "--redact", "--json", Saved(resident, true)}).out);
  const Json former = Parse(RunQlid({"decode", "--redact", "--json", Saved(foreigner, true)}).out);
  const Output people = RunQlid({"decode", "--redact", Saved(resident, true)});

  const cJSON* card = Child(masked, "card");
  EXPECT_EQ("999999********0038", Member(card, "IDNumber"));
  EXPECT_EQ("********", Member(card, "Birth"));
  EXPECT_EQ("20150301", Member(card, "CardActivityStart"));
  EXPECT_EQ("98", Member(card, "NationCode"));
  // The date stands further behind in the number of 15 characters.
  EXPECT_EQ("LBY999*******03", Member(Child(former, "card"), "IDNumber"));
  EXPECT_EQ("I", Member(Child(former, "card"), "CardType"));
  EXPECT_TRUE(Contains(people.out, "Fingers     masked\n")) << people.out;
}
