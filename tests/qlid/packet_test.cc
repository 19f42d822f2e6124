// qlid decode --packet: the fields of one packet or frame, made by the simulated reader's own
// framing or written out as the protocol has them.
#include <gtest/gtest.h>

#include "simulator/packets.h"
#include "tests/qlid/bench.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

Output Decode(const std::string& bytes, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"decode", "--packet", bytes});
  return RunQlid(more);
}

Json Fields(const std::string& bytes) { return Parse(Decode(bytes, {"--json"}).out); }

// "offset meaning value" of each field, which must follow one another without a gap.
std::vector<std::string> Rows(const Json& document) {
  std::vector<std::string> rows;
  int end = 0;
  const cJSON* row = nullptr;
  cJSON_ArrayForEach(row, Child(document, "bytes")) {
    EXPECT_EQ(std::to_string(end), Member(row, "offset"));
    end += std::stoi(Member(row, "size"));
    rows.push_back(Member(row, "offset") + " " + Member(row, "meaning") + " " +
                   Member(row, "value"));
  }
  return rows;
}

std::string Where(const Json& document) {
  const cJSON* error = Child(document, "error");
  return Member(cJSON_GetObjectItemCaseSensitive(error, "details"), "Where");
}

const simulator::Bytes kPayload = {0x04, 0xAB, 0xCD};
simulator::Bytes Packet() { return simulator::PacketReply(0x01, 0x04, 0x9000, kPayload); }

}  // namespace

TEST(QlidDecodePacket, NamesTheFieldsOfAReaderPacket) {
  const Json document = Fields(HexText(Packet()));

  EXPECT_EQ("qlid.packet/1", Member(document.get(), "schema"));
  EXPECT_EQ("true", Member(document.get(), "ok"));
  EXPECT_EQ("reader-packet", Member(document.get(), "frame"));
  // The check byte: 90 ^ 00 ^ 04 ^ AB ^ CD.
  const std::vector<std::string> expected = {"0 head ",
                                             "1 length 5 bytes",
                                             "5 status, or the first bytes of a request 90 00",
                                             "9 payload 04 AB CD",
                                             "15 check byte F2, right",
                                             "17 end "};
  EXPECT_EQ(expected, Rows(document));
}

TEST(QlidDecodePacket, TakesPacketsOfEitherChannelAndAnySize) {
  for (const std::size_t size : {0U, 1U, 2U, 300U}) {
    const simulator::Bytes payload(size, 0x5A);
    EXPECT_EQ(0, Decode(HexText(simulator::PacketReply(0x01, 0x04, 0, payload))).exit) << size;
    EXPECT_EQ(0, Decode(HexText(simulator::PacketReply(0x02, 0x03, 0, payload))).exit) << size;
  }
}

TEST(QlidDecodePacket, FindsEveryChangedNibbleThatTheCheckByteCovers) {
  constexpr std::size_t kStatus = 5;
  const simulator::Bytes packet = Packet();
  for (std::size_t at = kStatus; at + 1 < packet.size(); ++at) {
    simulator::Bytes changed = packet;
    changed[at] ^= 0x08;

    const Output output = Decode(HexText(changed));

    EXPECT_EQ(5, output.exit) << at;
    EXPECT_TRUE(Contains(output.err, "a reader packet failed its check (-4)")) << output.err;
    EXPECT_TRUE(Contains(output.err, "Where   check byte at offset 15: ")) << output.err;
    EXPECT_TRUE(Contains(output.err, "Next    check cable and speed")) << output.err;
  }
}

TEST(QlidDecodePacket, FindsAPacketThatIsCutOff) {
  const simulator::Bytes packet = Packet();
  for (std::size_t size = 1; size < packet.size(); ++size) {
    const Json document = Fields(HexText(packet.data(), size));

    EXPECT_EQ("no end byte 04 behind the head at offset 0", Where(document)) << size;
  }
}

TEST(QlidDecodePacket, FindsALengthThatHasNoRoomForTheStatus) {
  // Length 1, one byte A5, its check byte.
  const Json document = Fields("02 30 30 30 31 3A 35 3A 35 03");

  EXPECT_EQ("length at offset 1: 1, and an answer has two bytes of status", Where(document));
}

TEST(QlidDecodePacket, FindsHalfABytePair) {
  const Json document = Fields("02 30 30 30 32 30 30 30 30 30 03");

  EXPECT_EQ("9 characters between head and end: a byte is two of them", Where(document));
}

// The library does not compare the length with what came, so it is no failure.
TEST(QlidDecodePacket, TellsALengthThatIsNotWhatCame) {
  simulator::Bytes packet = Packet();
  packet[4] = 0x37;

  const Json document = Fields(HexText(packet));

  EXPECT_EQ("true", Member(document.get(), "ok"));
  EXPECT_EQ("1 length 7 bytes, but 5 came", Rows(document).at(1));
}

TEST(QlidDecodePacket, NamesTheFieldsOfACardModuleFrame) {
  const std::vector<std::string> request = {"0 preamble ",
                                            "5 length of what follows, big-endian 3 bytes",
                                            "7 command ", "8 parameter ", "9 check byte 22, right"};
  const std::vector<std::string> answer = {
      "0 preamble ", "5 length of what follows, big-endian 8 bytes", "7 status ", "10 data 4 bytes",
      "14 check byte 97, right"};

  EXPECT_EQ(request, Rows(Fields("AA AA AA 96 69 00 03 20 01 22")));
  EXPECT_EQ(answer, Rows(Fields("AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97")));
}

TEST(QlidDecodePacket, SaysWhatACardModuleFrameIsFor) {
  struct {
    const char* bytes;
    const char* meaning;
  } const kFrames[] = {
      {"AA AA AA 96 69 00 03 20 02 21",                            "select card"  },
      {"AA AA AA 96 69 00 03 30 01 32",                            "read"         },
      {"AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C", "card selected"},
      {"AA AA AA 96 69 00 04 00 00 81 85",                         "no card"      },
      {"AA AA AA 96 69 00 04 40 02 41 07",                         "IC power-on"  },
      {"AA AA AA 96 69 00 04 00 00 21 45 00",                      "unsupported"  },
  };
  for (const auto& frame : kFrames) {
    const Output output = Decode(frame.bytes);

    EXPECT_EQ(0, output.exit) << frame.bytes << output.err;
    EXPECT_TRUE(Contains(output.out, std::string("\n") + frame.meaning + "\n")) << output.out;
  }
}

TEST(QlidDecodePacket, FindsWhatIsWrongWithACardModuleFrame) {
  EXPECT_EQ("check byte at offset 10: 8F, and the bytes before it give 94",
            Where(Fields("AA AA AA 96 69 00 04 00 00 90 8F")));
  EXPECT_EQ("cut off at offset 9: the length announces 4 bytes, 2 came",
            Where(Fields("AA AA AA 96 69 00 04 00 00")));
  EXPECT_EQ("length at offset 5: 1, and the shortest frame has 3",
            Where(Fields("AA AA AA 96 69 00 01 00")));
  EXPECT_EQ(5, Decode("AA AA AA 96 69 00 04 00 00 90 8F").exit);
  EXPECT_TRUE(Contains(Decode("FF EE").err, "these bytes are no frame (-4)"));
}

TEST(QlidDecodePacket, TakesBytesFromAFileAsTheyAreOrAsText) {
  const std::string raw = TemporaryFolder() + "/packet.bin";
  const std::string text = TemporaryFolder() + "/packet.txt";
  WriteWholeFile(raw, Text(Packet()));
  WriteWholeFile(text, HexText(Packet()) + "\n");
  const Output named = Decode(HexText(Packet()));

  EXPECT_EQ(named.out, Decode(raw).out);
  EXPECT_EQ(named.out, Decode(text).out);
}

TEST(QlidDecodePacket, TakesBytesFromStandardInput) {
  for (const std::string& bytes : {Text(Packet()), HexText(Packet()) + "\n"}) {
    Program decode(Qlid({"decode", "--packet", "-"}));
    decode.Type(bytes);
    decode.EndInput();

    const Output piped = decode.Finish();

    EXPECT_EQ(0, piped.exit) << piped.err;
    EXPECT_EQ(Decode(HexText(Packet())).out, piped.out);
  }
}

TEST(QlidDecodePacket, RefusesWhatIsNeitherAFileNorHexadecimal) {
  for (const char* wrong : {"/quillonid-none", "02 3", "02 3G", ""}) {
    const Output output = Decode(wrong);

    EXPECT_EQ(2, output.exit) << wrong;
    EXPECT_EQ("", output.out) << wrong;
  }
}

TEST(QlidDecodePacket, MasksWhatMayBeTheHolders) {
  const Output packet = Decode(HexText(Packet()), {"--redact"});
  const Output answer =
      Decode(HexText(simulator::NativeData(simulator::MakeCard("resident"), false)),
             {"--redact", "--json"});

  EXPECT_EQ(0, packet.exit);
  EXPECT_FALSE(Contains(packet.out, "AB")) << packet.out;
  EXPECT_FALSE(Contains(packet.out, "3A 3B")) << packet.out;
  EXPECT_TRUE(Contains(packet.out, "F2, right")) << packet.out;
  EXPECT_EQ(0, answer.exit);
  EXPECT_TRUE(Contains(answer.out, "card data")) << answer.out;
  EXPECT_LT(answer.out.find("** ** **"), answer.out.size());
  EXPECT_FALSE(Contains(answer.out, "2C 67")) << "the name";
}
