// When a reader's answer is complete.
#include "quillonid/link.h"
#include "tests/models/model.h"

namespace {

// Complete with the number of bytes that follow the head of seven.
int ModelIdEnd(const std::string& bytes) {
  if (bytes.size() < 7) return -1;
  const unsigned announced = BytesOf(bytes)[5] * 256U + BytesOf(bytes)[6];
  return announced <= bytes.size() - 7 ? 0 : -1;
}

// Bytes whose announced number lies near the one that is there, or anywhere.
std::string AnyAnswer(Random& random) {
  std::string bytes = random.Bytes(random.OneIn(4) ? random.Between(0, 8) : random.Between(0, 400));
  if (bytes.size() > 6 && !random.OneIn(4)) {
    const int announced = std::max(SizeOf(bytes) - 7 + random.Between(-2, 2), 0);
    bytes[5] = static_cast<char>(announced / 256);
    bytes[6] = static_cast<char>(announced % 256);
  }
  return bytes;
}

}  // namespace

TEST(ModelOfIdEndCondition, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = AnyAnswer(random);

    return Equal(ModelIdEnd(bytes), IdEndCondition(BytesOf(bytes), SizeOf(bytes)));
  });
}

// The end byte is that of the last read, whether the read could do anything or not.
TEST(ModelOfChangeEndCondition, IsEqual) {
  unsigned char end = 0x03;
  ForEachInput([&end](Random& random) {
    if (random.OneIn(4)) {
      unsigned char none[16];
      const int room = random.Between(0, 16);
      const unsigned char asked = random.OneIn(4) ? 0 : random.Byte();
      COMM_Zel_ReadDataFromReader(static_cast<unsigned>(random.Between(0, 1)), random.Byte(), asked,
                                  none, room);
      if (room > 0) end = asked;
    }
    std::string bytes = random.Bytes(random.Between(1, 40));
    if (random.OneIn(2)) bytes.back() = static_cast<char>(end);

    return Equal(BytesOf(bytes)[bytes.size() - 1] == end ? 0 : -1,
                 ChangeEndCondition(BytesOf(bytes), SizeOf(bytes)));
  });
}
