// Check bytes, trimming and searching.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "quillonid/link.h"
#include "tests/link/log_text.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

TEST(StrCalcLrc, IsTheExclusiveOrOfAllBytes) {
  const unsigned char bytes[] = {0x32, 0x30, 0x00, 0x81};

  EXPECT_EQ(0x83, Str_CalcLrc(bytes, 4));
  EXPECT_EQ(0x83, Str_GetDataLRC(bytes, 4));
  EXPECT_EQ(0x32, Str_CalcLrc(bytes, 1));
  EXPECT_EQ(0x02, Str_GetDataLRC(bytes, 3));
}

TEST(StrCalcLrc, OfNothingIsZero) {
  const unsigned char bytes[] = {0x32};

  for (const int len : {0, -1, INT_MIN}) {
    EXPECT_EQ(0, Str_CalcLrc(bytes, len));
    EXPECT_EQ(0, Str_GetDataLRC(bytes, len));
  }
  EXPECT_EQ(0, Str_CalcLrc(nullptr, 4));
  EXPECT_EQ(0, Str_GetDataLRC(nullptr, 4));
}

TEST(StrLocalXor, TakesExactlyEightBytes) {
  const unsigned char a[] = {0, 1, 2, 3, 0xF0, 0x80, 0xFF, 0x55, 9};
  const unsigned char b[] = {0, 1, 3, 0, 0x0F, 0x80, 0x0F, 0xAA, 9};
  unsigned char out[9] = {};
  out[8] = 0x77;

  Str_localXor(a, b, out);

  EXPECT_EQ("00 00 01 03 FF 00 F0 FF 77", HexText(out));
}

TEST(StrLocalXor, DoesNothingForNull) {
  const unsigned char a[8] = {1};
  unsigned char out[8] = {9};

  Str_localXor(nullptr, a, out);
  Str_localXor(a, nullptr, out);
  Str_localXor(a, a, nullptr);

  EXPECT_EQ(9, out[0]);
}

TEST(StrLocalFindMsgSign, FindsTheFirstPosition) {
  const unsigned char bytes[] = {1, 0x80, 2, 0x80};

  EXPECT_EQ(bytes + 1, Str_localFindMsgSign(bytes, 4, 0x80));
  EXPECT_EQ(bytes + 2, Str_localFindMsgSign(bytes, 4, 2));
}

TEST(StrLocalFindMsgSign, IsNullWhereThereIsNone) {
  const unsigned char bytes[] = {1, 0x80, 2, 0x80};

  EXPECT_EQ(nullptr, Str_localFindMsgSign(bytes, 4, 3));
  EXPECT_EQ(nullptr, Str_localFindMsgSign(bytes, 1, 0x80));
  EXPECT_EQ(nullptr, Str_localFindMsgSign(bytes, 0, 1));
  EXPECT_EQ(nullptr, Str_localFindMsgSign(bytes, -1, 1));
  EXPECT_EQ(nullptr, Str_localFindMsgSign(nullptr, 4, 1));
}

TEST(StrGetDataDeleteChar, StripsTheTrailingRun) {
  const unsigned char bytes[] = {0xFF, 1, 0xFF, 2, 0xFF, 0xFF};

  EXPECT_EQ(4, Str_GetDataDeleteChar(bytes, 6, 0xFF));
  EXPECT_EQ(6, Str_GetDataDeleteChar(bytes, 6, 2));
  EXPECT_EQ(0, Str_GetDataDeleteChar(bytes + 4, 2, 0xFF));
  EXPECT_EQ(2, Str_GetDataDeleteChar(bytes, 3, 0xFF));
}

TEST(StrGetDataDeleteChar, IsZeroForNothing) {
  const unsigned char bytes[] = {1};

  EXPECT_EQ(0, Str_GetDataDeleteChar(bytes, 0, 2));
  EXPECT_EQ(0, Str_GetDataDeleteChar(bytes, -3, 2));
  EXPECT_EQ(0, Str_GetDataDeleteChar(nullptr, 3, 2));
}

TEST(StrStrsTrim, RemovesBlanksWhereverTheyStand) {
  char text[] = " a b\t\r\nc\n";

  EXPECT_EQ(text, Str_strsTrim(text));

  EXPECT_STREQ("abc", text);
}

TEST(StrStrsTrim, LeavesTwoOfFiveCharacters) {
  char text[] = " a b\t";

  Str_strsTrim(text);

  EXPECT_EQ("61 62 00", HexText(text, 3));
}

TEST(StrStrsTrim, KeepsEveryOtherByte) {
  std::string kept;
  for (int c = 1; c < 256; ++c) {
    if (std::strchr(" \r\t\n", c) == nullptr) kept += static_cast<char>(c);
  }
  std::string text = kept;

  Str_strsTrim(text.data());

  EXPECT_EQ(HexText(kept), HexText(text));
}

TEST(StrStrsTrim, TakesEmptyTextsAndNull) {
  char empty[] = "";
  char blank[] = " \t ";

  EXPECT_STREQ("", Str_strsTrim(empty));
  EXPECT_STREQ("", Str_strsTrim(blank));
  EXPECT_EQ(nullptr, Str_strsTrim(nullptr));
}

TEST(StrGetSplitData, CopiesThePartBeforeTheFirstSeparator) {
  char out[] = "##########";

  EXPECT_EQ(0, Str_GetSplitData("name::value::more", "::", out));

  EXPECT_STREQ("name######", out);
}

TEST(StrGetSplitData, CopiesNothingBeforeASeparatorAtTheStart) {
  char out[] = "##";

  EXPECT_EQ(0, Str_GetSplitData(":value", ":", out));

  EXPECT_STREQ("##", out);
}

TEST(StrGetSplitData, RefusesATextWithoutSeparator) {
  char out[] = "##";

  EXPECT_EQ(-2, Str_GetSplitData("name", "::", out));
  EXPECT_EQ(-2, Str_GetSplitData("name:", "::", out));
  EXPECT_EQ(-2, Str_GetSplitData("", ":", out));
  EXPECT_EQ(-2, Str_GetSplitData("name", "", out));
  EXPECT_EQ(-2, Str_GetSplitData("name", nullptr, out));
  EXPECT_EQ(-2, Str_GetSplitData(nullptr, ":", out));
  EXPECT_EQ(-2, Str_GetSplitData("name:", ":", nullptr));

  EXPECT_STREQ("##", out);
}

// The output has no zero: its log line ends where the copy does.
TEST(StrGetSplitData, LogsWhatItCopied) {
  NEEDS_PRIVATE_ROOT();
  char out[] = "##########";
  SwitchLogging(true);

  Str_GetSplitData("name=value", "=", out);

  EXPECT_EQ(
      (Lines{"[Str_GetSplitData] Start szInPut = name=value sPlit = = ", "OutBuf = name nLen = 4"}),
      Logged("1"));
}

TEST(StrGetSplitData, LogsThatItCopiedNothing) {
  NEEDS_PRIVATE_ROOT();
  char out[] = "##########";
  SwitchLogging(true);

  Str_GetSplitData(nullptr, "=", out);

  EXPECT_EQ((Lines{"[Str_GetSplitData] Start szInPut = (null) sPlit = = ", "OutBuf =  nLen = 0"}),
            Logged("1"));
}
