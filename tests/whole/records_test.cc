// Every read function with every specimen card over a real line: records, photos, native data.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

using simulator::Card;
using simulator::Kind;
using simulator::MakeCard;
using simulator::TtyReader;

constexpr long kBaud = 9600;
constexpr long kLimit = 10;  // seconds

template <auto kFunction, typename Record>
int Call(const char* device, char* head, void* record) {
  return kFunction(device, "", kBaud, kLimit, head, static_cast<Record*>(record));
}

// One exported read function.
struct ReadFunction {
  const char* name;
  int (*call)(const char* device, char* head, void* record);
  std::size_t record_size;
  std::vector<Member> members;
  bool fingerprints;
  bool resident, foreigner, permit;  // kinds that it reads
  bool photo_optional = false;       // an empty path leaves the photo out

  bool Reads(Kind kind) const {
    return kind == Kind::kResident ? resident : kind == Kind::kForeigner ? foreigner : permit;
  }
};

void PrintTo(const ReadFunction& function, std::ostream* out) { *out << function.name; }

template <auto kFunction, typename Record>
ReadFunction Row(const char* name, bool resident, bool foreigner, bool permit) {
  const std::vector<Member> members = Members<Record>();
  const bool fingerprints = std::string(members.back().name) == "fingerData2";
  return {
      name,   Call<kFunction, Record>, sizeof(Record), members, fingerprints, resident, foreigner,
      permit, resident && permit};
}

#define QL_ROW(function, record, ...) Row<&function, record>(#function, __VA_ARGS__)

std::vector<ReadFunction> ReadFunctions() {
  return {
      QL_ROW(APP_ID_ReadIDCard, PERSONINFO, true, true, false),
      QL_ROW(APP_ID_ReadIDCard_FP, PERSONINFO_FP, true, true, false),
      QL_ROW(APP_ID_ReadChinaIDCard, PERSONINFO_CHA, true, false, false),
      QL_ROW(APP_ID_ReadChinaIDCard_FP, PERSONINFO_CHA_FP, true, false, false),
      QL_ROW(APP_ID_ReadForeignerIDCard, PERSONINFO_FOR, false, true, false),
      QL_ROW(APP_ID_ReadForeignerIDCard_FP, PERSONINFO_FOR_FP, false, true, false),
      QL_ROW(APP_ID_ReadIDCardForeigner, PERSONINFO, false, true, false),
      QL_ROW(APP_ID_ReadGATIDCard, PERSONINFO_GAT, false, false, true),
      QL_ROW(APP_ID_ReadGATIDCard_FP, PERSONINFO_GAT_FP, false, false, true),
      QL_ROW(APP_ID_ReadCollectIDCard, PERSONINFO_COLLECT, true, true, true),
      QL_ROW(APP_ID_ReadCollectIDCard_FP, PERSONINFO_COLLECT_FP, true, true, true),
  };
}

// Combined and collect records tell the kinds apart by their card type.
bool Marked(const ReadFunction& function) {
  return function.resident && (function.foreigner || function.permit);
}

class WholeRead : public testing::TestWithParam<ReadFunction> {
 protected:
  int Read(const std::string& head) {
    record_.assign(GetParam().record_size, 0);
    std::string path = head;
    return GetParam().call(reader_.path().c_str(), path.data(), record_.data());
  }
  std::map<std::string, std::string> Texts() const {
    return TextsOf(record_.data(), GetParam().members);
  }
  std::map<std::string, std::string> Expected(const Card& card) const {
    return RecordTexts(card, GetParam().members, GetParam().fingerprints, Marked(GetParam()));
  }
  bool RecordIsEmpty() const {
    return std::all_of(record_.begin(), record_.end(), [](char c) { return c == '\0'; });
  }

  TtyReader reader_;
  std::vector<char> record_;
};

TEST_P(WholeRead, FillsTheRecordFieldByField) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  for (const simulator::Specimen& specimen : simulator::Specimens()) {
    if (!GetParam().Reads(specimen.kind)) continue;
    for (const bool with_templates : {false, true}) {
      SCOPED_TRACE(specimen.id + (with_templates ? " with templates" : ""));
      const Card card = MakeCard(specimen, with_templates);
      reader_.PutCard(card);
      std::filesystem::remove(photo);

      ASSERT_EQ(0, Read(photo));

      EXPECT_EQ(Expected(card), Texts());
      EXPECT_EQ(HexText(PhotoFile(card)), HexText(ReadWholeFile(photo)));
      std::vector<unsigned char> native(4096);
      const int size = APP_ID_GetIdNativeData(native.data(), 4096);
      native.resize(static_cast<std::size_t>(size));
      EXPECT_EQ(HexText(NativeData(card, GetParam().fingerprints)), HexText(native));
    }
  }
}

TEST_P(WholeRead, RefusesTheOtherKindsAndWritesNoPhoto) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  for (const char* id : {"resident", "foreigner", "permit"}) {
    SCOPED_TRACE(id);
    const Card card = MakeCard(id, true);
    if (GetParam().Reads(card.person.kind)) continue;
    reader_.PutCard(card);

    EXPECT_EQ(-11, Read(photo));

    EXPECT_FALSE(FileExists(photo));
    // Of all, the one with fingerprints for residents decodes before it looks at the kind.
    const bool decoded = std::string("APP_ID_ReadChinaIDCard_FP") == GetParam().name;
    EXPECT_EQ(!decoded, RecordIsEmpty());
    if (decoded) {
      const std::string name =
          card.person.kind == Kind::kPermit ? "样本乙            " : "SPECIMEN, ANNA ";
      EXPECT_EQ(name, Texts()["name"]);
    }
  }
}

TEST_P(WholeRead, GivesTheTextWithoutADecoderOnlyWithFingerprints) {
  NEEDS_PRIVATE_ROOT();
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  for (const char* id : {"resident", "foreigner", "permit"}) {
    SCOPED_TRACE(id);
    const Card card = MakeCard(id);
    if (!GetParam().Reads(card.person.kind)) continue;
    reader_.PutCard(card);

    EXPECT_EQ(-7, Read(photo));

    EXPECT_FALSE(FileExists(photo));
    if (GetParam().fingerprints) {
      EXPECT_EQ(Expected(card), Texts());
    } else {
      EXPECT_TRUE(RecordIsEmpty());
    }
  }
}

TEST_P(WholeRead, LeavesThePhotoOutForAnEmptyPathIfItReadsAnyKind) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  for (const char* id : {"resident", "foreigner", "permit"}) {
    SCOPED_TRACE(id);
    const Card card = MakeCard(id);
    if (!GetParam().Reads(card.person.kind)) continue;
    reader_.PutCard(card);

    const int result = Read("");

    EXPECT_EQ(GetParam().photo_optional ? 0 : -7, result);
    if (result == 0) {
      EXPECT_EQ(Expected(card), Texts());
    }
  }
}

TEST_P(WholeRead, PublishesThePhotoLengthAsAnotherError) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  reader_.SetFault(*simulator::ParseFault("photo-length=1023"));
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  for (const char* id : {"resident", "foreigner", "permit"}) {
    const Card card = MakeCard(id);
    if (!GetParam().Reads(card.person.kind)) continue;
    reader_.PutCard(card);

    EXPECT_EQ(-100, Read(photo)) << id;

    EXPECT_FALSE(FileExists(photo));
  }
}

INSTANTIATE_TEST_SUITE_P(EveryFunction, WholeRead, testing::ValuesIn(ReadFunctions()));

TEST(PersonType, TellsResidentsFromForeigners) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  TtyReader reader;
  std::string photo = TemporaryFolder() + "/photo.bmp";
  const auto read = [&](auto* function, auto record, const char* id) {
    reader.PutCard(MakeCard(id));
    record.personType = -1;
    EXPECT_EQ(0, function(reader.path().c_str(), "", kBaud, kLimit, photo.data(), &record)) << id;
    return record.personType;
  };

  EXPECT_EQ(0, read(APP_ID_ReadIDCard, PERSONINFO{}, "resident"));
  EXPECT_EQ(1, read(APP_ID_ReadIDCard, PERSONINFO{}, "foreigner"));
  EXPECT_EQ(0, read(APP_ID_ReadIDCard_FP, PERSONINFO_FP{}, "resident"));
  EXPECT_EQ(1, read(APP_ID_ReadIDCard_FP, PERSONINFO_FP{}, "foreigner"));
  // Nothing sets it on this way.
  EXPECT_EQ(0, read(APP_ID_ReadIDCardForeigner, PERSONINFO{}, "foreigner"));
}

TEST(NativeDataOfTheLastRead, OutlivesAFailedRead) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  const Card card = MakeCard("foreigner-full");
  reader.PutCard(card);
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  unsigned char native[4096] = {};
  EXPECT_EQ(0, APP_ID_GetIdNativeData(native, sizeof native));
  ASSERT_EQ(0,
            APP_ID_ReadCollectIDCard(reader.path().c_str(), "", kBaud, kLimit, no_photo, &record));

  reader.SetFault(*simulator::ParseFault("ic-power-on"));
  EXPECT_EQ(-100,
            APP_ID_ReadCollectIDCard(reader.path().c_str(), "", kBaud, kLimit, no_photo, &record));

  EXPECT_EQ(0, APP_ID_GetIdNativeData(native, 1294));
  EXPECT_EQ(1295, Linux_QL_ID_GetNativeData(native, 1295));
  EXPECT_EQ(HexText(NativeData(card, false)), HexText(native, 1295));
}

}  // namespace
}  // namespace whole
