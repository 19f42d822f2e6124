// Time texts, ticks, dates, random bytes and result codes.
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "quillonid/quillonid.h"
#include "quillonid/results.h"
#include "quillonid/support.h"
#include "tests/carddata/iconv_text.h"
#include "tests/models/model.h"
#include "tests/support/still_log.h"
#include "tests/testing/published_results.h"

namespace {

// The library's clock held at a time of this and the next centuries.
struct Moment {
  explicit Moment(Random& random) {
    seconds = static_cast<std::int64_t>(random.Word() % 4102444800U);
    milliseconds = random.Between(0, 999);
    stand_in_clock::HoldWallClock(seconds, milliseconds * 1000000 + random.Between(0, 999999));
    const time_t time = seconds;
    gmtime_r(&time, &parts);
  }

  std::int64_t Ticks() const { return seconds * 1000 + milliseconds; }

  std::string Text(const std::string& between) const {
    char text[128];
    const char* s = between.c_str();
    std::snprintf(text, sizeof text, "%02d%s%02d%s%02d%s%02d%s%02d%s%02d%s%03d",
                  parts.tm_year - 100, s, parts.tm_mon + 1, s, parts.tm_mday, s, parts.tm_hour, s,
                  parts.tm_min, s, parts.tm_sec, s, milliseconds);
    return text;
  }

  std::int64_t seconds = 0;
  int milliseconds = 0;
  tm parts = {};
};

bool IsValid(const unsigned char* bcd) {
  for (int i = 0; i < 3; ++i) {
    if (bcd[i] / 16 > 9 || bcd[i] % 16 > 9) return false;
  }
  const int year = (bcd[0] < 0x50 ? 2000 : 1900) + bcd[0] / 16 * 10 + bcd[0] % 16;
  const int month = bcd[1] / 16 * 10 + bcd[1] % 16;
  const int day = bcd[2] / 16 * 10 + bcd[2] % 16;
  if (month < 1 || month > 12 || day < 1 || day > 31) return false;
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool is_leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return day <= (month == 2 && is_leap ? 29 : kDays[month - 1]);
}

// GBK, but for the text of an unknown code.
std::string MessageOf(int code) {
  static const std::map<int, std::string> messages = [] {
    const Iconv gbk("GBK", "UTF-8");
    std::map<int, std::string> made = {
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
        {-13,  "参数错误"            }
    };
    for (auto& [number, text] : made) text = gbk(text).value();
    return made;
  }();
  const auto known = messages.find(code);
  return known == messages.end() ? "未知错误" : known->second;
}

}  // namespace

TEST(ModelOfTimeGetLocalTime, IsEqual) {
  HoldStamp();
  ForEachInput([](Random& random) {
    const Moment moment(random);
    const std::string between = random.Text(random.Between(0, 15), "-: /");
    if (random.OneIn(4)) {
      return Equal(moment.Text(""), std::string(Time_GetLocalTime(nullptr)));
    }

    return Equal(moment.Text(between), std::string(Time_GetLocalTime(between.c_str())));
  });
}

TEST(ModelOfGetTransTime, IsEqual) {
  HoldStamp();
  ForEachInput([](Random& random) {
    const Moment moment(random);
    if (moment.parts.tm_year < 100) return true;
    Outputs<6> time(random);
    Outputs<6> date(random);

    const int library = GetTransTime(time.library_text()) + GetTransDate(date.library_text());
    std::memcpy(time.model(), moment.Text("").data() + 6, 6);
    std::memcpy(date.model(), moment.Text("").data(), 6);

    return Equal(0, library) && time.AreEqual() && date.AreEqual();
  });
}

TEST(ModelOfGetLogTime, IsEqual) {
  HoldStamp();
  ForEachInput([](Random& random) {
    const Moment moment(random);
    const std::string text = moment.Text("");

    return Equal(text.substr(text.size() - 13), std::string(GetLogTime()));
  });
}

TEST(ModelOfGetTickCount, IsEqual) {
  HoldStamp();
  ForEachInput([](Random& random) {
    const Moment start(random);
    const bool starts = Equal(start.Ticks(), std::int64_t{GetTickCountStartTime()}) &&
                        Equal(static_cast<unsigned>(start.Ticks() & 0xFFFFFFFF), GetTickCount());
    const Moment end(random);

    return starts && Equal(end.Ticks(), std::int64_t{GetTickCountEndTime()}) &&
           Equal(end.Ticks() - start.Ticks(), std::int64_t{GetTickCountTimeOut()});
  });
}

TEST(ModelOfGeneralSleep, IsEqual) {
  ForEachInput([](Random& random) {
    const int n = random.OneIn(2) ? random.Between(0, 1000) : random.Between(0, 200000);
    const double before = stand_in_clock::SecondsSlept();

    const unsigned library = GeneralSleep(n);

    const int seconds = n / 200;
    return Equal(0U, library) && Equal(before + seconds, stand_in_clock::SecondsSlept());
  });
}

TEST(ModelOfGetRandom, IsEqual) {
  HoldStamp();
  ForEachInput(
      [](Random& random) {
        const Moment moment(random);
        const int count = random.Between(-1, 20);
        Outputs<20> out(random);

        const int library = GetRandom(count, out.library());
        srand(static_cast<unsigned>(moment.seconds));
        for (int i = 0; i < count; ++i) {
          out.model()[i] = static_cast<unsigned char>(rand() & 0xFF);
          srand(static_cast<unsigned>((moment.seconds + i + out.model()[i]) & 0xFFFFFFFF));
        }

        return Equal(0, library) && out.AreEqual();
      },
      20000);
}

TEST(ModelOfTimeValidYYMMDD, IsEqual) {
  ForEachInput([](Random& random) {
    unsigned char bcd[3];
    random.Fill(bcd, sizeof bcd);
    if (random.OneIn(2)) bcd[1] = static_cast<unsigned char>(random.Between(0, 0x13));
    if (random.OneIn(2)) bcd[2] = static_cast<unsigned char>(random.Between(0x27, 0x32));

    return Equal(IsValid(bcd) ? 0 : -1, time_Valid_YYMMDD(bcd));
  });
}

TEST(ModelOfTYIdConvertErr, IsEqual) {
  ForEachInput([](Random& random) {
    const int code = random.OneIn(4)   ? static_cast<int>(random.Word())
                     : random.OneIn(2) ? random.Between(-60, 20)
                                       : random.Between(-2010, -1990);
    int library = 7777;

    TY_Id_ConvertErr(code, &library);

    return Equal(PublishedResult(code), library);
  });
}

TEST(ModelOfTYIDGetErrMessage, IsEqual) {
  ForEachInput([](Random& random) {
    const int code = random.OneIn(4)   ? static_cast<int>(random.Word())
                     : random.OneIn(4) ? random.Between(-2010, -1990)
                     : random.OneIn(4) ? random.Between(-110, 2000)
                                       : random.Between(-101, 3);
    Outputs<QL_MESSAGE_SIZE> out(random);

    const char* const library = random.OneIn(2)
                                    ? TY_IDGetErrMessage(code, out.library_text())
                                    : APP_ID_IDGetErrCodeMessage(code, out.library_text());
    WriteText(MessageOf(code), out.model_text());

    return Equal<const char*>(out.library_text(), library) && out.AreEqual();
  });
}
