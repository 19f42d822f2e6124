#include "reader/native_data.h"

#include <gtest/gtest.h>

#include "quillonid/reader.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"

TEST(GetIdNativeData, GivesNothingBeforeARead) {
  unsigned char buffer[4096];

  EXPECT_EQ(0, tFunc_GetIdNativeData(buffer, sizeof buffer));
}

class NativeDataLength : public testing::TestWithParam<int> {};

TEST_P(NativeDataLength, IsKeptAndGivenOutWhole) {
  const int size = GetParam();
  Bytes reply = ReadReply(static_cast<std::size_t>(size));

  EXPECT_EQ(0, tFunc_SetIdNativeData(reply.data(), size));

  Bytes copy(reply.size() + 1, 0xEE);
  EXPECT_EQ(0, tFunc_GetIdNativeData(copy.data(), size - 1));
  EXPECT_EQ(0xEE, copy[0]);
  EXPECT_EQ(size, tFunc_GetIdNativeData(copy.data(), size));
  EXPECT_EQ(HexText(reply) + " EE", HexText(copy));
}
INSTANTIATE_TEST_SUITE_P(All, NativeDataLength, testing::Values(1295, 1297, 2321));

class OtherNativeDataLength : public testing::TestWithParam<int> {};

TEST_P(OtherNativeDataLength, LeavesNothingKept) {
  Bytes reply = ReadReply(4096);
  ASSERT_EQ(0, tFunc_SetIdNativeData(reply.data(), 1295));

  EXPECT_EQ(0, tFunc_SetIdNativeData(reply.data(), GetParam()));

  EXPECT_EQ(0, tFunc_GetIdNativeData(reply.data(), 4096));
}
INSTANTIATE_TEST_SUITE_P(All, OtherNativeDataLength,
                         testing::Values(-1, 0, 1, 1294, 1296, 1298, 2320, 2322, 4096));

TEST(SetIdNativeData, KeepsNothingOfANullPointer) {
  Bytes reply = ReadReply(1295);
  ASSERT_EQ(0, tFunc_SetIdNativeData(reply.data(), 1295));

  EXPECT_EQ(0, tFunc_SetIdNativeData(nullptr, 1295));

  EXPECT_EQ(0, tFunc_GetIdNativeData(reply.data(), 1295));
}

// A size is a signed number: taken as unsigned, a negative one would pass for a huge buffer.
TEST(GetIdNativeData, RefusesANullBufferAndANegativeSize) {
  Bytes reply = ReadReply(1295);
  ASSERT_EQ(0, tFunc_SetIdNativeData(reply.data(), 1295));

  EXPECT_EQ(0, tFunc_GetIdNativeData(nullptr, 1295));
  EXPECT_EQ(0, tFunc_GetIdNativeData(reply.data(), -1));
}
