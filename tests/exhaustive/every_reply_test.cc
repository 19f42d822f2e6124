// Whole reads of a card whose reply is cut after every byte, or has every single bit wrong.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "tests/exhaustive/scripted_line.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/testing/valgrind.h"

namespace {

constexpr std::size_t kHeadSize = 5;  // the preamble, which no check byte covers

// A reply of `size` bytes with the length and check byte that it should have.
std::string Reply(std::size_t size) {
  std::string reply(size, '\0');
  const std::string head = "\xAA\xAA\xAA\x96\x69";
  reply.replace(0, head.size(), head);
  reply[5] = static_cast<char>((size - 7) / 256);
  reply[6] = static_cast<char>((size - 7) % 256);
  reply[9] = '\x90';
  for (std::size_t i = 10; i + 1 < size; ++i) reply[i] = static_cast<char>(i * 37 + i / 256);
  char check = 0;
  for (std::size_t i = 5; i + 1 < size; ++i) check = static_cast<char>(check ^ reply[i]);
  reply.back() = check;
  return reply;
}

struct Read {
  int result = 0;
  std::string data;
  double seconds = 0;
};

// One read with a limit of a second.
Read ReadCard(const std::string& path, int finger, const std::string& reply) {
  scripted_line::HoldCard(reply);
  unsigned char data[4096] = {};
  int length = -1;
  const double start = stand_in_clock::Seconds();
  const int result = tFuncReadIdNativeData(path.c_str(), "", 9600, 1, finger, data, &length);
  const auto size = static_cast<std::size_t>(length > 0 ? length : 0);
  return {
      result, {reinterpret_cast<const char*>(data), size},
       stand_in_clock::Seconds() - start
  };
}

std::string KeptData() {
  char kept[4096] = {};
  const int length = tFunc_GetIdNativeData(kept, sizeof kept);
  return {kept, static_cast<std::size_t>(length)};
}

// The read ran into its time limit and what was kept before is still there. It takes its limit, an
// exchange of 5 seconds that began before, and the pauses around it.
void ExpectTimeOut(const Read& read, const std::string& kept) {
  ASSERT_EQ(RET_PUB_TIMEOUT, read.result);
  ASSERT_EQ("", read.data);
  ASSERT_EQ(HexText(kept), HexText(KeptData()));
  ASSERT_GT(read.seconds, 0.9);
  ASSERT_LT(read.seconds, 20.0);
  ASSERT_GE(scripted_line::ReadCommands(), 1);
}

void TryEveryCut(int finger, std::size_t size) {
  const std::string path = scripted_line::Open();
  const std::string whole = Reply(size);
  ASSERT_EQ(0, ReadCard(path, finger, whole).result);

  for (std::size_t cut = 0; cut < size; cut += StepThroughEverything()) {
    SCOPED_TRACE(cut);
    ExpectTimeOut(ReadCard(path, finger, whole.substr(0, cut)), whole);
    if (testing::Test::HasFatalFailure()) return;
  }

  const Read good = ReadCard(path, finger, whole);
  EXPECT_EQ(0, good.result);
  EXPECT_EQ(HexText(whole), HexText(good.data));
}

}  // namespace

TEST(EveryCut, EndsTheReadOfACardAtItsLimit) { TryEveryCut(0, 1295); }

TEST(EveryCut, EndsTheReadOfACardWithFingerprintsAtItsLimit) { TryEveryCut(1, 2321); }

TEST(EverySingleBit, IsFoundBehindThePreamble) {
  const std::string path = scripted_line::Open();
  const std::string whole = Reply(1295);
  ASSERT_EQ(0, ReadCard(path, 0, whole).result);

  for (std::size_t bit = 8 * kHeadSize; bit < 8 * whole.size(); bit += StepThroughEverything()) {
    SCOPED_TRACE(bit);
    std::string faulty = whole;
    faulty[bit / 8] = static_cast<char>(faulty[bit / 8] ^ (1 << bit % 8));

    ExpectTimeOut(ReadCard(path, 0, faulty), whole);
    if (testing::Test::HasFatalFailure()) return;
  }

  EXPECT_EQ(HexText(whole), HexText(ReadCard(path, 0, whole).data));
}

// The five bytes before the length are not compared with anything.
TEST(EverySingleBit, IsTakenAsItStandsInThePreamble) {
  const std::string path = scripted_line::Open();
  for (std::size_t bit = 0; bit < 8 * kHeadSize; ++bit) {
    SCOPED_TRACE(bit);
    std::string faulty = Reply(1295);
    faulty[bit / 8] = static_cast<char>(faulty[bit / 8] ^ (1 << bit % 8));

    const Read read = ReadCard(path, 0, faulty);

    ASSERT_EQ(0, read.result);
    ASSERT_EQ(HexText(faulty), HexText(read.data));
    ASSERT_EQ(HexText(faulty), HexText(KeptData()));
  }
}
