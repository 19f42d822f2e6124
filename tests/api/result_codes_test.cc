#include <gtest/gtest.h>
#include <iconv.h>

#include <climits>

#include "quillonid/quillonid.h"
#include "quillonid/results.h"
#include "tests/reader/log_area.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/published_results.h"

namespace {

using Lines = std::vector<std::string>;

int Published(int code) {
  int published = 12345;
  TY_Id_ConvertErr(code, &published);
  return published;
}

struct MessageCase {
  int code;
  const char* text;
};

const MessageCase kMessages[] = {
    {0,    "操作成功"            },
    {-1,   "设备错误"            },
    {-2,   "接收错误"            },
    {-3,   "发送错误"            },
    {-4,   "校验错误"            },
    {-5,   "超时"                  },
    {-7,   "解析头像错误"      },
    {-8,   "保存图像错误"      },
    {-9,   "取消"                  },
    {-11,  "卡片类型错误"      },
    {-10,  "未找到卡片"         },
    {-100, "其他错误"            },
    {-12,  "二代证设备不支持"},
    {-13,  "参数错误"            },
};

void PrintTo(const MessageCase& row, std::ostream* out) { *out << row.code; }

// The C library's conversion, apart from the library's own tables.
std::string Gbk(std::string utf8) {
  const iconv_t conversion = iconv_open("GBK", "UTF-8");
  std::string gbk(2 * utf8.size(), '\0');
  char* in = utf8.data();
  char* out = gbk.data();
  std::size_t in_left = utf8.size();
  std::size_t out_left = gbk.size();
  EXPECT_EQ(0U, iconv(conversion, &in, &in_left, &out, &out_left)) << utf8;
  iconv_close(conversion);
  gbk.resize(gbk.size() - out_left);
  return gbk;
}

}  // namespace

TEST(ConvertErr, PublishesEveryCodeThatHasAPair) {
  for (const auto& [internal, published] : kPublished) EXPECT_EQ(published, Published(internal));
}

TEST(ConvertErr, PassesZeroAndCountsUnchanged) {
  for (const int count : {0, 1, 11, 1295, 2321, INT_MAX}) EXPECT_EQ(count, Published(count));
}

TEST(ConvertErr, PublishesEveryOtherCodeAsOther) {
  for (int code = -70000; code < 0; ++code) {
    if (kPublished.contains(code)) continue;
    ASSERT_EQ(-100, Published(code)) << code;
  }
  EXPECT_EQ(-100, Published(INT_MIN));
}

TEST(ConvertErr, IgnoresANullPointer) { TY_Id_ConvertErr(-2, nullptr); }

TEST(ConvertErr, LogsTheCodeTwice) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Published(-2003);

  EXPECT_EQ((Lines{"[TY_Id_ConvertErr] Start", "nInErrCode = -2003 ", "nInErrCode = -2003 "}),
            LinesOf(kApiArea));
}

class ErrMessage : public testing::TestWithParam<MessageCase> {};

// Nothing is written behind the text's zero: the buffer may be shorter than a field of the table.
TEST_P(ErrMessage, IsGbkAndNoLongerThanItsText) {
  for (auto* function :
       {TY_IDGetErrMessage, APP_ID_IDGetErrCodeMessage, Linux_QL_ID_GetErrCodeMessage}) {
    const std::string expected = Gbk(GetParam().text);
    std::string buffer(QL_MESSAGE_SIZE, '\x5A');

    EXPECT_EQ(buffer.data(), function(GetParam().code, buffer.data()));

    EXPECT_EQ(HexText(expected), HexText(buffer.substr(0, expected.size())));
    EXPECT_EQ('\0', buffer[expected.size()]);
    EXPECT_EQ(std::string::npos, buffer.find_first_not_of('\x5A', expected.size() + 1));
  }
}
INSTANTIATE_TEST_SUITE_P(All, ErrMessage, testing::ValuesIn(kMessages));

// On purpose in UTF-8, unlike the table.
TEST(ErrMessageOfAnUnknownCode, IsUtf8) {
  for (const int code : {-6, -55, -14, 1, 1295, INT_MIN}) {
    std::string buffer(QL_MESSAGE_SIZE, '\x5A');

    EXPECT_EQ(buffer.data(), TY_IDGetErrMessage(code, buffer.data()));

    EXPECT_EQ("E6 9C AA E7 9F A5 E9 94 99 E8 AF AF 00 5A", HexText(buffer.substr(0, 14)));
  }
}

TEST(ErrMessageOfANullBuffer, IsNull) {
  EXPECT_EQ(nullptr, TY_IDGetErrMessage(0, nullptr));
  EXPECT_EQ(nullptr, TY_IDGetErrMessage(-6, nullptr));
}

TEST(ErrMessageLog, TellsTheCode) {
  NEEDS_PRIVATE_ROOT();
  char buffer[QL_MESSAGE_SIZE];
  SwitchLogging(true);

  TY_IDGetErrMessage(-11, buffer);

  EXPECT_EQ((Lines{"[TY_IDGetErrMessage] Start ", "nInErrCode = -11 "}), LinesOf(kApiArea));
}
