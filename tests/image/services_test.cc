// What the image services look at in a record, and what they report.
#include <cjson/cJSON.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdlib>

#include "quillonid/carddata.h"
#include "quillonid/images.h"
#include "tests/image/path_buffer.h"
#include "tests/image/photo_data.h"
#include "tests/image/service_rows.h"
#include "tests/testing/private_root.h"

namespace {

int SaveHead(const PERSONINFO* r, char* path) { return tFunc_SaveHeadImg(r, path); }
int SaveHead(const PERSONINFO_FP* r, char* path) { return tFunc_SaveHeadImg_FP(r, path); }
int SaveHead(const PERSONINFO_CHA* r, char* path) { return tFunc_SaveChinaHeadImg(r, path); }
int SaveHead(const PERSONINFO_CHA_FP* r, char* path) { return tFunc_SaveChinaHeadImg_FP(r, path); }
int SaveHead(const PERSONINFO_FOR* r, char* path) { return tFunc_SaveForeignHeadImg(r, path); }
int SaveHead(const PERSONINFO_FOR_FP* r, char* path) {
  return tFunc_SaveForeignHeadImg_FP(r, path);
}
int SaveHead(const PERSONINFO_GAT* r, char* path) { return tFunc_SaveGATHeadImg(r, path); }
int SaveHead(const PERSONINFO_GAT_FP* r, char* path) { return tFunc_SaveGATHeadImg_FP(r, path); }
int SaveHead(const PERSONINFO_COLLECT* r, char* path) { return tFunc_SaveCollectHeadImg(r, path); }
int SaveHead(const PERSONINFO_COLLECT_FP* r, char* path) {
  return tFunc_SaveCollectHeadImg_FP(r, path);
}

// A record with a mark passes for these marks alone, whatever follows the first byte.
template <typename Record>
void PassesMarks(const std::string& marks) {
  for (int byte = 0; byte < 256; ++byte) {
    const char mark[] = {static_cast<char>(byte), byte == 0 ? '\0' : 'x', '\0'};
    const Record record = MakeRecord<Record>("123", mark, "01");
    PathBuffer path("/tmp");
    const bool passes = byte != 0 && marks.find(mark[0]) != std::string::npos;
    EXPECT_EQ(passes ? 0 : -2004, SaveHead(&record, path.data())) << byte;
  }
}

template <typename Record>
void NeedsACardNumber(const char* mark) {
  const Record record = MakeRecord<Record>("", mark, "01");
  PathBuffer path("/tmp");
  EXPECT_EQ(-2004, SaveHead(&record, path.data()));
}

template <typename Record>
void NeedsANation() {
  PathBuffer path("/tmp");
  const Record without = MakeRecord<Record>("123", "", "");
  EXPECT_EQ(-2004, SaveHead(&without, path.data()));
  const Record with = MakeRecord<Record>("123", "", "01");
  EXPECT_EQ(0, SaveHead(&with, path.data()));
}

// A plain record that ends where memory ends.
class RecordAtTheEnd {
 public:
  template <typename Record>
  const Record* Put(const Record& record) {
    unsigned char* const place = pages_ + kSize - sizeof record;
    std::memcpy(place, &record, sizeof record);
    return reinterpret_cast<const Record*>(place);
  }

  RecordAtTheEnd()
      : pages_(static_cast<unsigned char*>(
            mmap(nullptr, 2 * kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(pages_ + kSize, kSize, PROT_NONE);
  }
  RecordAtTheEnd(const RecordAtTheEnd&) = delete;
  RecordAtTheEnd& operator=(const RecordAtTheEnd&) = delete;
  ~RecordAtTheEnd() { munmap(pages_, 2 * kSize); }

 private:
  static constexpr std::size_t kSize = 4096;
  unsigned char* pages_;
};

std::string Start(const std::string& name) {
  return ApiLine("[" + name + "] Start szFrontImg = /tmp  ");
}

std::vector<std::string> LogOf(const std::string& name, int type = 1) {
  for (const ServiceRow& row : AllRows()) {
    if (row.name != name) continue;
    PathBuffer path("/tmp");
    SwitchLogging(true);
    row.service(Records(), type, path.data());
    return LogLines();
  }
  return {"no such service"};
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(RecordGate, LooksAtTheMark) {
  PassesMarks<PERSONINFO>(" I");
  PassesMarks<PERSONINFO_FP>(" I");
  PassesMarks<PERSONINFO_FOR>("I");
  PassesMarks<PERSONINFO_FOR_FP>("I");
  PassesMarks<PERSONINFO_GAT>("J");
  PassesMarks<PERSONINFO_GAT_FP>("J");
  PassesMarks<PERSONINFO_COLLECT>(" IJ");
  PassesMarks<PERSONINFO_COLLECT_FP>(" IJ");
}

TEST(RecordGate, NeedsACardNumber) {
  NeedsACardNumber<PERSONINFO>(" ");
  NeedsACardNumber<PERSONINFO_FP>(" ");
  NeedsACardNumber<PERSONINFO_CHA>("");
  NeedsACardNumber<PERSONINFO_CHA_FP>("");
  NeedsACardNumber<PERSONINFO_FOR>("I");
  NeedsACardNumber<PERSONINFO_FOR_FP>("I");
  NeedsACardNumber<PERSONINFO_GAT>("J");
  NeedsACardNumber<PERSONINFO_GAT_FP>("J");
  NeedsACardNumber<PERSONINFO_COLLECT>(" ");
  NeedsACardNumber<PERSONINFO_COLLECT_FP>(" ");
}

TEST(RecordGate, NeedsTheNationOfAResident) {
  NeedsANation<PERSONINFO_CHA>();
  NeedsANation<PERSONINFO_CHA_FP>();
}

TEST(SaveHeadImg, ReadsNoCardNumberPastItsField) {
  PERSONINFO_GAT record = MakeRecord<PERSONINFO_GAT>("123", "J", "");
  std::memset(record.cardId, '9', sizeof record.cardId);
  SetText(record.police, "behind the card number");
  PathBuffer path("/tmp");

  EXPECT_EQ(0, tFunc_SaveGATHeadImg(&record, path.data()));

  EXPECT_EQ("/tmp/" + std::string(50, '9') + "-head.bmp", path.text());
}

TEST(SaveCollectInfoHeadImg, SaysWhatTheJsonLacks) {
  PathBuffer path("/tmp");

  EXPECT_EQ(-2, tFunc_SaveCollectInfoHeadImg("{", path.data()));
  EXPECT_EQ(-2, tFunc_SaveCollectInfoHeadImg("{}", path.data()));
  EXPECT_EQ(-2004, tFunc_SaveCollectInfoHeadImg(R"({"IDNumber": 123})", path.data()));

  EXPECT_EQ("/tmp", path.text());
}

TEST(SaveCollectInfoHeadImg, CutsAnEndlessNumber) {
  const std::string json = R"({"IDNumber": ")" + std::string(100000, '9') + "\"}";
  PathBuffer path("/tmp");

  EXPECT_EQ(0, tFunc_SaveCollectInfoHeadImg(json.c_str(), path.data()));

  EXPECT_EQ("/tmp/" + std::string(1018, '9'), path.text());
  EXPECT_TRUE(path.IsUntouchedBehind(1024));
}

TEST(CardSides, TellARecordThatCannotBePacked) {
  // The combined record is packed as the kind that it becomes, which takes a name.
  Records records;
  std::memset(records.person.name, 0, sizeof records.person.name);
  std::memset(records.person_fp.name, 0, sizeof records.person_fp.name);
  PathBuffer path("/tmp");

  EXPECT_EQ(-2004, tFunc_SaveFrontImg(&records.person, path.data()));
  EXPECT_EQ(-2004, tFunc_SaveFrontImg_FP(&records.person_fp, path.data()));
  EXPECT_EQ(-2004, tFunc_SaveFrontImgEx(&records.person, path.data(), "", 0));
  EXPECT_EQ(-2004, tFunc_SaveBackImg_FP(&records.person_fp, path.data()));
  EXPECT_EQ(-2004, tFunc_SaveBackImgEx_FP(&records.person_fp, path.data(), "", 0));
  EXPECT_EQ(-1, tFunc_SaveCardImg(&records.person, path.data(), 0));
  EXPECT_EQ(-1, tFunc_SaveCardImg_FP(&records.person_fp, path.data(), 0));
  EXPECT_EQ(-1, tFunc_SaveCardImgEx(&records.person, path.data(), "", 0));
  EXPECT_EQ(-1, tFunc_SaveCardImgEx_FP(&records.person_fp, path.data(), "", 0));
  EXPECT_EQ(-100, APP_ID_SaveCardImgEx(&records.person, path.data(), "", 0));
}

TEST(CardSides, TellARecordThatThereIsNoMemoryToPack) {
  const Records records;
  PathBuffer path("/tmp");
  cJSON_Hooks hooks = {[](std::size_t) -> void* { return nullptr; }, std::free};
  cJSON_InitHooks(&hooks);

  EXPECT_EQ(-2004, tFunc_SaveFrontImg(&records.person, path.data()));
  EXPECT_EQ(-1, tFunc_SaveCardImg(&records.person, path.data(), 0));
  EXPECT_EQ(0, tFunc_SaveGATFrontImg(&records.gat, path.data()));  // it draws what it cannot pack

  cJSON_InitHooks(nullptr);
}

TEST(CardSides, TellACollectRecordWithoutTheWantedPhoto) {
  const Records records;
  PathBuffer path("/tmp");
  tFunc_SetAddPhotoDataToJsonFlag(1);  // nothing was read

  EXPECT_EQ(-2004, tFunc_SaveCollectFrontImg(&records.collect, path.data()));
  EXPECT_EQ(-2004, tFunc_SaveCollectBackImg(&records.collect, path.data()));
  EXPECT_EQ(-1, tFunc_SaveCollectCardImgEx(&records.collect, path.data(), "", 0));
}

TEST(CardSides, PackARecordOfAnySize) {
  // Every field at its fullest, in characters that take six each, with the photo.
  Records records;
  const auto fill = [](auto& record) {
    std::memset(record.fingerData1, 1, 1024);
    std::memset(record.fingerData2, 1, 1024);
    std::memset(record.address, 1, sizeof record.address - 1);
    std::memset(record.police, 1, sizeof record.police - 1);
  };
  fill(records.person_fp);
  fill(records.china_fp);
  fill(records.foreign_fp);
  fill(records.gat_fp);
  fill(records.collect_fp);
  for (const auto* rows : {&kFrontRows, &kBackRows, &kCardRows}) {
    for (const ServiceRow& row : *rows) {
      if (!row.name.ends_with("_FP")) continue;
      PathBuffer path("/tmp");
      const bool collect = row.name.find("Collect") != std::string::npos;
      tFunc_SetAddPhotoDataToJsonFlag(collect ? 0 : 1);  // zeros are packed for want of a photo

      EXPECT_EQ(0, row.service(records, 0, path.data())) << row.name;
    }
  }
}

TEST(CardSides, ReportTheirStart) {
  NEEDS_PRIVATE_ROOT();
  // A service alone reports itself; most of those without templates report their twin.
  for (const char* name : {"SaveFrontImg",
                           "SaveChinaFrontImgEx",
                           "SaveChinaFrontImgEx_FP",
                           "SaveGATFrontImg",
                           "SaveCollectFrontImg",
                           "SaveFrontImgEx_FP",
                           "SaveForeignFrontImgEx_FP",
                           "SaveGatFrontImgEx_FP",
                           "SaveCollectFrontImgEx_FP",
                           "SaveBackImg",
                           "SaveBackImg_FP",
                           "SaveCollectBackImg",
                           "SaveBackImgEx_FP",
                           "SaveChinaBackImgEx_FP",
                           "SaveForeignBackImgEx_FP",
                           "SaveGatBackImgEx_FP",
                           "SaveCollectBackImgEx_FP",
                           "SaveCardImg",
                           "SaveCardImg_FP",
                           "SaveCardImgEx_FP",
                           "SaveChinaCardImgEx_FP",
                           "SaveForeignCardImgEx_FP",
                           "SaveGatCardImgEx_FP",
                           "SaveCollectCardImgEx_FP"}) {
    EXPECT_EQ(Start("tFunc_" + std::string(name)), LogOf(name).front());
    EXPECT_EQ(1U, LogOf(name).size()) << name;
  }
  for (const char* name :
       {"SaveFrontImgEx", "SaveForeignFrontImgEx", "SaveCollectFrontImgEx", "SaveBackImgEx",
        "SaveChinaBackImgEx", "SaveForeignBackImgEx", "SaveGatBackImgEx", "SaveCollectBackImgEx",
        "SaveCardImgEx", "SaveChinaCardImgEx", "SaveForeignCardImgEx", "SaveGatCardImgEx",
        "SaveCollectCardImgEx"}) {
    EXPECT_EQ(Lines{Start("tFunc_" + std::string(name) + "_FP")}, LogOf(name));
  }
  EXPECT_EQ(Lines{Start("tFunc_SaveChinaFrontImgEx")}, LogOf("SaveChinaFrontImg"));
  EXPECT_EQ(Lines{Start("tFunc_SaveChinaFrontImgEx_FP")}, LogOf("SaveChinaFrontImg_FP"));
  EXPECT_EQ(Lines{Start("tFunc_SaveFrontImg")}, LogOf("SaveFrontImg_FP"));
  EXPECT_EQ(
      (Lines{ApiLine("[tFunc_SaveGatFrontImgEx] Start "), Start("tFunc_SaveGatFrontImgEx_FP")}),
      LogOf("SaveGatFrontImgEx"));
  for (const char* name :
       {"SaveCollectInfoFrontImgEx", "SaveCollectInfoBackImgEx", "SaveCollectInfoCardImgEx"}) {
    EXPECT_EQ(Lines{}, LogOf(name));
  }
}

TEST(HeadImages, ReportTheirStartWhereTheyDo) {
  NEEDS_PRIVATE_ROOT();
  const Lines naming = {ApiLine("[tFuncSaveHeadImg] Start szHeadName = 123 "),
                        ApiLine("szHeadImg = /tmp")};
  for (const ServiceRow& row : kHeadRows) {
    Lines expected = naming;
    if (row.name == "SaveHeadImg_FP" || row.name == "SaveCollectHeadImg") {
      expected.insert(expected.begin(), ApiLine("[tFunc_" + row.name + "] Start"));
    }
    Lines lines = LogOf(row.name);
    if (row.TakesJson()) lines.erase(lines.begin(), lines.begin() + 2);  // what the parser reports
    EXPECT_EQ(expected, lines) << row.name;
  }
}

TEST(HeadImages, ReportARefusedCombinedRecord) {
  NEEDS_PRIVATE_ROOT();
  const Records others = Records::OfAnotherKind();
  PathBuffer path("/tmp");
  SwitchLogging(true);

  tFunc_SaveHeadImg_FP(&others.person_fp, path.data());
  tFunc_SaveHeadImg(&others.person, path.data());

  EXPECT_EQ((Lines{ApiLine("[tFunc_SaveHeadImg_FP] Start"), ApiLine(" Card Type Err ")}),
            LogLines());
}

TEST(ImagesByType, ReportTheirStartWhereTheyDo) {
  NEEDS_PRIVATE_ROOT();
  const Lines combined = {ApiLine("[tFunc_SaveImg] Start "), ApiLine("nImgType = 2 "),
                          Start("tFunc_SaveBackImg")};
  EXPECT_EQ(combined, LogOf("SaveImg", 2));
  EXPECT_EQ(combined, LogOf("SaveImg_FP", 2));
  EXPECT_EQ(Lines{Start("tFunc_SaveChinaBackImgEx_FP")}, LogOf("SaveChinaImgEx", 2));
  EXPECT_EQ(Lines{Start("tFunc_SaveChinaBackImgEx_FP")}, LogOf("SaveChinaImgEx_FP", 2));
  EXPECT_EQ(Lines{Start("tFunc_SaveCollectBackImgEx_FP")}, LogOf("SaveCollectImg", 2));
  EXPECT_EQ(Lines{Start("tFunc_SaveCollectBackImgEx_FP")}, LogOf("SaveCollectImgEx", 2));
  EXPECT_EQ(ApiLine("[tFunc_SaveCollectImgEx_FP] Start "), LogOf("SaveCollectImgEx_FP", 2).front());
  EXPECT_EQ(Lines{}, LogOf("SaveCollectInfoImgEx", 2));
}

TEST(GetImgBase64, ReportsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const Lines lines = LogOf("GetImgBase64", 0);
  const auto has = [&](const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  };

  EXPECT_EQ(ApiLine("[tFunc_GetImgBase64] Start "), lines.front());
  EXPECT_TRUE(has(ApiLine("nBase = 0 ")));
  EXPECT_TRUE(has(ApiErrorLine("GetBase64FromFile nRet = -2  nLen = 0 ")));
  EXPECT_EQ(ApiErrorLine("[tFunc_GetImgBase64] End nRet = -2005  "), lines.back());
}

TEST(GetImgBase64, ReportsOnlyItsStartForARefusedRecord) {
  NEEDS_PRIVATE_ROOT();
  const Records others = Records::OfAnotherKind();
  PathBuffer out("");
  SwitchLogging(true);

  tFunc_GetGATImgBase64(1, &others.gat, out.data(), 1024);

  EXPECT_EQ(
      (Lines{ApiLine("[tFunc_GetGATImgBase64] Start "), ApiLine("[tFunc_SaveGatFrontImgEx] Start "),
             ApiLine("[tFunc_SaveGatFrontImgEx_FP] Start szFrontImg =   ")}),
      LogLines());
}

TEST(GetImgCollectBase64, ReportsTheCard) {
  NEEDS_PRIVATE_ROOT();
  const Records others = Records::OfAnotherKind();
  PathBuffer out("");
  SwitchLogging(true);

  tFunc_GetImgCollectBase64(0, &others.collect, out.data(), 1024);

  EXPECT_EQ(
      (Lines{ApiLine("[tFunc_GetImgCollectBase64] Start "), ApiLine("[cardId = 123 ]"),
             ApiLine("[cardType = K ]"), ApiLine("[tFunc_GetImgCollectBase64] Card Type Err ")}),
      LogLines());
}

TEST(GetImgCollectBase64, ReportsNoFieldPastItsWidth) {
  NEEDS_PRIVATE_ROOT();
  PERSONINFO_COLLECT record = {};
  std::memset(record.cardId, '9', sizeof record.cardId);
  std::memset(record.cardType, 'K', sizeof record.cardType);
  SetText(record.police, "behind");
  PathBuffer out("");
  SwitchLogging(true);

  tFunc_GetImgCollectBase64(0, &record, out.data(), 1024);

  EXPECT_EQ(ApiLine("[cardId = " + std::string(50, '9') + " ]"), LogLines().at(1));
  EXPECT_EQ(ApiLine("[cardType = KKKKKKKKKK ]"), LogLines().at(2));
}

// Applications mix up the two records of a kind. The forwarding services look only at what both
// have.
TEST(ForwardingServices, ReadNothingBehindAPlainRecord) {
  const Records records;
  RecordAtTheEnd end;
  PathBuffer path("");
  for (const int type : {0, 1, 2, 3}) {
    const auto* person = reinterpret_cast<const PERSONINFO_FP*>(end.Put(records.person));
    EXPECT_EQ(0, tFunc_SaveImg_FP(type, 0, person, path.data()));
    EXPECT_EQ(0, tFunc_SaveImgEx_FP(type, person, path.data(), "", 0));
    EXPECT_EQ(-2005, tFunc_GetImgBase64_FP(type, person, path.data(), 0));
    const auto* china = reinterpret_cast<const PERSONINFO_CHA_FP*>(end.Put(records.china));
    EXPECT_EQ(0, tFunc_SaveChinaImgEx_FP(type, china, path.data(), "", 0));
    const auto* foreign = reinterpret_cast<const PERSONINFO_FOR_FP*>(end.Put(records.foreign));
    EXPECT_EQ(0, tFunc_SaveForeignImgEx_FP(type, foreign, path.data(), "", 0));
    const auto* gat = reinterpret_cast<const PERSONINFO_GAT_FP*>(end.Put(records.gat));
    EXPECT_EQ(0, tFunc_SaveGatImgEx_FP(type, gat, path.data(), "", 0));
    const auto* collect = reinterpret_cast<const PERSONINFO_COLLECT_FP*>(end.Put(records.collect));
    EXPECT_EQ(0, tFunc_SaveCollectImgEx_FP(type, collect, path.data(), "", 0));
    EXPECT_EQ(-2005, tFunc_GetImgCollectBase64(type, end.Put(records.collect), path.data(), 0));
  }
}

TEST(Composers, DrawNothing) {
  EXPECT_EQ(0, tFuncSaveFontImg(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(0, tFuncSavaBackImage("{}", "/tmp/a.bmp", "logo", 1));
  EXPECT_EQ(0, tFuncSaveImg("{}", "/tmp/a.bmp", "logo", 1));
  EXPECT_FALSE(FileExists("/tmp/a.bmp"));
}
