// The log of whole reads, line by line: which step says what, in which order.
#include <gtest/gtest.h>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

using simulator::Bytes;
using simulator::Card;
using simulator::MakeCard;
using simulator::TtyReader;

// The wall clock stands: 1,700,000,000,123 ms, of which the lines of a search show the low 32 bits.
constexpr std::int64_t kNow = 1'700'000'000;
constexpr std::int64_t kNowNanoseconds = 123'000'000;
constexpr char kTick[] = "1700000000123";
constexpr char kShownTick[] = "-807049093";

const Bytes kFound = FromHex("AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97");
const Bytes kSelected = FromHex("AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C");

// Builds up the expected lines. The area names have a fixed place that a shorter one leaves blank.
class Lines {
 public:
  Lines& Public(const std::string& text) { return Add("Public:  ", text); }
  Lines& Exchange(const std::string& text) { return Add("Comm:    ", text); }
  Lines& Device(const std::string& text) { return Add("CommDev:  ", text); }
  Lines& Card(const std::string& text) { return Add("BusiId:  ", text); }
  Lines& Api(const std::string& text) { return Add("AppId:   ", text); }
  // The name leaves the end of the longer word of the type behind it.
  Lines& Error(const std::string& area, const std::string& text) {
    return Whole("  TIME  !!ERROR:     " + area + text);
  }
  Lines& Plain(const std::string& text) { return Whole(" TIME  " + text); }
  Lines& Dump(const std::string& title, const Bytes& bytes) {
    return Plain(title + "  LEN=" + std::to_string(bytes.size()) + "   HEX: " + PlainHex(bytes));
  }

  Lines& StartTick() {
    return Public("==>[GetTickCountStartTime] Start ")
        .Public(std::string("g_stStartTime= ") + kTick);
  }
  Lines& EndTick() {
    return Public("[GetTickCountEndTime] Start ").Plain(std::string("g_stEndTime= ") + kTick);
  }
  Lines& Open(const std::string& path, int baud) {
    return Exchange("[COMM_Zel_OpenReader]Start ")
        .Device("ICC_OpenLinuxTransPort\r\n")
        .Device("[COMM_Com_OpenLinux ] Start ")
        .Device(" szTtyName = " + path + " nBaud = " + std::to_string(baud) + "  ")
        .Device("open linux com success!\r\n")
        .Exchange("[COMM_Zel_OpenReader]End nRet = 0  ");
  }
  // One card command and its answer, into a buffer of `room` bytes.
  Lines& Command(const Bytes& reply, int room) {
    const std::string size = std::to_string(reply.size());
    return Device("Dev_Zel_IdSendAndReciveData START")
        .Device("1111")
        .ClearZero()
        .Device("1112")
        .Device("222")
        .Exchange("[COMM_Zel_SetEndCondition ] Start")
        .Device("333")
        .Exchange("[ COMM_Zel_SendAndReciveData ] Start ")
        .Exchange("nSendLen 10 ")
        .Exchange("nMaxReciveBufLen " + std::to_string(room) + " ")
        .Exchange("[COMM_Zel_ReSetStatus]Start ")
        .Exchange("nDataLen = 10")
        .Device("[ICC_WriteDataToLinuxTransPort] Start ")
        .Exchange("[ COMM_Zel_ReadDataFromReader ] Start ")
        .Exchange("[COMM_Zel_ReSetStatus]Start ")
        .Dump("PACKGET READ", reply)
        .Exchange("==> nReadLen = " + size + " ")
        .Dump("== ucPacket", reply)
        .Exchange("nretval = " + size + " ")
        .ClearZero();
  }
  Lines& ClearZero() {
    return Exchange("[COMM_Zel_SetHidClearZero] Start!\n")
        .Device("[COMM_Dev_SetHidClearZero] Start ")
        .Device("[COMM_Dev_SetHidClearZero] end ")
        .Exchange("[COMM_Zel_SetHidClearZero] end!\n");
  }
  Lines& TimeOut(int seconds) {
    return Exchange("COMM_Zel_ChageReadTimeOut Start  nTimeOut = " + std::to_string(seconds) + " ");
  }
  Lines& Search() {
    return Card("[SearchCard] Start nTimeOut = 10000 ")
        .StartTick()
        .Card(std::string(" **** sStartTime = ") + kShownTick + " ")
        .TimeOut(3)
        .Command(kFound, 128)
        .Card("COMM_Zel_SendAndReciveData nRet = 15")
        .Dump("SearchCard : szRes=", kFound)
        .EndTick()
        .Card(std::string(" **** sEndTime = ") + kShownTick + " ")
        .Card("****** sEndTime - sStartTime = 0 ")
        .Card("searchcard exit 0");
  }
  Lines& Select() {
    return Card("[SelectIDCard] Start ")
        .Command(kSelected, 128)
        .Card("COMM_Zel_SendAndReciveData nRet = 19")
        .Dump("Search card ", kSelected)
        .Card("***[have Id Card] ");
  }
  Lines& ReadCard(const Bytes& native) {
    return Card("[ReadIDCard] Start")
        .TimeOut(5)
        .Command(native, 4086)
        .Card("nRet " + std::to_string(native.size()))
        .Card(" Read Check Value = " + HexOf(native.back()))
        .Card("ReadIDCard nRet = 0 ");
  }
  // The read cycle's end, in GBK: "ReadIDCard over, took".
  Lines& Took() {
    return EndTick()
        .Public("[GetTickCountTimeOut] Start ")
        .Public("0 ")
        .Card("ReadIDCard over\xA3\xAC\xBA\xC4\xCA\xB1=0 ms");
  }
  Lines& Close() {
    return Device("ICC_CloseTransPort START").Device("[ICC_CloseLinuxTransPort] Start ");
  }
  Lines& Photo(const Bytes& photo, const std::string& path) {
    return Api("[SavePhotoImage] Start ")
        .Dump("pPhoto ", photo)
        .Dump("GetPhotoData szPhoto = ", photo)
        .Api("native  \n")
        .Api(" /libwlt.so\n")
        .Api(" After /libwlt.so\n")
        .Api("unpack: nRet is 1")
        .Api("[SaveBmp] Start  " + path + " ")
        .Api("open Start ")
        .Api("SaveBmp :szBmpFile is:" + path + "\n")
        .Api("SaveBmp : close the fp")
        .Api("#############1[SaveBmp] End ")
        .Api("SaveBmp: nRet is 1")
        .Api("unpack != NULL")
        .Api("hInstLibrary != NULL")
        .Api("GetPhotoBmp : the nRet is 1");
  }
  Lines& Converted(int code) {
    const std::string text = "nInErrCode = " + std::to_string(code) + " ";
    return Api("[TY_Id_ConvertErr] Start").Api(text).Api(text);
  }

  const std::string& text() const { return text_; }

 private:
  static std::string HexOf(std::uint8_t byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    return {kDigits[byte >> 4], kDigits[byte & 0x0F]};
  }
  // A line of the call that names type and area: a name takes the place of the type's text.
  Lines& Add(const std::string& area, const std::string& text) {
    return Whole("  TIME  INFO:    " + area + text);
  }
  Lines& Whole(const std::string& line) {
    text_ += line + "\r\n";
    return *this;
  }

  std::string text_;
};

// What was logged, as one text again.
std::string Logged() {
  std::string text;
  for (const std::string& line : LogLines()) text += line + "\r\n";
  return text;
}

TEST(Log, OfAResidentCardRead) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  TtyReader reader;
  const Card card = MakeCard("resident");
  reader.PutCard(card);
  const Bytes native = NativeData(card, false);
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_CHA record = {};
  stand_in_clock::HoldWallClock(kNow, kNowNanoseconds);
  SwitchLogging(true);

  ASSERT_EQ(0, APP_ID_ReadChinaIDCard(reader.path().c_str(), "7", 9600, 10, photo.data(), &record));

  Lines expected;
  expected.Card("[tFunc_ReadChinaIDCard] Start ")
      .Card("[ tFuncReadChinaIDCard ] Start ")
      .Card("szHeadDir: " + photo)
      .Card("[tFuncReadIdNativeData]Start ")
      .Card("pszDevice: " + reader.path())
      .Card("szBpNo: 7")
      .Card("nBaud: 9600")
      .Card("nTimeOut: 10")
      .Card("ReadIDCardInfo : szDevice:" + reader.path() + ", bpno:7, nbaud:9600, timeout:10")
      .StartTick()
      .Device("===>  [tFuncOpenDevice] Start ")
      .Device("***********************pszDevice = " + reader.path())
      .Device(" USE DEV")
      .Device("szTermPath ======= " + reader.path() + " ")
      .Open(reader.path(), 9600)
      .StartTick()
      .Card("[GetIDCardInfo] Start ")
      .Search()
      .Select()
      .ReadCard(native)
      .Took()
      .Card("GetIDCardInfo nRet = 0 ")
      .Close()
      .Card("[GetNation] Start ")
      .Photo(card.photo, photo)
      .Card("[tFuncReadChinaIDCard]  End bRet = 0")
      .Converted(0);
  EXPECT_EQ(expected.text(), Logged());
}

TEST(Log, OfAReadOfAnyKindAsJsonAtARaisedSpeed) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  const Card card = MakeCard("resident", true);
  reader.PutCard(card);
  const Bytes native = NativeData(card, true);
  const std::string& path = reader.path();
  char no_photo[] = "";
  char json[8192] = {};
  stand_in_clock::HoldWallClock(kNow, kNowNanoseconds);
  SwitchLogging(true);

  ASSERT_EQ(0, Linux_QL_ID_ReadCollectCardInfo(path.c_str(), 115200, 10, 1, no_photo, json));

  Lines expected;
  expected.Plain("[Linux_QL_ID_ReadCollectCardInfo] Start ")
      .Api("[QL_APP_Id_RaiseBaundFlag] Start bFlag = 01")
      .Api("tFunc_ReadCollectIDCardInfo Start ")
      .Card("[tFunc_ReadCollectIDCardInfo] Start ")
      .Card("[tFuncReadCollectIDCard]Start ")
      .Card("szHeadDir: ")
      .Card("[tFuncReadIdNativeData]Start ")
      .Card("pszDevice: " + path)
      .Card("szBpNo: ")
      .Card("nBaud: 115200")
      .Card("nTimeOut: 10")
      .StartTick()
      .Card("ReadIDCardInfo : szDevice:" + path + ", bpno:, nbaud:115200, timeout:10")
      .Device("===>  [tFuncOpenDevice] Start ")
      .Device("***********************pszDevice = " + path)
      .Device(" USE DEV")
      .Device("szTermPath ======= " + path + " ")
      .Open(path, 9600)
      .Device("[ICC_WriteDataToLinuxTransPort] Start ")
      .Device("[ICC_CloseLinuxTransPort] Start ")
      .Open(path, 115200)
      .StartTick()
      .Card("[GetIDCardInfo] Start ")
      .Search()
      .Select()
      .ReadCard(native)
      .Took()
      .Card("GetIDCardInfo_FP  nRet = 0 ")
      .Device("baud reset ")
      .Device("[ICC_WriteDataToLinuxTransPort] Start ")
      .Close()
      .Card("[tFuncReadIdNativeData] End ")
      .Card("[GetIdCardTypeFromNativeData] nRet = 0")
      .Card(" ==== [GetIdCardTypeFromNativeData] nRet = 00")
      .Card("[GetNation] Start ")
      .Card("China to Collect");
  const auto texts = RecordTexts(card, Members<PERSONINFO_CHA_FP>(), true, false);
  for (const char* field :
       {"name", "sex", "nation", "birthday", "address", "cardId", "police", "validStart",
        "validEnd", "sexCode", "nationCode", "reserved", "fingerData1", "fingerData2"}) {
    expected.Card(std::string("pChina->") + field + " " + texts.at(field) + " ");
  }
  for (int twice = 0; twice < 2; ++twice) {
    expected.Card("[tFuncReadCollectIDCard] Collect Struct Name = " + texts.at("name") + " ")
        .Card("[tFuncReadCollectIDCard]end = 0  ");
  }
  expected.Card("[tFuncReadCollectIDCard] end  nRet  0  ")
      .Converted(0)
      .Api("tFunc_ReadCollectIDCardInfo End 0");
  EXPECT_EQ(expected.text(), Logged());
}

// A failed step logs as an error; the name of its area leaves the end of that word behind.
TEST(Log, OfAReadWithoutAReader) {
  NEEDS_PRIVATE_ROOT();
  char no_photo[] = "";
  PERSONINFO record = {};
  stand_in_clock::HoldWallClock(kNow, kNowNanoseconds);
  SwitchLogging(true);

  ASSERT_EQ(-1, APP_ID_ReadIDCard("/dev/none", "", 9600, 10, no_photo, &record));

  Lines expected;
  expected.Api("[APP_ID_ReadIDCard] Start ")
      .Card("[tFunc_ReadIDCard]Start ")
      .Card("[tFuncReadIdInfo] Start ")
      .Card("szHeadDir: ")
      .Card("[tFuncReadIdNativeData]Start ")
      .Card("pszDevice: /dev/none")
      .Card("szBpNo: ")
      .Card("nBaud: 9600")
      .Card("nTimeOut: 10")
      .Card("ReadIDCardInfo : szDevice:/dev/none, bpno:, nbaud:9600, timeout:10")
      .StartTick()
      .Device("===>  [tFuncOpenDevice] Start ")
      .Device("***********************pszDevice = /dev/none")
      .Device(" USE DEV")
      .Device("szTermPath ======= /dev/none ")
      .Exchange("[COMM_Zel_OpenReader]Start ")
      .Device("ICC_OpenLinuxTransPort\r\n")
      .Device("[COMM_Com_OpenLinux ] Start ")
      .Device(" szTtyName = /dev/none nBaud = 9600  ")
      .Error("Comm:OR:     ", "[COMM_Zel_OpenReader]End nRet = -3  ")
      .Error("CommDev:     ", "COMM_Id_OpenCardReader:-3, type = 1")
      .Card("OpenDevice failed!")
      .Error("BusiId::     ", "tFuncReadIdNativeData  nRet = -50 ")
      .Error("BusiId::     ", "tFuncReadIdInfo = -50 ")
      .Converted(-50);
  EXPECT_EQ(expected.text(), Logged());
}

}  // namespace
}  // namespace whole
