#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "tests/reader/log_area.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

using Lines = std::vector<std::string>;

// An exported read function: the lines of its own area before and after the conversion of its
// result, and a call of it.
struct Function {
  const char* name;
  Lines before;
  Lines after;
  std::function<int(const char* device, long seconds)> read;
};

template <typename Record>
std::function<int(const char*, long)> Call(int (*function)(const char*, const char*, long, long,
                                                           char*, Record*)) {
  return [function](const char* device, long seconds) {
    char photo[] = "/dev/null";
    Record record = {};
    return function(device, "", 9600, seconds, photo, &record);
  };
}

int ReadJson(const char* device, long seconds) {
  char photo[] = "";
  std::string json(8192, '\0');
  return APP_ID_ReadCollectIDCardInfo(device, "", 9600, seconds, 0, photo, json.data());
}

int ReadJsonShorter(const char* device, long seconds) {
  char photo[] = "";
  std::string json(8192, '\0');
  return Linux_QL_ID_ReadCollectCardInfo(device, 9600, seconds, 0, photo, json.data());
}

const Function kFunctions[] = {
    {"ReadIDCard",           {"[APP_ID_ReadIDCard] Start "},                                {}, Call(APP_ID_ReadIDCard)            },
    {"ReadIDCardFp",         {"[APP_ID_ReadIDCard_FP] Start "},                             {}, Call(APP_ID_ReadIDCard_FP)         },
    {"ReadChina",            {},                                                            {}, Call(APP_ID_ReadChinaIDCard)       },
    {"ReadChinaFp",          {},                                                            {}, Call(APP_ID_ReadChinaIDCard_FP)    },
    {"ReadForeigner",        {},                                                            {}, Call(APP_ID_ReadForeignerIDCard)   },
    {"ReadForeignerFp",      {},                                                            {}, Call(APP_ID_ReadForeignerIDCard_FP)},
    {"ReadIDCardForeigner",  {},                                                            {}, Call(APP_ID_ReadIDCardForeigner)   },
    {"ReadGat",              {},                                                            {}, Call(APP_ID_ReadGATIDCard)         },
    {"ReadGatFp",            {},                                                            {}, Call(APP_ID_ReadGATIDCard_FP)      },
    {"ReadCollect",          {},                                                            {}, Call(APP_ID_ReadCollectIDCard)     },
    {"ReadCollectFp",        {},                                                            {}, Call(APP_ID_ReadCollectIDCard_FP)  },
    {"ReadCollectInfo",
     {"tFunc_ReadCollectIDCardInfo Start "},
     {"! tFunc_ReadCollectIDCardInfo End -1"},
     ReadJson                                                                                                                      },
    {"LinuxReadCollectInfo",
     {"[QL_APP_Id_RaiseBaundFlag] Start bFlag = 01", "tFunc_ReadCollectIDCardInfo Start "},
     {"! tFunc_ReadCollectIDCardInfo End -1"},
     ReadJsonShorter                                                                                                               },
};

void PrintTo(const Function& function, std::ostream* out) { *out << function.name; }

std::string NameOf(const testing::TestParamInfo<Function>& info) { return info.param.name; }

}  // namespace

class ReadFunction : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(All, ReadFunction, testing::ValuesIn(kFunctions), NameOf);

TEST_P(ReadFunction, PublishesAndLogsADeviceThatCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-1, GetParam().read("/dev/no-such-reader", 10));

  Lines expected = GetParam().before;
  for (const char* line : {"[TY_Id_ConvertErr] Start", "nInErrCode = -50 ", "nInErrCode = -50 "}) {
    expected.emplace_back(line);
  }
  expected.insert(expected.end(), GetParam().after.begin(), GetParam().after.end());
  EXPECT_EQ(expected, LinesOf(kApiArea));
}

TEST_P(ReadFunction, PublishesALimitOutOfRange) {
  ScriptedReader reader;

  EXPECT_EQ(-13, GetParam().read(reader.Path().c_str(), 0));
  EXPECT_EQ(-13, GetParam().read(reader.Path().c_str(), 121));

  EXPECT_TRUE(reader.Commands().empty());
}

TEST_P(ReadFunction, PublishesWhatTheCardModuleSays) {
  const std::pair<std::string, int> answers[] = {
      {kNoCardAnswer,     -10 },
      {kIcPowerOnAnswer,  -100},
      {kReadFailedAnswer, -2  },
  };
  for (const auto& [answer, published] : answers) {
    ScriptedReader reader;
    reader.On(kSearchCommand, kFoundAnswer);
    reader.On(kSelectCommand, answer);

    EXPECT_EQ(published, GetParam().read(reader.Path().c_str(), 10)) << answer;
  }
}

TEST_P(ReadFunction, PublishesACancel) {
  ScriptedReader reader;
  reader.On(kSearchCommand, kNoCardAnswer, [] { APP_ID_CancelRead(); });

  EXPECT_EQ(-9, GetParam().read(reader.Path().c_str(), 60));
}

TEST(LinuxReadCollectCardInfo, LogsItsStartThroughThePlainCall) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  ReadJsonShorter("/dev/no-such-reader", 10);

  EXPECT_EQ(" TIME  [Linux_QL_ID_ReadCollectCardInfo] Start ", LogLines().front());
  const Lines lines = LinesOf(kCardArea);
  EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), "szBpNo: "));
}

// The flag holds for the process: nothing clears it after the read.
TEST(LinuxReadCollectCardInfo, LeavesTheRaisingOfTheBaudRateOn) {
  NEEDS_PRIVATE_ROOT();
  ScriptedReader reader;
  ReadJsonShorter("/dev/no-such-reader", 10);
  SwitchLogging(true);

  char photo[] = "";
  std::string json(8192, '\0');
  APP_ID_ReadCollectIDCardInfo(reader.Path().c_str(), "", 115200, 0, 0, photo, json.data());

  const Lines lines = LinesOf("CommDev:");
  const std::string opening = " szTtyName = " + reader.Path() + " nBaud = ";
  const auto first = std::find(lines.begin(), lines.end(), opening + "9600  ");
  EXPECT_NE(lines.end(), std::find(first, lines.end(), opening + "115200  "));
}

TEST(CancelRead, ReturnsZeroAndLogs) {
  NEEDS_PRIVATE_ROOT();
  for (auto* function : {APP_ID_CancelRead, Linux_QL_ID_CancelRead}) {
    SwitchLogging(true);

    EXPECT_EQ(0, function());

    EXPECT_EQ((Lines{"[APP_ID_CancelRead] Start ", "[TY_Id_ConvertErr] Start", "nInErrCode = 0 ",
                     "nInErrCode = 0 "}),
              LinesOf(kApiArea));
    EXPECT_EQ(Lines{"[tFunc_CancelRead] Start "}, LinesOf(kCardArea));
  }
}
