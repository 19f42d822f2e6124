// Every length field with every size of body. The program has a silent log and a status of its own
// beside the library's packet code, so that 33 million frames take seconds.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "quillonid/link.h"
#include "quillonid/support.h"
#include "tests/testing/valgrind.h"

namespace {

constexpr std::size_t kLargestBody = 512;  // merged bytes
constexpr std::size_t kPrograms = 32;      // tests that share the work

std::uint32_t s_status;

}  // namespace

int DPrintLogToFileAddType(int, int, const char*, ...) { return 0; }
int DPrintLogToFile(const char*, ...) { return 0; }
int DPrintDataHexToFile(const char*, const void*, int) { return 0; }
uint32_t COMM_Zel_SetRecStatus(uint32_t status) { return s_status = status; }

namespace {

// A frame of `size` merged bytes behind the length field: what the parser should see.
class Frame {
 public:
  explicit Frame(std::size_t size) : size_(size), characters_(2 * size + 2) {
    for (std::size_t i = 2; i + 1 < size; ++i) Set(i, static_cast<unsigned char>(37 * i + size));
    unsigned char check = 0;
    for (std::size_t i = 2; i + 1 < size; ++i) check ^= merged_[i];
    if (size > 2) Set(size - 1, check);
    frame_[0] = 0x02;
    frame_[characters_ - 1] = 0x03;
  }

  void SetLength(unsigned length) {
    Set(0, static_cast<unsigned char>(length / 256));
    if (size_ > 1) Set(1, static_cast<unsigned char>(length % 256));
  }

  // Compares the parser's answer with what the merged bytes say.
  testing::AssertionResult IsParsedAsItStands() const {
    static std::array<unsigned char, 1021> out;
    out.fill(0xEE);
    std::uint32_t length = 0xAAAA;
    s_status = 0xBBBB;
    const int result = Str_ZEL_ParsePacket(
        0x02, 0x03, frame_.data(), static_cast<std::uint32_t>(characters_), out.data(), &length);

    const unsigned stated = merged_[0] * 256U + merged_[1];
    // Of one or two bytes the last one, a part of the length, is also the check byte: of nothing.
    const bool checked = size_ > 2 || merged_[size_ - 1] == 0;
    if (!checked || stated < 2) {
      if (result == -4 && length == 0xAAAA && s_status == 0xBBBB && out[0] == 0xEE)
        return testing::AssertionSuccess();
      return testing::AssertionFailure() << "not refused: " << size_ << " bytes, " << stated;
    }
    const std::size_t expected = std::min(stated - 2, 1020U);
    if (result == 0 && length == expected && s_status == merged_[2] * 256U + merged_[3] &&
        std::memcmp(out.data(), merged_.data() + 4, expected) == 0 && out[expected] == 0xEE)
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "wrong: " << size_ << " bytes, " << stated;
  }

 private:
  void Set(std::size_t at, unsigned char byte) {
    merged_[at] = byte;
    frame_[1 + 2 * at] = static_cast<unsigned char>(0x30 + byte / 16);
    frame_[2 + 2 * at] = static_cast<unsigned char>(0x30 + byte % 16);
  }

  std::size_t size_;
  std::size_t characters_;
  std::array<unsigned char, 1024 + 1020> merged_{};  // zeros behind the body
  std::array<unsigned char, 2 * kLargestBody + 2> frame_{};
};

}  // namespace

class EveryLengthField : public testing::TestWithParam<std::size_t> {};

TEST_P(EveryLengthField, IsTakenOrRefusedWithEveryBody) {
  const unsigned step = StepThroughEverything();
  for (std::size_t size = 1 + GetParam(); size <= kLargestBody; size += kPrograms) {
    Frame frame(size);
    for (unsigned length = 0; length < 65536; length += step) {
      frame.SetLength(length);
      ASSERT_TRUE(frame.IsParsedAsItStands());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shares, EveryLengthField, testing::Range(std::size_t{0}, kPrograms));

TEST(EveryPayload, ComesBackAsItWasFramed) {
  for (std::uint32_t size = 0; size <= 508; ++size) {
    std::array<unsigned char, 508> payload{};
    for (std::uint32_t i = 0; i < size; ++i) payload[i] = static_cast<unsigned char>(i * i + size);
    std::array<unsigned char, 1024> frame{};

    ASSERT_EQ(2 * size + 8, Str_ZEL_MakePacket(0x02, 0x03, payload.data(), size, frame.data()));

    std::array<unsigned char, 1024> body{};
    const int characters = static_cast<int>(2 * size + 6);
    ASSERT_EQ(characters, Str_GetPacketBody(0x02, 0x03, frame.data(), characters + 2, body.data()));
    std::array<unsigned char, 512> merged{};
    Str_ZelModeMergeData(body.data(), characters, merged.data());
    ASSERT_EQ(size, merged[0] * 256U + merged[1]);
    ASSERT_EQ(0, std::memcmp(payload.data(), merged.data() + 2, size));
    ASSERT_EQ(Str_CalcLrc(payload.data(), static_cast<int>(size)), merged[2 + size]);
  }
}
