#include <cstring>
#include <map>

#include "quillonid/carddata.h"
#include "quillonid/quillonid.h"
#include "tests/reader/service_fixture.h"

namespace {

// What a service makes of a card.
struct Outcome {
  int result = 0;
  std::string name;  // first field of the record
  bool fingers = false;
};

template <typename Record>
bool HasFingers(const Record& record) {
  if constexpr (requires { record.fingerData1; }) {
    return record.fingerData1[0] != '\0';
  } else {
    return false;
  }
}

// A service, the command it reads with, its results for a resident, a foreigner's card and a
// permit, and the lines that it logs of its own around the read of a resident card.
struct ServiceCase {
  const char* name;
  bool fingers;
  int results[3];
  Lines logged;
  std::function<Outcome(const char* device, char* photo)> read;
};

template <typename Record>
std::function<Outcome(const char*, char*)> Call(int (*service)(const char*, const char*, long, long,
                                                               char*, Record*)) {
  return [service](const char* device, char* photo) {
    Record record = {};
    const int result = service(device, "", 9600, 10, photo, &record);
    return Outcome{result, record.name, HasFingers(record)};
  };
}

template <int kFinger>
Outcome Json(const char* device, char* photo) {
  std::string text(QL_JSON_SIZE, '\0');
  const int result = tFunc_ReadCollectIDCardInfo(device, "", 9600, 10, kFinger, photo, text.data());
  PERSONINFO_COLLECT_FP record = {};
  if (result == 0) tFuncConvertJsontoCollectStruct(text.c_str(), &record);
  return {result, record.name, HasFingers(record)};
}

const ServiceCase kServices[] = {
    {"ReadIDCard",
     false, {0, 0, -2004},
     {"[tFunc_ReadIDCard]Start ", "[tFuncReadIdInfo] Start ", "tFuncReadIdInfo = 0 "},
     Call(tFunc_ReadIDCard)            },
    {"ReadIDCardFp",
     true,  {0, 0, -2004},
     {"[tFunc_ReadIDCard_FP] Start ", "[tFuncReadIdInfo] Start "},
     Call(tFunc_ReadIDCard_FP)         },
    {"ReadChina",
     false, {0, -2004, -2004},
     {"[tFunc_ReadChinaIDCard] Start ", "[ tFuncReadChinaIDCard ] Start "},
     Call(tFunc_ReadChinaIDCard)       },
    {"ReadChinaFp",
     true,  {0, -2004, -2004},
     {"[tFunc_ReadChinaIDCard_FP] Start ", "[ tFuncReadChinaIDCard ] Start "},
     Call(tFunc_ReadChinaIDCard_FP)    },
    {"ReadForeigner",
     false, {-2004, 0, -2004},
     {"[tFunc_ReadForeignerIDCard] Start ", "[ tFuncReadForeignerIDCard ] Start "},
     Call(tFunc_ReadForeignerIDCard)   },
    {"ReadForeignerFp",
     true,  {-2004, 0, -2004},
     {"[tFunc_ReadForeignerIDCard_FP] Start ", "[ tFuncReadForeignerIDCard ] Start "},
     Call(tFunc_ReadForeignerIDCard_FP)},
    {"ReadIDCardForeigner",
     false, {-2004, 0, -2004},
     {"[tFunc_ReadIDCardForeigner] Start ", "[ tFuncReadForeignerIDCard ] Start "},
     Call(tFunc_ReadIDCardForeigner)   },
    {"ReadGat",
     false, {-2004, -2004, 0},
     {"[ tFuncReadGatIDCard ] Start "},
     Call(tFunc_ReadGATIDCard)         },
    {"ReadGatFp",
     true,  {-2004, -2004, 0},
     {"[ tFuncReadGatIDCard ] Start "},
     Call(tFunc_ReadGATIDCard_FP)      },
    {"ReadCollect",
     false, {0, 0, 0},
     {"[tFuncReadCollectIDCard]Start ", "[tFunc_ReadCollectIDCard] Read nRet = 0 "},
     Call(tFunc_ReadCollectIDCard)     },
    {"ReadCollectFp",
     true,  {0, 0, 0},
     {"[tFuncReadCollectIDCard]Start "},
     Call(tFunc_ReadCollectIDCard_FP)  },
    {"ReadCollectInfo",
     false, {0, 0, 0},
     {"[tFunc_ReadCollectIDCardInfo] Start ", "[tFuncReadCollectIDCard]Start ",
      "[tFuncReadCollectIDCard] end  nRet  0  "},
     Json<0>                           },
    {"ReadCollectInfoFp",
     true,  {0, 0, 0},
     {"[tFunc_ReadCollectIDCardInfo] Start ", "[tFuncReadCollectIDCard]Start ",
      "[tFuncReadCollectIDCard] end  nRet  0  "},
     Json<1>                           },
};

const char* const kCards[] = {"resident", "foreigner", "permit"};

void PrintTo(const ServiceCase& row, std::ostream* out) { *out << row.name; }

std::string NameOf(const testing::TestParamInfo<ServiceCase>& info) { return info.param.name; }

// Lines that a service logs of its own: with its name, or of the reader that it calls.
bool IsOwnLine(const std::string& line) {
  return line.find("[tFunc_") != std::string::npos || line.find("[ tFunc") != std::string::npos ||
         line.find("tFuncReadIdInfo") == 0 || line == "[tFuncReadIdInfo] Start " ||
         line.find("[tFuncReadCollectIDCard]Start") == 0 ||
         line.find("[tFuncReadCollectIDCard] end") == 0;
}

}  // namespace

class ReadService : public Service, public testing::WithParamInterface<ServiceCase> {};
INSTANTIATE_TEST_SUITE_P(All, ReadService, testing::ValuesIn(kServices), NameOf);

TEST_P(ReadService, TakesTheKindsItIsFor) {
  for (std::size_t kind = 0; kind < std::size(kCards); ++kind) {
    const simulator::Card card = simulator::MakeCard(kCards[kind], true);
    ScriptedReader with_card;
    with_card.On(kSearchCommand, kFoundAnswer);
    with_card.On(kSelectCommand, kSelectedAnswer);
    with_card.On(kReadCommand, simulator::NativeData(card, false));
    with_card.On(kFingerCommand, simulator::NativeData(card, true));
    const int expected = GetParam().results[kind];

    const Outcome outcome = GetParam().read(with_card.Path().c_str(), PhotoPath());

    EXPECT_EQ(expected, outcome.result) << kCards[kind];
    EXPECT_EQ(GetParam().fingers ? kFingerCommand : kReadCommand, with_card.Commands().back());
    if (expected == 0) {
      const std::string name = card.person.text.at("name");
      EXPECT_EQ(name, outcome.name.substr(0, name.size()));
      EXPECT_EQ(GetParam().fingers, outcome.fingers);
    }
    EXPECT_EQ(expected == 0 ? kBmpSize : 0, PhotoSize()) << kCards[kind];
    std::remove(PhotoPath());
  }
}

TEST_P(ReadService, ReturnsTheCodeOfAFailedRead) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);

  const Outcome outcome = GetParam().read(Device(), PhotoPath());

  EXPECT_EQ(-2003, outcome.result);
  EXPECT_EQ("", outcome.name);
}

TEST_P(ReadService, ReturnsThePhotosCode) {
  PutCard(GetParam().results[0] == 0   ? "resident"
          : GetParam().results[1] == 0 ? "foreigner"
                                       : "permit");
  RemoveDecoder();

  const Outcome outcome = GetParam().read(Device(), PhotoPath());

  EXPECT_EQ(-2000, outcome.result);
  // A plain record is converted after the photo, so it stays empty; one with templates is filled.
  const bool fills = GetParam().fingers && std::string(GetParam().name) != "ReadCollectInfoFp";
  EXPECT_EQ(fills, !outcome.name.empty());
}

TEST_P(ReadService, LogsItsOwnLines) {
  PutCard(GetParam().results[0] == 0   ? "resident"
          : GetParam().results[1] == 0 ? "foreigner"
                                       : "permit");
  SwitchLogging(true);

  EXPECT_EQ(0, GetParam().read(Device(), PhotoPath()).result);

  Lines own;
  for (const std::string& line : LinesOf(kCardArea)) {
    if (IsOwnLine(line)) own.push_back(line);
  }
  EXPECT_EQ(GetParam().logged, own);
}

using ReadServices = Service;

TEST_F(ReadServices, RefuseANullRecordWithTemplatesBeforeTheDeviceIsOpened) {
  EXPECT_EQ(-2, Read<PERSONINFO_FP>(tFunc_ReadIDCard_FP, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_CHA_FP>(tFunc_ReadChinaIDCard_FP, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_FOR_FP>(tFunc_ReadForeignerIDCard_FP, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_GAT_FP>(tFunc_ReadGATIDCard_FP, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_COLLECT_FP>(tFunc_ReadCollectIDCard_FP, nullptr));
  EXPECT_EQ(-2, tFunc_ReadCollectIDCardInfo(Device(), "", 9600, 10, 0, PhotoPath(), nullptr));

  EXPECT_TRUE(reader.Commands().empty());
}

// A plain record is looked at after the read, by the conversion.
TEST_F(ReadServices, RefuseANullPlainRecordAfterTheRead) {
  PutCard("resident");
  EXPECT_EQ(-2004, Read<PERSONINFO>(tFunc_ReadIDCard, nullptr));
  EXPECT_EQ(-2004, Read<PERSONINFO_CHA>(tFunc_ReadChinaIDCard, nullptr));
  EXPECT_EQ(-2004, Read<PERSONINFO_COLLECT>(tFunc_ReadCollectIDCard, nullptr));
  EXPECT_EQ(9U, reader.Commands().size());

  ScriptedReader foreigner;
  foreigner.HoldCard(simulator::NativeData(simulator::MakeCard("foreigner"), false));
  const char* device = foreigner.Path().c_str();
  EXPECT_EQ(-2004, tFunc_ReadForeignerIDCard(device, "", 9600, 10, PhotoPath(), nullptr));
  EXPECT_EQ(-2004, tFunc_ReadIDCardForeigner(device, "", 9600, 10, PhotoPath(), nullptr));
  ScriptedReader permit;
  permit.HoldCard(simulator::NativeData(simulator::MakeCard("permit"), false));
  EXPECT_EQ(-2004, tFunc_ReadGATIDCard(permit.Path().c_str(), "", 9600, 10, PhotoPath(), nullptr));
}

// Only the combined reader knows which person it read.
TEST_F(ReadServices, LeavePersonTypeZeroOnTheForeignersOwnWay) {
  PutCard("foreigner");
  PERSONINFO record = {};

  EXPECT_EQ(0, Read(tFunc_ReadIDCard, &record));
  EXPECT_EQ(1, record.personType);

  record = {};
  EXPECT_EQ(0, Read(tFunc_ReadIDCardForeigner, &record));
  EXPECT_EQ(0, record.personType);
  EXPECT_STREQ("I", record.cardType);
}

// A foreigner's card without a Chinese name has no place in the combined record.
TEST_F(ReadServices, RefuseAForeignerWithoutAChineseNameInTheCombinedRecord) {
  PutCard("foreigner", [](Bytes* native) {
    const auto name = native->begin() + (native->size() == 1295 ? 14 : 16) + 158;
    std::fill(name, name + 30, 0);
  });
  PERSONINFO record = {};

  EXPECT_EQ(-1, Read(tFunc_ReadIDCardForeigner, &record));
  EXPECT_EQ(-100, Read(APP_ID_ReadIDCardForeigner, &record));

  EXPECT_TRUE(IsClear(record));
}

// Conversions copy without clearing, so a record that was used before must not keep its old text.
TEST_F(ReadServices, ClearAPlainRecordWhateverComesOfTheRead) {
  PutCard("permit");
  PERSONINFO_CHA record;
  std::memset(&record, 'x', sizeof record);

  EXPECT_EQ(-2004, Read(tFunc_ReadChinaIDCard, &record));

  EXPECT_TRUE(IsClear(record));
}

TEST_F(ReadServices, LeaveNothingOfTheCardBefore) {
  PutCard("permit");
  PERSONINFO_GAT used;
  std::memset(&used, 'x', sizeof used);
  PERSONINFO_GAT fresh = {};

  EXPECT_EQ(0, Read(tFunc_ReadGATIDCard, &used));
  EXPECT_EQ(0, Read(tFunc_ReadGATIDCard, &fresh));

  EXPECT_EQ(0, std::memcmp(&used, &fresh, sizeof used));
}

TEST_F(ReadServices, ReadACollectRecordWithoutAPhoto) {
  PutCard("permit");
  RemoveDecoder();
  PERSONINFO_COLLECT record = {};
  char empty[] = "";

  EXPECT_EQ(0, tFunc_ReadCollectIDCard(Device(), "", 9600, 10, empty, &record));

  EXPECT_STREQ("J", record.cardType);
}

TEST_F(ReadServices, PublishOtherForACardOfNoKind) {
  simulator::Card card = simulator::MakeCard("resident", true);
  card.mark = 'X';
  PutCard(card);
  PERSONINFO_COLLECT collect = {};
  PERSONINFO_CHA china = {};
  std::string json(QL_JSON_SIZE, '\0');

  EXPECT_EQ(-100, Read(APP_ID_ReadCollectIDCard, &collect));
  EXPECT_EQ(-100,
            APP_ID_ReadCollectIDCardInfo(Device(), "", 9600, 10, 0, PhotoPath(), json.data()));
  EXPECT_EQ(-11, Read(APP_ID_ReadChinaIDCard, &china));
}

// The JSON text of a fingerprint read holds the templates; the photo flag works on the same read.
TEST_F(ReadServices, PackThePhotoOfTheReadIntoItsJson) {
  PutCard("resident");
  std::string json(QL_JSON_SIZE, '\0');
  APP_ID_IDCardAddPhotoDataToJsonFlag(1);

  EXPECT_EQ(0, tFunc_ReadCollectIDCardInfo(Device(), "", 9600, 10, 1, PhotoPath(), json.data()));

  EXPECT_NE(std::string::npos, json.find("\"PhotoNativeData\""));
}

TEST_F(ReadServices, LogTheFailureOfACollectRead) {
  PERSONINFO_COLLECT record = {};
  std::string json(QL_JSON_SIZE, '\0');
  SwitchLogging(true);

  tFunc_ReadCollectIDCard("/dev/no-such-reader", "", 9600, 10, PhotoPath(), &record);
  EXPECT_EQ("! [tFunc_ReadCollectIDCard] Read nRet = -50 ", LinesOf(kCardArea).back());

  tFunc_ReadCollectIDCardInfo("/dev/no-such-reader", "", 9600, 10, 0, PhotoPath(), json.data());
  EXPECT_EQ("! [tFuncReadCollectIDCard] end  nRet  -50  ", LinesOf(kCardArea).back());

  PERSONINFO person = {};
  tFunc_ReadIDCard("/dev/no-such-reader", "", 9600, 10, PhotoPath(), &person);
  EXPECT_EQ("! tFuncReadIdInfo = -50 ", LinesOf(kCardArea).back());
}
