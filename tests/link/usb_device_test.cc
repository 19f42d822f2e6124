// USB readers: the ids that are tried, and answers that end in zeros.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tests/link/log_text.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/usb/fake_libusb.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kHead = 7;

int OpenHid() { return tFuncOpenDevice("HID", "", 9600, 0, 5); }

// The ids that opening tries, one "product:vendor" each, as the transport reports them.
Lines Tries() {
  Lines tries;
  SwitchLogging(true);
  OpenHid();
  for (const std::string& line : Logged("3")) {
    if (line.starts_with("openHid:")) tries.push_back(line.substr(13, 4) + ":" + line.substr(8, 4));
  }
  return tries;
}

const Lines kKnown = {"bcd5:0403", "bcd7:0403", "bc95:0403", "be11:2b46", "be01:2b46", "bc01:2b46"};

Lines KnownAnd(const Lines& more) {
  Lines tries = kKnown;
  tries.insert(tries.end(), more.begin(), more.end());
  return tries;
}

class NoUsbReader : public testing::Test {
 protected:
  void SetUp() override { fake_libusb::Now().devices.clear(); }
};

// A reader with the last of the known ids, which the library has open.
class UsbReader : public testing::Test {
 protected:
  void SetUp() override {
    fake_libusb::Now().devices = {
        {0x2B46, 0xBC01}
    };
    ASSERT_EQ(0, OpenHid());
  }
  void TearDown() override {
    tFuncCloseDevice();
    EXPECT_EQ(0, fake_libusb::Now().handles);
    EXPECT_EQ(0, fake_libusb::Now().contexts);
  }

  // The reader takes a command, then sends these transfers; behind them it is silent for a second a
  // transfer.
  static void Script(const std::vector<Bytes>& transfers) {
    auto& script = fake_libusb::Now().transfers;
    script.assign(1, {});
    for (const Bytes& bytes : transfers) script.push_back({.bytes = bytes});
    fake_libusb::Now().otherwise = {.result = -7, .seconds = 1};
  }

  int Exchange(std::uint32_t max = 4096, std::uint32_t mode = 0) {
    reply_.assign(5000, 0xEE);
    const unsigned char command = 0x41;
    const int result = Dev_Zel_IdSendAndReciveData(mode, &command, 1, reply_.data(), max);
    const std::size_t count = result > 0 ? static_cast<std::size_t>(result) : 0;
    EXPECT_EQ(0xEE, reply_[count]) << "wrote too much";
    reply_.resize(count);
    return result;
  }

  Bytes reply_;
};

// An answer that announces `announced` bytes and ends in the bytes of `tail`.
Bytes Answer(std::size_t announced, const Bytes& tail) {
  Bytes answer = {0xAA,
                  0xAA,
                  0xAA,
                  0x96,
                  0x69,
                  static_cast<unsigned char>(announced / 256),
                  static_cast<unsigned char>(announced % 256)};
  answer.resize(kHead + announced - tail.size(), 0x55);
  answer.insert(answer.end(), tail.begin(), tail.end());
  return answer;
}

// As a reader sends it: 1,024 bytes a transfer, the last one padded to whole packets of 64.
std::vector<Bytes> Transfers(Bytes answer) {
  answer.resize((answer.size() + 63) / 64 * 64);
  std::vector<Bytes> transfers;
  for (std::size_t at = 0; at < answer.size(); at += 1024) {
    const std::size_t end = std::min(at + 1024, answer.size());
    transfers.emplace_back(answer.begin() + static_cast<std::ptrdiff_t>(at),
                           answer.begin() + static_cast<std::ptrdiff_t>(end));
  }
  return transfers;
}

}  // namespace

TEST_F(NoUsbReader, TriesTheKnownIdsInOrder) {
  NEEDS_PRIVATE_ROOT();

  EXPECT_EQ(kKnown, Tries());

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, OpenHid());
}

TEST_F(NoUsbReader, LogsEveryTry) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_AddHid(0, 0x1234, 0x5678);
  SwitchLogging(true);

  OpenHid();

  Lines expected = {"3: ===>  [tFuncOpenDevice] Start ",
                    "3: ***********************pszDevice = HID", "3: USE HID"};
  for (int i = 0; i < 7; ++i) {
    const std::string id = i < 6 ? kKnown[static_cast<std::size_t>(i)] : "1234:5678";
    const std::string product = id.substr(0, 4);
    std::string vendor = id.substr(5);
    expected.push_back("3:  i = " + std::to_string(i) + " ");
    expected.push_back(i < 6 ? "3: USE default Hid" : "3: USE Set HId ");
    expected.push_back("2: [COMM_Zel_OpenReader]Start ");
    expected.push_back("3: ICC_OpenLinuxTransPort");
    expected.push_back("3: TYPE_USBLIB_HID");
    expected.push_back(std::string("3: openHid:").append(vendor).append(",").append(product) +
                       "\n");
    expected.push_back("3: get hiddev err!\n");
    expected.push_back("2!: [COMM_Zel_OpenReader]End nRet = -50  ");
    if (vendor[0] == '0') vendor.erase(0, 1);
    expected.push_back(
        std::string("3!: ICC_OpenTransPort: PID=").append(product).append(",VID=").append(vendor) +
        ", nRet=-50");
    if (i < 6) expected.push_back("3: [ICC_CloseLinuxTransPort] Start ");  // not after the last
  }
  EXPECT_EQ(expected, WithoutEmptyLines(Logged()));
}

TEST_F(NoUsbReader, TriesTwoAddedIdsAfterTheKnownOnes) {
  NEEDS_PRIVATE_ROOT();
  EXPECT_EQ(0, Dev_Zel_Id_AddHid(0, 0x1111, 0x2222));
  EXPECT_EQ(0, Dev_Zel_Id_AddHid(1, 0x3333, 0x4444));

  EXPECT_EQ(KnownAnd({"1111:2222", "3333:4444"}), Tries());
}

TEST_F(NoUsbReader, TriesTheEntriesBelowAnAddedOne) {
  NEEDS_PRIVATE_ROOT();
  EXPECT_EQ(0, Dev_Zel_Id_AddHid(3, 0x1111, 0x2222));

  EXPECT_EQ(KnownAnd({"0000:0000", "0000:0000", "0000:0000", "1111:2222"}), Tries());
}

TEST_F(NoUsbReader, CountsAddedIdsByTheLastIndex) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_AddHid(3, 0x1111, 0x2222);
  Dev_Zel_Id_AddHid(0, 0x3333, 0x4444);

  EXPECT_EQ(KnownAnd({"3333:4444"}), Tries());
}

TEST_F(NoUsbReader, FillsTheTableAndNoMore) {
  NEEDS_PRIVATE_ROOT();
  Lines added;
  for (std::uint32_t i = 0; i < 10; ++i) {
    EXPECT_EQ(0, Dev_Zel_Id_AddHid(i, 0x1000 + i, 0x2000));
    added.push_back("100" + std::to_string(i) + ":2000");
  }

  for (const std::uint32_t index : {10u, 11u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(RET_PUB_INVAL_PARAM, Dev_Zel_Id_AddHid(index, 0xBAD, 0xBAD));
  }

  EXPECT_EQ(KnownAnd(added), Tries());
}

TEST_F(NoUsbReader, AddsNoneByAnIndexThatIsNone) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_AddHid(10, 0x1111, 0x2222);

  EXPECT_EQ(kKnown, Tries());
}

TEST_F(NoUsbReader, LogsAddedIds) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Dev_Zel_Id_AddHid(3, 1, 2);
  Dev_Zel_Id_AddHid(10, 1, 2);

  EXPECT_EQ((Lines{"3: [Dev_Zel_Id_AddHid] Start nIndex = 3",
                   "3: [Dev_Zel_Id_AddHid] End g_nHidNum = 4  ",
                   "3: [Dev_Zel_Id_AddHid] Start nIndex = 10",
                   "3: [Dev_Zel_Id_AddHid] End g_nHidNum = 4  "}),
            Logged());
}

TEST_F(NoUsbReader, LeavesNothingOpen) {
  OpenHid();

  EXPECT_EQ(0, fake_libusb::Now().contexts);
  EXPECT_EQ(0, fake_libusb::Now().lists);
}

TEST(UsbDevice, StopsAtTheFirstIdThatOpens) {
  NEEDS_PRIVATE_ROOT();
  fake_libusb::Now().devices = {
      {0x2B46, 0xBC01},
      {0x0403, 0xBC95},
  };

  EXPECT_EQ((Lines{"bcd5:0403", "bcd7:0403", "bc95:0403"}), Tries());

  EXPECT_EQ("3: ICC_OpenTransPort: PID=bc95,VID=403, nRet=0", Logged().back());
  EXPECT_EQ(0, tFuncCloseDevice());
}

TEST(UsbDevice, OpensAnAddedId) {
  fake_libusb::Now().devices = {
      {0x5678, 0x1234}
  };
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, OpenHid());

  Dev_Zel_Id_AddHid(0, 0x1234, 0x5678);

  EXPECT_EQ(0, OpenHid());
  EXPECT_EQ(0, tFuncCloseDevice());
}

TEST(UsbDevice, FailsWhenItCannotBeClaimed) {
  NEEDS_PRIVATE_ROOT();
  fake_libusb::Now().claim_result = -6;

  EXPECT_EQ(kKnown, Tries());

  EXPECT_EQ(1u, CountLogged("3!: ICC_OpenTransPort: PID=bcd5,VID=403, nRet=-3"));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, OpenHid());
}

TEST(UsbDevice, HasNoSpeedToRaise) {
  Dev_Zel_Id_RaiseBaundFlag(1);
  ASSERT_EQ(0, tFuncOpenDevice("HID", "", 115200, 0, 5));

  EXPECT_EQ(0, tFuncCloseDevice());

  EXPECT_TRUE(fake_libusb::Now().written.empty());
}

TEST_F(UsbReader, ReadsAnswersOfEveryCheckByte) {
  for (unsigned check = 0; check < 256; ++check) {
    const Bytes answer = Answer(1288, {static_cast<unsigned char>(check)});
    Script(Transfers(answer));

    ASSERT_EQ(1295, Exchange()) << check;

    ASSERT_EQ(HexText(answer), HexText(reply_)) << check;
  }
}

TEST_F(UsbReader, PutsEveryZeroOfTheAnswerBack) {
  for (std::size_t zeros = 0; zeros <= 11; ++zeros) {
    const Bytes answer = Answer(11, Bytes(zeros));
    Script({answer});

    ASSERT_EQ(18, Exchange()) << zeros;

    ASSERT_EQ(HexText(answer), HexText(reply_)) << zeros;
  }
}

TEST_F(UsbReader, PutsNoZerosBackWhereTheyDoNotFit) {
  Script({Answer(11, {0x00})});
  EXPECT_EQ(18, Exchange(18));

  Script({Answer(11, {0x00})});
  EXPECT_EQ(17, Exchange(17));

  Script({Answer(11, {0x00, 0x00, 0x00})});
  EXPECT_EQ(15, Exchange(17));
}

TEST_F(UsbReader, KeepsAnAnswerThatIsLongerThanItSays) {
  Bytes answer = Answer(4, {0x00});
  answer.insert(answer.end(), {0x01, 0x02, 0x00});
  Script({answer});

  EXPECT_EQ(13, Exchange());
}

// Without its head an answer does not say how long it is.
TEST_F(UsbReader, KeepsAnAnswerWithoutItsHead) {
  Script({Answer(0, {})});

  EXPECT_EQ(5, Exchange());
}

TEST_F(UsbReader, PutsNothingBackOfAnAnswerThatWasNotWhole) {
  Bytes answer = Answer(11, {0x00});
  answer.pop_back();
  Script({answer});

  EXPECT_EQ(0, Exchange()) << "the time runs out";
}

// What ended the read was not the announced length.
TEST_F(UsbReader, PutsNothingBackForAnotherEndCondition) {
  COMM_Zel_SetEndCondition([](const unsigned char*, int count) { return count >= 9 ? 0 : -1; });
  Script({
      Bytes{0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x20, 0x01, 0x00}
  });

  EXPECT_EQ(8, Exchange(4096, 1));
}

TEST_F(UsbReader, ForgetsTheAnswerBefore) {
  Script({Answer(20, {0x00})});
  EXPECT_EQ(27, Exchange());
  COMM_Zel_SetEndCondition([](const unsigned char*, int count) { return count >= 9 ? 0 : -1; });
  Script({
      Bytes{0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x20, 0x01, 0x00}
  });

  EXPECT_EQ(8, Exchange(4096, 1));
}

TEST_F(UsbReader, PutsNothingBackWhenTheBufferRanFull) {
  // 5,000 bytes are announced, and the 4,096 that are read end in zeros.
  const Bytes head = Answer(5000, Bytes(4990));
  Script({Bytes(head.begin(), head.begin() + 1024), Bytes(1024), Bytes(1024), Bytes(1024)});

  EXPECT_EQ(17, Exchange(8000));
}

TEST_F(UsbReader, TakesAFloodOfWholeTransfers) {
  Script({Bytes(64, 0xFF)});  // The last whole one reaches past the end.
  fake_libusb::Now().otherwise = {.bytes = Bytes(1024, 0xFF)};

  EXPECT_EQ(4096, Exchange(4096));
  EXPECT_EQ(Bytes(4096, 0xFF), reply_);
}

TEST_F(UsbReader, IsSilent) {
  Script({});

  EXPECT_EQ(0, Exchange());
}

// Trimming is on, and the announced length never comes.
TEST_F(UsbReader, WaitsInVainForOneMoreAnswerThatEndsInZero) {
  Bytes reply(64);
  fake_libusb::Now().otherwise = {.result = -7, .seconds = 1};

  fake_libusb::Now().transfers = {{.bytes = Answer(4, {0x00})}};
  EXPECT_EQ(0, Dev_Zel_IdReciveData(reply.data(), 64));

  fake_libusb::Now().transfers = {{.bytes = Answer(4, {0x01})}};
  COMM_Zel_ChageReadTimeOut(5);
  EXPECT_EQ(11, Dev_Zel_IdReciveData(reply.data(), 64));
}

// Trimming is off during an exchange, so that zeros inside an answer stay, and on behind it.
TEST_F(UsbReader, TrimsTransfersOutsideAnExchangeAlone) {
  const Bytes first = Answer(20, Bytes(5));
  Bytes both = first;
  both.resize(27 - 5);
  both.insert(both.end(), {0x01, 0x00, 0x00, 0x00, 0x02});
  Script({Bytes(both.begin(), both.begin() + 24), Bytes(both.begin() + 24, both.end())});
  EXPECT_EQ(27, Exchange());
  EXPECT_EQ(HexText(both), HexText(reply_));

  COMM_Zel_SetEndCondition([](const unsigned char*, int count) { return count >= 2 ? 0 : -1; });
  fake_libusb::Now().transfers = {{.bytes = {0x01, 0x00, 0x00}}, {.bytes = {0x02}}};
  Bytes reply(64);
  EXPECT_EQ(2, COMM_Zel_ReadDataFromReader(0, 0, 0, reply.data(), 64));
  EXPECT_EQ("01 02", HexText(reply.data(), 2));
}

TEST_F(UsbReader, ReadsFramesPaddedWithZeros) {
  const std::string frame =
      "\x02"
      "000490004142"
      "93\x03";
  Bytes padded(frame.begin(), frame.end());
  padded.resize(64);
  Script({padded});
  unsigned char reply[8] = {};

  EXPECT_EQ(2, COMM_Zel_SendAndReciveData(
                   1, 0x02, 0x03, reinterpret_cast<const unsigned char*>("20"), 2, reply, 8));

  EXPECT_EQ("41 42 00 00 00 00 00 00", HexText(reply));
}

TEST_F(UsbReader, CannotBeCancelled) { EXPECT_EQ(RET_PUB_CANCEL, Dev_Zel_IdCardCancel()); }

TEST_F(UsbReader, IsProbedAndOpenedAgain) {
  NEEDS_PRIVATE_ROOT();
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_USB;
  description.nVid = 0x2B46;
  description.nPid = 0xBC01;
  fake_libusb::Now().calls.clear();

  EXPECT_EQ(0, COMM_Id_CardReaderSynBps(&description));
  EXPECT_EQ("transfer 01 0 1000", fake_libusb::Now().calls.at(0));

  fake_libusb::Now().devices.clear();
  SwitchLogging(true);
  EXPECT_EQ(-1, COMM_Id_CardReaderSynBps(&description));
  EXPECT_EQ(2u, CountLogged("3: [ICC_CloseLinuxTransPort] Start "));
}

TEST_F(UsbReader, FailsItsProbe) {
  fake_libusb::Now().otherwise = {.result = -4};

  EXPECT_EQ(1, COMM_Id_CardReaderSynBps(nullptr));
}
