// Results of every image and base64 function, exported and internal, for a record that passes and
// for one that does not.
#include "quillonid/images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "quillonid/carddata.h"
#include "tests/image/path_buffer.h"
#include "tests/image/photo_data.h"
#include "tests/image/service_rows.h"
#include "tests/testing/private_root.h"

namespace {

int Published(int result) {
  switch (result) {
    case 0:
      return 0;
    case -2:
      return -13;
    case -2004:
      return -11;
    default:
      return -100;
  }
}

// Both functions of the row give this result, the exported one as published.
void ExpectResult(const ServiceRow& row, const Records& records, int type, int result) {
  SCOPED_TRACE(row.name + ", type " + std::to_string(type));
  PathBuffer for_service("/tmp");
  PathBuffer for_exported("/tmp");

  EXPECT_EQ(result, row.service(records, type, for_service.data()));
  EXPECT_EQ(Published(result), row.exported(records, type, for_exported.data()));
}

// A text as path leaves no file: nothing is drawn.
void ExpectNoFile(const ServiceRow& row) {
  const std::string folder = TemporaryFolder();
  PathBuffer path(folder);

  row.exported(Records(), 1, path.data());

  EXPECT_TRUE(std::filesystem::is_empty(folder)) << row.name;
}

std::vector<std::string> LogOf(const ServiceRow& row, int type = 1) {
  PathBuffer path("/tmp");
  SwitchLogging(true);
  row.exported(Records(), type, path.data());
  return LogLines();
}

const ServiceRow& RowNamed(const std::string& name) {
  static const std::vector<ServiceRow> all = AllRows();
  return *std::find_if(all.begin(), all.end(), [&](const auto& row) { return row.name == name; });
}

}  // namespace

TEST(ImageFunctions, AreSeventyFour) { EXPECT_EQ(74U, AllRows().size()); }

TEST(HeadImages, AreNamedAfterTheCardNumber) {
  for (const ServiceRow& row : kHeadRows) {
    SCOPED_TRACE(row.name);
    for (const auto call : {row.service, row.exported}) {
      PathBuffer path("/tmp");

      EXPECT_EQ(0, call(Records(), 0, path.data()));

      EXPECT_EQ("/tmp/123-head.bmp", path.text());
    }
  }
}

TEST(HeadImages, RefuseARecordOfAnotherKind) {
  for (const ServiceRow& row : kHeadRows) {
    ExpectResult(row, Records::OfAnotherKind(), 0, row.TakesJson() ? -2 : -2004);
    PathBuffer path("/tmp");

    row.exported(Records::OfAnotherKind(), 0, path.data());

    EXPECT_EQ("/tmp", path.text()) << row.name;
  }
}

TEST(CardSides, DrawNothingAndSucceed) {
  for (const auto* rows : {&kFrontRows, &kBackRows, &kCardRows}) {
    for (const ServiceRow& row : *rows) {
      ExpectNoFile(row);
      if (row.name != "SaveGATFrontImg") ExpectResult(row, Records(), 0, 0);
    }
  }
}

TEST(CardSides, RefuseARecordOfAnotherKind) {
  for (const auto* rows : {&kFrontRows, &kBackRows, &kCardRows}) {
    for (const ServiceRow& row : *rows) {
      ExpectResult(row, Records::OfAnotherKind(), 0, row.TakesJson() ? 0 : -2004);
    }
  }
}

TEST(SaveGATFrontImg, RefusesAPermitThatCanBePackedButItsExportedTwinDoesNot) {
  const Records records;
  PathBuffer path("/tmp");

  EXPECT_EQ(-2004, tFunc_SaveGATFrontImg(&records.gat, path.data()));
  EXPECT_EQ(0, APP_ID_SaveGATFrontImg(&records.gat, path.data()));
  EXPECT_EQ(0, APP_ID_SaveGatFrontImgEx(&records.gat, path.data(), nullptr, 0));
}

TEST(ImagesByType, TakeTheFourTypes) {
  for (const ServiceRow& row : kTypeRows) {
    for (const int type : {0, 1, 2, 3}) {
      const bool head_of_json = row.TakesJson() && type == 0;
      ExpectResult(row, Records(), type, 0);
      ExpectResult(row, Records::OfAnotherKind(), type,
                   row.TakesJson() ? (head_of_json ? -2 : 0) : -2004);
    }
  }
}

TEST(ImagesByType, NameTheHeadPhoto) {
  for (const ServiceRow& row : kTypeRows) {
    PathBuffer path("/tmp/*.jpg");

    EXPECT_EQ(0, row.exported(Records(), 0, path.data())) << row.name;

    EXPECT_EQ("/tmp/123-head.bmp.jpg", path.text()) << row.name;
  }
}

TEST(ImagesByType, RefuseAnyOtherType) {
  for (const ServiceRow& row : kTypeRows) {
    for (const int type : {-1, 4, 255, 256}) {
      ExpectResult(row, Records(), type, -2);
      ExpectResult(row, Records::OfAnotherKind(), type, -2);
    }
  }
}

TEST(ImageBase64, FindsNoFileOfAnyType) {
  for (const ServiceRow& row : kBase64Rows) {
    for (const int type : {0, 1, 2, 3}) {
      ExpectResult(row, Records(), type, -2005);
      PathBuffer out("untouched");

      row.exported(Records(), type, out.data());

      EXPECT_EQ("untouched", out.text()) << row.name;
    }
  }
}

TEST(ImageBase64, RefusesARecordOfAnotherKind) {
  for (const ServiceRow& row : kBase64Rows) {
    for (const int type : {0, 1, 2, 3}) {
      ExpectResult(row, Records::OfAnotherKind(), type, -2004);
    }
  }
}

TEST(ImageBase64, RefusesAnyOtherType) {
  for (const ServiceRow& row : kBase64Rows) {
    const int result = row.name == "GetImgCollectBase64" ? -2004 : -2;
    ExpectResult(row, Records(), 4, result);
    ExpectResult(row, Records(), -1, result);
  }
}

TEST(ImageFunctions, TakeNull) {
  const Records records;
  PathBuffer path("/tmp");

  EXPECT_EQ(-11, APP_ID_SaveHeadImg(nullptr, path.data()));
  EXPECT_EQ(-11, APP_ID_SaveFrontImgEx(nullptr, path.data(), nullptr, 0));
  EXPECT_EQ(-11, APP_ID_SaveFrontImgEx_FP(nullptr, path.data(), nullptr, 0));
  EXPECT_EQ(-11, APP_ID_SaveChinaFrontImgEx(nullptr, path.data(), nullptr, 0));
  EXPECT_EQ(-11, APP_ID_SaveBackImg(nullptr, path.data()));
  EXPECT_EQ(-11, APP_ID_SaveCardImg_FP(nullptr, path.data(), 0));
  EXPECT_EQ(-11, APP_ID_SaveCollectImgEx_FP(0, nullptr, path.data(), nullptr, 0));
  EXPECT_EQ(-11, APP_ID_GetImgBase64(0, nullptr, path.data(), 0));
  EXPECT_EQ(-11, APP_ID_GetImgCollectBase64(0, nullptr, path.data(), 0));
  EXPECT_EQ(-13, APP_ID_SaveCollectInfoHeadImg(nullptr, path.data()));
  EXPECT_EQ(0, APP_ID_SaveHeadImg(&records.person, nullptr));
  EXPECT_EQ(0, APP_ID_SaveFrontImg(&records.person, nullptr));
  EXPECT_EQ(-100, APP_ID_GetImgBase64(1, &records.person, nullptr, 0));
}

TEST(ImageFunctions, PublishTheResultOnce) {
  NEEDS_PRIVATE_ROOT();
  for (const ServiceRow& row : AllRows()) {
    const std::vector<std::string> lines = LogOf(row);
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(), ApiLine("[TY_Id_ConvertErr] Start")))
        << row.name;
  }
}

TEST(ImageFunctions, ReportTheirArgumentsWhereTheyDo) {
  NEEDS_PRIVATE_ROOT();
  for (const char* name :
       {"SaveGatFrontImgEx", "SaveChinaCardImgEx", "SaveChinaCardImgEx_FP", "SaveForeignCardImgEx",
        "SaveForeignCardImgEx_FP", "SaveGatCardImgEx", "SaveGatCardImgEx_FP"}) {
    EXPECT_EQ(ApiLine("[APP_ID_" + std::string(name) + "] Start pLogoMsg = logo"),
              LogOf(RowNamed(name)).front());
  }
  EXPECT_EQ(ApiLine("[APP_ID_SaveForeignImgEx] Start nImgType = 03"),
            LogOf(RowNamed("SaveForeignImgEx"), 3).front());
  EXPECT_EQ(ApiLine("[APP_ID_SaveForeignImgEx] Start nImgType = ffffffff"),
            LogOf(RowNamed("SaveForeignImgEx"), -1).front());
  EXPECT_EQ(ApiLine("[APP_ID_GetImgCollectBase64] Start "),
            LogOf(RowNamed("GetImgCollectBase64")).front());

  const std::vector<std::string> base64 = LogOf(RowNamed("GetImgBase64"), 2);
  EXPECT_EQ(ApiLine("[APP_ID_GetImgBase64] Start nImgType = 2"), base64.front());
  EXPECT_EQ(ApiErrorLine("[APP_ID_GetImgBase64] End nConvertRet = -100  "), base64.back());
}

TEST(ImageFunctions, ReportNullTexts) {
  NEEDS_PRIVATE_ROOT();
  const Records records;
  SwitchLogging(true);

  APP_ID_SaveGatFrontImgEx(&records.gat, nullptr, nullptr, 0);

  EXPECT_EQ((std::vector<std::string>{
                ApiLine("[APP_ID_SaveGatFrontImgEx] Start pLogoMsg = (null)"),
                ApiLine("[tFunc_SaveGatFrontImgEx] Start "),
                ApiLine("[tFunc_SaveGatFrontImgEx_FP] Start szFrontImg = (null)  "),
                ApiLine("[TY_Id_ConvertErr] Start"),
                ApiLine("nInErrCode = 0 "),
                ApiLine("nInErrCode = 0 "),
            }),
            LogLines());
}

TEST(ImageFunctions, ReportNothingOfTheirOwnElsewhere) {
  NEEDS_PRIVATE_ROOT();
  const std::string reporting[] = {
      "SaveGatFrontImgEx", "SaveChinaCardImgEx",  "SaveChinaCardImgEx_FP",   "SaveForeignCardImgEx",
      "SaveGatCardImgEx",  "SaveGatCardImgEx_FP", "SaveForeignCardImgEx_FP", "SaveForeignImgEx",
      "GetImgBase64",      "GetImgCollectBase64"};
  for (const ServiceRow& row : AllRows()) {
    if (std::find(std::begin(reporting), std::end(reporting), row.name) != std::end(reporting)) {
      continue;
    }
    for (const std::string& line : LogOf(row)) {
      EXPECT_EQ(std::string::npos, line.find("APP_ID_")) << row.name << ": " << line;
    }
  }
}
