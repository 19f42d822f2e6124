#include <cstdio>

#include "quillonid/carddata.h"
#include "tests/reader/service_fixture.h"

namespace {

// The name of a specimen as records hold it, up to its padding.
const char kResidentName[] = "样本甲";

std::string NameIn(const char* field) { return std::string(field, sizeof kResidentName - 1); }

// The log of one read, from the start of the card area's lines.
const char kNativeStart[] = "[tFuncReadIdNativeData]Start ";

void Spoil(unsigned char* record, std::size_t size) { std::fill(record, record + size, 0xEE); }

template <typename Record>
Record Spoiled() {
  Record record;
  Spoil(reinterpret_cast<unsigned char*>(&record), sizeof record);
  return record;
}

}  // namespace

using KindReader = Service;

TEST_F(KindReader, FillsTheRecordAndSavesThePhoto) {
  PutCard("resident");
  auto record = Spoiled<PERSONINFO_CHA_FP>();

  EXPECT_EQ(0, Read(tFuncReadChinaIDCard, 0, &record));

  EXPECT_EQ(kResidentName, NameIn(record.name));
  EXPECT_STREQ("", record.fingerData1);
  EXPECT_EQ(kBmpSize, PhotoSize());
  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand, kReadCommand}), reader.Commands());
}

TEST_F(KindReader, FillsTheTemplatesOfAReadWithFingerprints) {
  PutCard("resident");
  auto record = Spoiled<PERSONINFO_CHA_FP>();

  EXPECT_EQ(0, Read(tFuncReadChinaIDCard, 1, &record));

  EXPECT_EQ(kResidentName, NameIn(record.name));
  EXPECT_EQ(1024U, std::string(record.fingerData1).size());
  EXPECT_EQ(kFingerCommand, reader.Commands().back());
}

TEST_F(KindReader, ClearsTheWholeRecordBeforeTheRead) {
  auto china = Spoiled<PERSONINFO_CHA_FP>();
  auto foreign = Spoiled<PERSONINFO_FOR_FP>();
  auto gat = Spoiled<PERSONINFO_GAT_FP>();
  auto person = Spoiled<PERSONINFO_FP>();
  auto collect = Spoiled<PERSONINFO_COLLECT_FP>();
  char* photo = PhotoPath();
  const char* device = "/dev/no-such-reader";

  EXPECT_EQ(-50, tFuncReadChinaIDCard(device, "", 9600, 10, 0, photo, &china));
  EXPECT_EQ(-50, tFuncReadForeignerIDCard(device, "", 9600, 10, 0, photo, &foreign));
  EXPECT_EQ(-50, tFuncReadGatIDCard(device, "", 9600, 10, 0, photo, &gat));
  EXPECT_EQ(-50, tFuncReadIdInfo(device, "", 9600, 10, 0, photo, &person));
  EXPECT_EQ(-50, tFuncReadCollectIDCard(device, "", 9600, 10, 0, photo, &collect));

  EXPECT_TRUE(IsClear(china));
  EXPECT_TRUE(IsClear(foreign));
  EXPECT_TRUE(IsClear(gat));
  EXPECT_TRUE(IsClear(person));
  EXPECT_TRUE(IsClear(collect));
}

// The resident reader decodes before it looks at the kind, on purpose; the others look first.
TEST_F(KindReader, LeavesTheFieldsOfAWrongCardToTheResidentReaderAlone) {
  PutCard("permit");
  PERSONINFO_CHA_FP china;
  PERSONINFO_FOR_FP foreign;
  PERSONINFO_FP person;

  EXPECT_EQ(-2004, Read(tFuncReadChinaIDCard, 0, &china));
  EXPECT_EQ(-2004, Read(tFuncReadForeignerIDCard, 0, &foreign));
  EXPECT_EQ(-2004, Read(tFuncReadIdInfo, 0, &person));

  EXPECT_NE('\0', china.name[0]);
  EXPECT_TRUE(IsClear(foreign));
  EXPECT_TRUE(IsClear(person));
  EXPECT_EQ(0U, PhotoSize());
}

TEST_F(KindReader, RefusesAPermitReaderAResidentCard) {
  PutCard("resident");
  PERSONINFO_GAT_FP gat;

  EXPECT_EQ(-2004, Read(tFuncReadGatIDCard, 0, &gat));

  EXPECT_TRUE(IsClear(gat));
  EXPECT_EQ(0U, PhotoSize());
}

TEST_F(KindReader, ReturnsThePhotosCodeWithTheRecordFilled) {
  PutCard("resident", [](Bytes* native) { (*native)[12] = 3; });  // another length of the photo
  PERSONINFO_CHA_FP record;
  EXPECT_EQ(-2008, Read(tFuncReadChinaIDCard, 0, &record));
  EXPECT_EQ(kResidentName, NameIn(record.name));

  RemoveDecoder();
  ScriptedReader other;
  other.HoldCard(simulator::NativeData(simulator::MakeCard("resident"), false));
  EXPECT_EQ(-2000,
            tFuncReadChinaIDCard(other.Path().c_str(), "", 9600, 10, 0, PhotoPath(), &record));
  EXPECT_EQ(kResidentName, NameIn(record.name));
}

TEST_F(KindReader, EndsInAPhotoErrorWithoutAPathForIt) {
  PutCard("resident");
  PERSONINFO_CHA_FP record;
  char empty[] = "";
  char folder[] = "/tmp";

  for (char* path : {static_cast<char*>(nullptr), empty, folder}) {
    EXPECT_EQ(-2000, tFuncReadChinaIDCard(Device(), "", 9600, 10, 0, path, &record));
    EXPECT_EQ(kResidentName, NameIn(record.name));
  }
}

// A foreigner's card without a Chinese name does not fit the combined record; its photo is saved.
TEST_F(KindReader, SavesThePhotoWhateverTheDecoderSays) {
  PutCard("foreigner", [](Bytes* native) {
    const std::size_t text = native->size() == 1295 ? 14 : 16;
    const auto name = native->begin() + static_cast<std::ptrdiff_t>(text + 158);
    std::fill(name, name + 30, 0);
  });
  PERSONINFO_FP record;

  EXPECT_EQ(0, Read(tFuncReadIdInfo, 0, &record));

  EXPECT_EQ(kBmpSize, PhotoSize());
}

TEST_F(KindReader, KnowsNoKindOfCardInAReadModeOfItsOwn) {
  PutCard("resident");
  PERSONINFO_CHA_FP china;
  PERSONINFO_COLLECT_FP collect;

  EXPECT_EQ(-2004, Read(tFuncReadChinaIDCard, 2, &china));
  EXPECT_EQ(-1, Read(tFuncReadCollectIDCard, 2, &collect));

  EXPECT_EQ(kFingerCommand, reader.Commands().back());
}

// A reply of the other mode is two bytes off: the plain read takes the length of the templates,
// 04 00, for the first character of the name, the other one the first character, 37 68, for their
// length. The last character of one field is the first of the next. The buffer behind the reply is
// long enough for that, and zero.
TEST_F(KindReader, TakesTheReplyOfTheOtherMode) {
  const simulator::Card card = simulator::MakeCard("resident", true);
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, simulator::NativeData(card, true));
  reader.On(kFingerCommand, simulator::NativeData(card, false));
  PERSONINFO_CHA_FP record;

  EXPECT_EQ(0, Read(tFuncReadChinaIDCard, 0, &record));
  EXPECT_EQ("\x04" + std::string(kResidentName) + std::string(11, ' '), record.name);
  EXPECT_STREQ(" ", record.sexCode);
  EXPECT_STREQ("女", record.sex);
  EXPECT_STREQ("", record.fingerData1);
  EXPECT_EQ(kBmpSize, PhotoSize());

  std::remove(PhotoPath());
  EXPECT_EQ(0, Read(tFuncReadChinaIDCard, 1, &record));
  EXPECT_EQ("本甲" + std::string(12, ' ') + "2", record.name);
  EXPECT_EQ(std::string(1024, '0'), record.fingerData1);
  EXPECT_STREQ("", record.fingerData2);  // Their length takes them past the buffer.
  EXPECT_EQ(kBmpSize, PhotoSize());
}

TEST_F(KindReader, RefusesANullRecordBeforeTheDeviceIsOpened) {
  PutCard("resident");

  EXPECT_EQ(-2, Read<PERSONINFO_CHA_FP>(tFuncReadChinaIDCard, 0, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_FOR_FP>(tFuncReadForeignerIDCard, 0, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_GAT_FP>(tFuncReadGatIDCard, 0, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_FP>(tFuncReadIdInfo, 0, nullptr));
  EXPECT_EQ(-2, Read<PERSONINFO_COLLECT_FP>(tFuncReadCollectIDCard, 0, nullptr));

  EXPECT_TRUE(reader.Commands().empty());
}

TEST_F(KindReader, LogsItsStepsByKind) {
  PERSONINFO_CHA_FP china;
  PERSONINFO_FOR_FP foreign;
  PERSONINFO_GAT_FP gat;
  const std::string path = "szHeadDir: " + photo_path;
  SwitchLogging(true);

  PutCard("resident");
  ASSERT_EQ(0, Read(tFuncReadChinaIDCard, 0, &china));
  ExpectInOrder({"[ tFuncReadChinaIDCard ] Start ", path, kNativeStart,
                 "[tFuncReadChinaIDCard]  End bRet = 0"},
                LinesOf(kCardArea));
  SwitchLogging(true);
  ScriptedReader foreigner;
  foreigner.HoldCard(simulator::NativeData(simulator::MakeCard("foreigner"), false));
  ASSERT_EQ(0, tFuncReadForeignerIDCard(foreigner.Path().c_str(), "", 9600, 10, 0, PhotoPath(),
                                        &foreign));
  ExpectInOrder({"[ tFuncReadForeignerIDCard ] Start ", path, kNativeStart,
                 "[tFuncReadForeignerIDCard] End bRet = 0"},
                LinesOf(kCardArea));
  SwitchLogging(true);
  ScriptedReader permit;
  permit.HoldCard(simulator::NativeData(simulator::MakeCard("permit"), false));
  ASSERT_EQ(0, tFuncReadGatIDCard(permit.Path().c_str(), "", 9600, 10, 0, PhotoPath(), &gat));
  ExpectInOrder(
      {"[ tFuncReadGatIDCard ] Start ", path, kNativeStart, "[tFuncReadGatIDCard] End bRet = 0"},
      LinesOf(kCardArea));
}

TEST_F(KindReader, LogsTheCombinedRead) {
  PutCard("foreigner");
  PERSONINFO_FP record;
  SwitchLogging(true);

  ASSERT_EQ(0, Read(tFuncReadIdInfo, 0, &record));
  ExpectInOrder(
      {"[tFuncReadIdInfo] Start ", "szHeadDir: " + photo_path, kNativeStart,
       "tFuncReadIdNativeData  nRet = 0 ", "  nCardType = 1 ", "[tFuncReadIdInfo] bRet = 0"},
      LinesOf(kCardArea));

  RemoveDecoder();
  SwitchLogging(true);
  ASSERT_EQ(-2000, Read(tFuncReadIdInfo, 0, &record));
  EXPECT_EQ("! [tFuncReadIdInfo] bRet = -2000", LinesOf(kCardArea).back());

  SwitchLogging(true);
  ASSERT_EQ(-50, tFuncReadIdInfo("/dev/no-such-reader", "", 9600, 10, 0, nullptr, &record));
  EXPECT_EQ("! tFuncReadIdNativeData  nRet = -50 ", LinesOf(kCardArea).back());
  EXPECT_EQ(kNativeStart, LinesOf(kCardArea)[1]);  // no line for a null path
}

using CollectReader = Service;

TEST_F(CollectReader, ReadsEveryKind) {
  const std::pair<const char*, std::string> kinds[] = {
      {"resident",  " "},
      {"foreigner", "I"},
      {"permit",    "J"}
  };
  for (const auto& [id, mark] : kinds) {
    for (const int finger : {0, 1}) {
      ScriptedReader card;
      card.HoldCard(simulator::NativeData(simulator::MakeCard(id, true), finger == 1));
      auto record = Spoiled<PERSONINFO_COLLECT_FP>();

      EXPECT_EQ(0, tFuncReadCollectIDCard(card.Path().c_str(), "", 9600, 10, finger, PhotoPath(),
                                          &record));

      EXPECT_EQ(mark, record.cardType) << id;
      EXPECT_EQ(finger == 1, record.fingerData1[0] != '\0') << id;
      EXPECT_EQ(kBmpSize, PhotoSize());
    }
  }
}

TEST_F(CollectReader, LeavesThePhotoOutForAnEmptyOrNullPath) {
  PutCard("permit");
  RemoveDecoder();
  PERSONINFO_COLLECT_FP record;
  char empty[] = "";

  EXPECT_EQ(0, tFuncReadCollectIDCard(Device(), "", 9600, 10, 0, empty, &record));
  EXPECT_EQ(0, tFuncReadCollectIDCard(Device(), "", 9600, 10, 0, nullptr, &record));
  EXPECT_EQ(-2000, Read(tFuncReadCollectIDCard, 0, &record));

  EXPECT_STREQ("J", record.cardType);
}

// At most 1,024 bytes of the path are kept; what follows never reaches the file system.
TEST_F(CollectReader, CutsAPathThatIsTooLong) {
  PutCard("resident");
  PERSONINFO_COLLECT_FP record;
  std::string path = TemporaryFolder();
  while (path.size() < 1024 - 20) path += "/.";
  path += '/';
  path.append(1024 - path.size(), 'p');
  ASSERT_EQ(1024U, path.size());
  std::string longer = path + "tail";

  EXPECT_EQ(0, tFuncReadCollectIDCard(Device(), "", 9600, 10, 0, longer.data(), &record));

  EXPECT_EQ(kBmpSize, ReadWholeFile(path).size());
  EXPECT_FALSE(FileExists(longer));
}

TEST_F(CollectReader, RefusesAKindThatNobodyKnows) {
  simulator::Card card = simulator::MakeCard("resident", true);
  card.mark = 'X';
  PutCard(card);
  PERSONINFO_COLLECT_FP record;
  SwitchLogging(true);

  EXPECT_EQ(-1, Read(tFuncReadCollectIDCard, 0, &record));

  EXPECT_TRUE(IsClear(record));
  EXPECT_EQ(0U, PhotoSize());
  ExpectInOrder({"! [GetIdCardTypeFromNativeData] nRet = -1",
                 "!  ==== [GetIdCardTypeFromNativeData] nRet = ffffffff"},
                LinesOf(kCardArea));
}

TEST_F(CollectReader, LogsItsSteps) {
  PutCard("permit");
  PERSONINFO_COLLECT_FP record;
  SwitchLogging(true);

  ASSERT_EQ(0, Read(tFuncReadCollectIDCard, 0, &record));

  const std::string name =
      "[tFuncReadCollectIDCard] Collect Struct Name = " + std::string(record.name) + " ";
  const std::string end = "[tFuncReadCollectIDCard]end = 0  ";
  ExpectInOrder({"[tFuncReadCollectIDCard]Start ", "szHeadDir: " + photo_path, kNativeStart,
                 "[tFuncReadIdNativeData] End ", "[GetIdCardTypeFromNativeData] nRet = 2",
                 " ==== [GetIdCardTypeFromNativeData] nRet = 02", name, end, name, end},
                LinesOf(kCardArea));
}
