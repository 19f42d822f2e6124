#include <gtest/gtest.h>

#include <climits>

#include "quillonid/carddata.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "tests/reader/log_area.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

using Lines = std::vector<std::string>;

const Lines kWholeRead = {kSearchCommand, kSelectCommand, kReadCommand};

// Commands of one read without fingerprints.
Lines CommandsOfARead() {
  ScriptedReader reader;
  reader.HoldCard(ReadReply(1295));
  unsigned char data[4096] = {};
  int length = 0;
  EXPECT_EQ(0, tFuncReadIdNativeData(reader.Path().c_str(), "", 9600, 10, 0, data, &length));
  return reader.Commands();
}

// Speeds at which the line is opened, one after the other, for a reader that is asked for at
// `baud`.
Lines SpeedsOfAnOpenAt(const std::string& baud) {
  ScriptedReader reader;
  SwitchLogging(true);
  EXPECT_EQ(0, tFuncOpenDevice(reader.Path().c_str(), "", std::stoi(baud), 0, 10));
  tFuncCloseDevice();
  Lines speeds;
  const std::string opening = " szTtyName = " + reader.Path() + " nBaud = ";
  for (const std::string& line : LinesOf("CommDev:")) {
    if (line.rfind(opening, 0) != 0) continue;
    speeds.push_back(line.substr(opening.size(), line.find_last_not_of(' ') + 1 - opening.size()));
  }
  return speeds;
}

}  // namespace

TEST(SetSearchDirect, LeavesSearchAndSelectOut) {
  for (auto* function : {APP_ID_SetSearchDirect, Linux_QL_ID_SetSearchDirect}) {
    EXPECT_EQ(0, function(1));
    EXPECT_EQ(Lines{kReadCommand}, CommandsOfARead());
    EXPECT_EQ(0, function(0));
    EXPECT_EQ(kWholeRead, CommandsOfARead());
  }
}

TEST(SetSearchDirect, IsLogged) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  APP_ID_SetSearchDirect(1);
  EXPECT_EQ(Lines{"[APP_ID_SetSearchDirect] Start "}, LinesOf(kApiArea));
  EXPECT_EQ((Lines{"[tFuncSearchIdDirect] Start ", "[ s_bSearchCardD = 01]  "}),
            LinesOf(kCardArea));

  SwitchLogging(true);
  Linux_QL_ID_SetSearchDirect(0);
  EXPECT_EQ((Lines{"[Linux_QL_ID_SetSearchDirect] Start ", "[APP_ID_SetSearchDirect] Start "}),
            LinesOf(kApiArea));
}

TEST(SetOneInstrReadInfo, ReadsWithOneCommand) {
  EXPECT_EQ(0, APP_ID_SetOneInstrReadInfo(1));
  EXPECT_EQ(Lines{kOneCommand}, CommandsOfARead());

  EXPECT_EQ(0, APP_ID_SetOneInstrReadInfo(0));
  EXPECT_EQ(kWholeRead, CommandsOfARead());
}

TEST(SetOneInstrReadInfo, IsLogged) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  APP_ID_SetOneInstrReadInfo(1);

  EXPECT_EQ(Lines{"[APP_ID_SetOneInstrReadInfo] Start "}, LinesOf(kApiArea));
  EXPECT_EQ((Lines{"[tFuncReadOneInstr] Start ", "[ s_bReadOneInstr = 01]  "}), LinesOf(kCardArea));
}

TEST(LinuxSetOneInstrReadInfo, LeavesTheModeAsItIs) {
  NEEDS_PRIVATE_ROOT();
  APP_ID_SetOneInstrReadInfo(1);
  SwitchLogging(true);

  EXPECT_EQ(0, Linux_QL_ID_SetOneInstrReadInfo());

  EXPECT_EQ(Lines{"[Linux_QL_ID_SetOneInstrReadInfo] Start "}, LinesOf(kApiArea));
  EXPECT_TRUE(LinesOf(kCardArea).empty());
  SwitchLogging(false);
  EXPECT_EQ(Lines{kOneCommand}, CommandsOfARead());
  APP_ID_SetOneInstrReadInfo(0);
  Linux_QL_ID_SetOneInstrReadInfo();
  EXPECT_EQ(kWholeRead, CommandsOfARead());
}

TEST(RaiseBaundFlag, ReachesASerialReaderAt9600First) {
  NEEDS_PRIVATE_ROOT();
  for (auto* function : {QL_APP_Id_RaiseBaundFlag, Linux_QL_ID_RaiseBaundFlag}) {
    function(1);
    EXPECT_EQ((Lines{"9600", "115200"}), SpeedsOfAnOpenAt("115200"));
    function(0);
    EXPECT_EQ(Lines{"115200"}, SpeedsOfAnOpenAt("115200"));
  }
}

TEST(RaiseBaundFlag, IsLogged) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  QL_APP_Id_RaiseBaundFlag(1);
  Linux_QL_ID_RaiseBaundFlag(-1);

  EXPECT_EQ((Lines{"[QL_APP_Id_RaiseBaundFlag] Start bFlag = 01",
                   "[QL_APP_Id_RaiseBaundFlag] Start bFlag = ffffffff"}),
            LinesOf(kApiArea));
}

TEST(AddHID, RegistersTheIdAtItsSlot) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, APP_ID_AddHID(3, 0xBC95, 0x0403));

  EXPECT_EQ(Lines{"[APP_ID_AddHID] Start nPid = bc95 nVid = 403 "}, LinesOf(kApiArea));
  EXPECT_EQ(
      (Lines{"[Dev_Zel_Id_AddHid] Start nIndex = 3", "[Dev_Zel_Id_AddHid] End g_nHidNum = 4  "}),
      LinesOf("CommDev:"));
}

// The table has ten slots. The result is not converted to a published code.
TEST(AddHID, RefusesASlotThatIsNotThere) {
  for (const int index : {10, 11, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(-2, APP_ID_AddHID(index, 1, 2)) << index;
    EXPECT_EQ(-2, Linux_QL_ID_AddHID(index, "1234", "5678")) << index;
  }
  for (int index = 0; index < 10; ++index) {
    EXPECT_EQ(0, APP_ID_AddHID(index, 1, 2)) << index;
    EXPECT_EQ(0, Linux_QL_ID_AddHID(index, "1234", "5678")) << index;
  }
}

TEST(LinuxAddHID, TakesFourHexadecimalCharacters) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, Linux_QL_ID_AddHID(0, "bE11", "2B46"));

  EXPECT_EQ((Lines{"[Linux_QL_ID_AddHID] Start ", "szPid = bE11 szVid = 2B46 ",
                   "[APP_ID_AddHID] Start nPid = be11 nVid = 2b46 "}),
            LinesOf(kApiArea));
  EXPECT_TRUE(HasLine(" TIME  szPidHex  LEN=2   HEX: BE11"));
  EXPECT_TRUE(HasLine(" TIME  szVidHex  LEN=2   HEX: 2B46"));
}

TEST(LinuxAddHID, RefusesTextOfAnotherLength) {
  for (const char* text : {"", "123", "12345"}) {
    EXPECT_EQ(-2, Linux_QL_ID_AddHID(0, text, "5678")) << text;
    EXPECT_EQ(-2, Linux_QL_ID_AddHID(0, "1234", text)) << text;
  }
  EXPECT_EQ(-2, Linux_QL_ID_AddHID(0, nullptr, "5678"));
  EXPECT_EQ(-2, Linux_QL_ID_AddHID(0, "1234", nullptr));
}

TEST(LinuxAddHID, LogsNoIdThatItRefuses) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-2, Linux_QL_ID_AddHID(10, "1234", "5678"));
  EXPECT_EQ(-2, Linux_QL_ID_AddHID(10, nullptr, nullptr));
  EXPECT_EQ(-2, Linux_QL_ID_AddHID(0, "123", "5678"));

  EXPECT_EQ(Lines(3, "[Linux_QL_ID_AddHID] Start "), LinesOf(kApiArea));
}

// Bytes from 0x80 on count as characters above "a", whatever the sign of char.
TEST(LinuxAddHID, TakesBytesAsUnsigned) {
  NEEDS_PRIVATE_ROOT();
  const char text[] = {'0', '\xC4', '0', '0', '\0'};
  SwitchLogging(true);

  EXPECT_EQ(0, Linux_QL_ID_AddHID(0, text, "0000"));

  EXPECT_TRUE(HasLine(" TIME  szPidHex  LEN=2   HEX: 6D00"));
}

TEST(AddPhotoDataToJsonFlag, AddsThePhotoOfTheLastReadOnce) {
  Bytes reply = ReadReply(1295);
  const Bytes lengths = {0x01, 0x00, 0x04, 0x00};  // 256 bytes of text, 1,024 of photo
  std::copy(lengths.begin(), lengths.end(), reply.begin() + 10);
  ASSERT_EQ(0, tFunc_SetIdNativeData(reply.data(), 1295));
  for (auto* function : {APP_ID_IDCardAddPhotoDataToJsonFlag, Linux_QL_ID_AddPhotoDataToJsonFlag}) {
    function(1);
    for (const bool expected : {true, false}) {
      std::string text(QL_JSON_SIZE, '\0');
      EXPECT_EQ(0, tFuncPackChinaJson(PERSONINFO_CHA_FP{}, text.data()));
      EXPECT_EQ(expected, text.find("\"PhotoNativeData\"") != std::string::npos);
    }
  }
}

TEST(AddNativeDataToJsonFlag, ChangesNothing) {
  std::string before(QL_JSON_SIZE, '\0');
  std::string after(QL_JSON_SIZE, '\0');
  ASSERT_EQ(0, tFuncPackChinaJson(PERSONINFO_CHA_FP{}, before.data()));

  EXPECT_EQ(0, APP_ID_IDCardAddNativeDataToJsonFlag());
  EXPECT_EQ(0, Linux_QL_ID_SetOrgData());

  ASSERT_EQ(0, tFuncPackChinaJson(PERSONINFO_CHA_FP{}, after.data()));
  EXPECT_EQ(before, after);
}

TEST(GetIdNativeData, GivesTheLastReadOutThroughEveryName) {
  Bytes reply = ReadReply(2321);
  for (auto* function : {APP_ID_GetIdNativeData, Linux_QL_ID_GetNativeData}) {
    Bytes buffer(2321, 0xEE);
    tFunc_SetIdNativeData(reply.data(), 0);
    EXPECT_EQ(0, function(buffer.data(), 2321));

    tFunc_SetIdNativeData(reply.data(), 2321);
    EXPECT_EQ(0, function(buffer.data(), 2320));
    EXPECT_EQ(0, function(buffer.data(), -1));
    EXPECT_EQ(0, function(nullptr, 2321));
    EXPECT_EQ(HexText(Bytes(2321, 0xEE)), HexText(buffer));
    EXPECT_EQ(2321, function(buffer.data(), 2321));
    EXPECT_EQ(HexText(reply), HexText(buffer));
  }
}
