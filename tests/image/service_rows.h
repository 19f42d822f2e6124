// Every image and base64 function with the service of the same name, called with the record of its
// kind. A service without a type or text leaves that argument out.
#ifndef QUILLONID_TESTS_IMAGE_SERVICE_ROWS_H
#define QUILLONID_TESTS_IMAGE_SERVICE_ROWS_H

#include <string>
#include <vector>

#include "quillonid/images.h"
#include "tests/image/card_records.h"

struct ServiceRow {
  using Call = int (*)(const Records& r, int type, char* path);

  std::string name;
  Call exported;
  Call service;

  bool TakesJson() const { return name.find("CollectInfo") != std::string::npos; }
};

// What the calls below are made with.
#define ARGUMENTS \
  [[maybe_unused]] const Records &r, [[maybe_unused]] int type, [[maybe_unused]] char *path

#define ROW(Name, ...)                                                               \
  ServiceRow {                                                                       \
    .name = #Name, .exported = [](ARGUMENTS) { return APP_ID_##Name(__VA_ARGS__); }, \
    .service = [](ARGUMENTS) { return tFunc_##Name(__VA_ARGS__); }                   \
  }

// clang-format off
inline const std::vector<ServiceRow> kHeadRows = {
    ROW(SaveHeadImg, &r.person, path),
    ROW(SaveHeadImg_FP, &r.person_fp, path),
    ROW(SaveChinaHeadImg, &r.china, path),
    ROW(SaveChinaHeadImg_FP, &r.china_fp, path),
    ROW(SaveForeignHeadImg, &r.foreign, path),
    ROW(SaveForeignHeadImg_FP, &r.foreign_fp, path),
    ROW(SaveGATHeadImg, &r.gat, path),
    ROW(SaveGATHeadImg_FP, &r.gat_fp, path),
    ROW(SaveCollectHeadImg, &r.collect, path),
    ROW(SaveCollectHeadImg_FP, &r.collect_fp, path),
    ROW(SaveCollectInfoHeadImg, r.json, path),
};

inline const std::vector<ServiceRow> kFrontRows = {
    ROW(SaveFrontImg, &r.person, path),
    ROW(SaveFrontImg_FP, &r.person_fp, path),
    ROW(SaveChinaFrontImg, &r.china, path),
    ROW(SaveChinaFrontImg_FP, &r.china_fp, path),
    ROW(SaveGATFrontImg, &r.gat, path),
    ROW(SaveCollectFrontImg, &r.collect, path),
    ROW(SaveFrontImgEx, &r.person, path, "logo", 1),
    ROW(SaveFrontImgEx_FP, &r.person_fp, path, "logo", 1),
    ROW(SaveChinaFrontImgEx, &r.china, path, "logo", 1),
    ROW(SaveChinaFrontImgEx_FP, &r.china_fp, path, "logo", 1),
    ROW(SaveForeignFrontImgEx, &r.foreign, path, "logo", 1),
    ROW(SaveForeignFrontImgEx_FP, &r.foreign_fp, path, "logo", 1),
    ROW(SaveGatFrontImgEx, &r.gat, path, "logo", 1),
    ROW(SaveGatFrontImgEx_FP, &r.gat_fp, path, "logo", 1),
    ROW(SaveCollectFrontImgEx, &r.collect, path, "logo", 1),
    ROW(SaveCollectFrontImgEx_FP, &r.collect_fp, path, "logo", 1),
    ROW(SaveCollectInfoFrontImgEx, r.json, path, "logo", 1),
};

inline const std::vector<ServiceRow> kBackRows = {
    ROW(SaveBackImg, &r.person, path),
    ROW(SaveBackImg_FP, &r.person_fp, path),
    ROW(SaveCollectBackImg, &r.collect, path),
    ROW(SaveBackImgEx, &r.person, path, "logo", 1),
    ROW(SaveBackImgEx_FP, &r.person_fp, path, "logo", 1),
    ROW(SaveChinaBackImgEx, &r.china, path, "logo", 1),
    ROW(SaveChinaBackImgEx_FP, &r.china_fp, path, "logo", 1),
    ROW(SaveForeignBackImgEx, &r.foreign, path, "logo", 1),
    ROW(SaveForeignBackImgEx_FP, &r.foreign_fp, path, "logo", 1),
    ROW(SaveGatBackImgEx, &r.gat, path, "logo", 1),
    ROW(SaveGatBackImgEx_FP, &r.gat_fp, path, "logo", 1),
    ROW(SaveCollectBackImgEx, &r.collect, path, "logo", 1),
    ROW(SaveCollectBackImgEx_FP, &r.collect_fp, path, "logo", 1),
    ROW(SaveCollectInfoBackImgEx, r.json, path, "logo", 1),
};

inline const std::vector<ServiceRow> kCardRows = {
    ROW(SaveCardImg, &r.person, path, 1),
    ROW(SaveCardImg_FP, &r.person_fp, path, 1),
    ROW(SaveCardImgEx, &r.person, path, "logo", 1),
    ROW(SaveCardImgEx_FP, &r.person_fp, path, "logo", 1),
    ROW(SaveChinaCardImgEx, &r.china, path, "logo", 1),
    ROW(SaveChinaCardImgEx_FP, &r.china_fp, path, "logo", 1),
    ROW(SaveForeignCardImgEx, &r.foreign, path, "logo", 1),
    ROW(SaveForeignCardImgEx_FP, &r.foreign_fp, path, "logo", 1),
    ROW(SaveGatCardImgEx, &r.gat, path, "logo", 1),
    ROW(SaveGatCardImgEx_FP, &r.gat_fp, path, "logo", 1),
    ROW(SaveCollectCardImgEx, &r.collect, path, "logo", 1),
    ROW(SaveCollectCardImgEx_FP, &r.collect_fp, path, "logo", 1),
    ROW(SaveCollectInfoCardImgEx, r.json, path, "logo", 1),
};

inline const std::vector<ServiceRow> kTypeRows = {
    ROW(SaveImg, type, 1, &r.person, path),
    ROW(SaveImg_FP, type, 1, &r.person_fp, path),
    ROW(SaveImgEx, type, &r.person, path, "logo", 1),
    ROW(SaveImgEx_FP, type, &r.person_fp, path, "logo", 1),
    ROW(SaveChinaImgEx, type, &r.china, path, "logo", 1),
    ROW(SaveChinaImgEx_FP, type, &r.china_fp, path, "logo", 1),
    ROW(SaveForeignImgEx, type, &r.foreign, path, "logo", 1),
    ROW(SaveForeignImgEx_FP, type, &r.foreign_fp, path, "logo", 1),
    ROW(SaveGatImgEx, type, &r.gat, path, "logo", 1),
    ROW(SaveGatImgEx_FP, type, &r.gat_fp, path, "logo", 1),
    ROW(SaveCollectImg, type, &r.collect, path, "logo", 1),
    ROW(SaveCollectImgEx, type, &r.collect, path, "logo", 1),
    ROW(SaveCollectImgEx_FP, type, &r.collect_fp, path, "logo", 1),
    ROW(SaveCollectInfoImgEx, type, r.json, path, "logo", 1),
};

inline const std::vector<ServiceRow> kBase64Rows = {
    ROW(GetImgBase64, type, &r.person, path, 1024),
    ROW(GetImgBase64_FP, type, &r.person_fp, path, 1024),
    ROW(GetGATImgBase64, type, &r.gat, path, 1024),
    ROW(GetImgCollectInfoBase64, type, r.json, path, 1024),
    ROW(GetImgCollectBase64, type, &r.collect, path, 1024),
};
// clang-format on

#undef ROW
#undef ARGUMENTS

// Every function, for what holds for all.
inline std::vector<ServiceRow> AllRows() {
  std::vector<ServiceRow> all;
  for (const auto* rows :
       {&kHeadRows, &kFrontRows, &kBackRows, &kCardRows, &kTypeRows, &kBase64Rows}) {
    all.insert(all.end(), rows->begin(), rows->end());
  }
  return all;
}

#endif
