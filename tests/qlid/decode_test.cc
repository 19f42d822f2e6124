// qlid decode --explain: every byte of an answer, held against the simulated reader's own layout.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <tuple>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

std::string SavedAnswer(const simulator::Bytes& answer) {
  std::string file = TemporaryFolder() + "/card.bin";
  WriteWholeFile(file, Text(answer));
  return file;
}

Json Explained(const std::string& file) {
  return Parse(RunQlid({"decode", "--explain", "--json", file}).out);
}

std::string HexOf(const simulator::Bytes& bytes, std::size_t offset, std::size_t size) {
  std::string text;
  std::array<char, 4> pair{};
  for (std::size_t i = offset; i < offset + size; ++i) {
    std::snprintf(pair.data(), pair.size(), "%s%02X", i == offset ? "" : " ", bytes[i]);
    text += pair.data();
  }
  return text;
}

// The row that starts at this offset.
const cJSON* RowAt(const Json& document, std::size_t offset) {
  const cJSON* row = nullptr;
  cJSON_ArrayForEach(row, Child(document, "bytes")) {
    if (Member(row, "offset") == std::to_string(offset)) return row;
  }
  return nullptr;
}

using Answer = std::tuple<std::string, bool, bool>;  // card, carries templates, read with them

class EveryAnswer : public testing::TestWithParam<Answer> {
 protected:
  const simulator::Card card_ =
      simulator::MakeCard(std::get<0>(GetParam()), std::get<1>(GetParam()));
  const simulator::Bytes answer_ = simulator::NativeData(card_, std::get<2>(GetParam()));
};

}  // namespace

TEST_P(EveryAnswer, IsExplainedFromTheFirstByteToTheLastWithoutAGap) {
  const Json document = Explained(SavedAnswer(answer_));

  ASSERT_NE(nullptr, document);
  std::size_t end = 0;
  const cJSON* row = nullptr;
  cJSON_ArrayForEach(row, Child(document, "bytes")) {
    const std::size_t size = std::stoul(Member(row, "size"));
    EXPECT_EQ(std::to_string(end), Member(row, "offset"));
    EXPECT_EQ(HexOf(answer_, end, size), Member(row, "hex"));
    EXPECT_EQ("true", Member(row, "possible")) << Member(row, "meaning");
    EXPECT_NE("", Member(row, "meaning"));
    end += size;
  }
  EXPECT_EQ(answer_.size(), end);
}

TEST_P(EveryAnswer, HasEachTextFieldWhereTheCardHasIt) {
  const Json document = Explained(SavedAnswer(answer_));

  const std::size_t text = std::get<2>(GetParam()) ? 16 : 14;
  for (const simulator::TextField& field : simulator::TextFields(card_.person.kind)) {
    const cJSON* row = RowAt(document, text + field.offset);
    ASSERT_NE(nullptr, row) << field.name;
    EXPECT_EQ(std::to_string(field.size), Member(row, "size")) << field.name;
    const auto written = card_.person.text.find(field.name);
    if (written != card_.person.text.end()) {
      EXPECT_TRUE(Contains(Member(row, "value"), written->second)) << Member(row, "value");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    QlidDecode, EveryAnswer,
    testing::Values(Answer("resident", false, false), Answer("foreigner", false, false),
                    Answer("permit", false, false), Answer("resident", false, true),
                    Answer("resident", true, true), Answer("foreigner", true, true),
                    Answer("permit", true, true)));

TEST(QlidDecode, ExplainsInColumns) {
  const std::string file =
      SavedAnswer(simulator::NativeData(simulator::MakeCard("resident"), false));

  const Output explained = RunQlid({"decode", "--explain", file});

  EXPECT_EQ(0, explained.exit) << explained.err;
  EXPECT_TRUE(Contains(explained.out, "     0  AA AA AA 96 69             preamble\n"))
      << explained.out;
  EXPECT_TRUE(Contains(explained.out, "     5  05 08  ")) << explained.out;
  EXPECT_TRUE(Contains(explained.out, "1288 bytes")) << explained.out;
  EXPECT_TRUE(Contains(explained.out, "sex code, 2 bytes UCS-2")) << explained.out;
  EXPECT_TRUE(Contains(explained.out, "check byte")) << explained.out;
}

TEST(QlidDecode, SaysThatTheCheckByteIsWrong) {
  simulator::Bytes answer = simulator::NativeData(simulator::MakeCard("permit"), false);
  const std::string right = HexOf(answer, answer.size() - 1, 1);
  answer.back() = static_cast<std::uint8_t>(answer.back() ^ 0xFF);

  const Output explained = RunQlid({"decode", "--explain", SavedAnswer(answer)});

  EXPECT_EQ(5, explained.exit) << explained.err;
  EXPECT_TRUE(Contains(explained.out, "wrong: " + right + " would be right")) << explained.out;
}

TEST(QlidDecode, SaysWhichLengthIsImpossible) {
  struct Case {
    std::size_t offset;  // of the length's low byte
    const char* said;
  };
  constexpr Case kCases[] = {
      {6,  "impossible: 2314 belongs here"},
      {11, "impossible: 256 belongs here" },
      {13, "impossible: 1024 belongs here"},
      {15, "impossible: 1024 belongs here"},
  };
  for (const Case& one : kCases) {
    simulator::Bytes answer = simulator::NativeData(simulator::MakeCard("resident", true), true);
    answer[one.offset] = static_cast<std::uint8_t>(answer[one.offset] ^ 1);

    const Output explained = RunQlid({"decode", "--explain", SavedAnswer(answer)});

    EXPECT_TRUE(Contains(explained.out, one.said)) << one.offset << '\n' << explained.out;
  }
}

TEST(QlidDecode, ExplainsAnAnswerOfNoKnownKind) {
  simulator::Card card = simulator::MakeCard("resident");
  card.mark = 'Q';

  const Output explained =
      RunQlid({"decode", "--explain", SavedAnswer(simulator::NativeData(card, false))});

  EXPECT_EQ(5, explained.exit);
  EXPECT_TRUE(Contains(explained.out, "text of an unknown kind of card")) << explained.out;
  EXPECT_TRUE(Contains(explained.err, "the mark of no known kind of card")) << explained.err;
}

TEST(QlidDecode, MasksTheBytesThatIdentifyTheHolder) {
  for (const char* id : {"resident", "foreigner", "permit"}) {
    const simulator::Card card = simulator::MakeCard(id, true);
    const simulator::Bytes answer = simulator::NativeData(card, true);
    const std::string file = SavedAnswer(answer);

    const Output people = RunQlid({"decode", "--explain", "--redact", file});
    const Output programs = RunQlid({"decode", "--explain", "--redact", "--json", file});

    for (const char* field : {"name", "EngName", "cardId", "address", "passNumber", "birthday"}) {
      const auto written = card.person.text.find(field);
      if (written == card.person.text.end() || written->second.empty()) continue;
      const simulator::Bytes bytes = simulator::Ucs2(written->second);
      for (const Output& output : {people, programs}) {
        EXPECT_FALSE(Contains(output.out, written->second)) << id << ' ' << field;
        EXPECT_FALSE(Contains(output.out, HexOf(bytes, 0, std::min<std::size_t>(8, bytes.size()))))
            << id << ' ' << field;
      }
    }
    EXPECT_FALSE(Contains(programs.out, HexOf(card.photo, 0, 16))) << id;
    EXPECT_FALSE(Contains(programs.out, HexOf(simulator::FingerTemplate(card, 2), 0, 16))) << id;
  }
}

TEST(QlidDecode, SaysWhyAFileIsNoAnswer) {
  const std::string file = TemporaryFolder() + "/broken.bin";
  WriteWholeFile(file, std::string(1296, 'x'));

  for (const char* language : {"en", "zh"}) {
    const Output decoded = RunQlid({"--lang", language, "decode", "--explain", file});

    EXPECT_EQ(5, decoded.exit);
    EXPECT_EQ("", decoded.out);
    EXPECT_TRUE(Contains(decoded.err, language == std::string("en")
                                          ? "qlid: " + file +
                                                " is not a card answer: 1296 bytes; an answer has "
                                                "1295, 1297 or 2321\n"
                                          : "1296 字节；应答应为 1295、1297 或 2321 字节"))
        << decoded.err;
  }
}
