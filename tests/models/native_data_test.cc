// Native data to records: kind of card, fields, templates, sex and names.
#include <cstdlib>

#include "quillonid/carddata.h"
#include "quillonid/image.h"
#include "tests/models/model.h"
#include "tests/models/record_model.h"
#include "tests/models/text_model.h"

namespace {

constexpr int kNativeSize = 4096;
constexpr std::uint64_t kRecords = 20000;

struct Native {
  std::string bytes;
  int mode = 0;

  const unsigned char* data() const { return BytesOf(bytes); }
};

void PutUnit(std::string* bytes, int at, unsigned unit) {
  (*bytes)[static_cast<std::size_t>(at)] = static_cast<char>(unit % 256);
  (*bytes)[static_cast<std::size_t>(at) + 1] = static_cast<char>(unit / 256);
}

void PutLength(std::string* bytes, int at, int length) {
  PutUnit(bytes, at, static_cast<unsigned>(length % 256 * 256 + length / 256));
}

int Length(const unsigned char* native, int at) { return native[at] * 256 + native[at + 1]; }

// Text of a card: Han, digits, letters of a country, blanks; long runs, so that fields fill up.
Native AnyCard(Random& random) {
  Native card;
  card.bytes.resize(kNativeSize);
  card.mode = random.OneIn(8) ? random.Between(-1, 3) : random.Between(0, 1);
  random.Fill(card.bytes.data(), random.OneIn(2) ? kNativeSize : 64);
  int run = 0;
  int of = 0;
  for (int at = card.mode == 1 ? 16 : card.mode == 0 ? 14 : 0; at < 16 + 256; at += 2) {
    if (run-- == 0) {
      run = random.Between(0, 40);
      of = random.Between(0, 7);
    }
    unsigned unit = ' ';
    if (of == 1) unit = static_cast<unsigned>(random.Between('0', '9'));
    if (of == 2) unit = static_cast<unsigned>(random.Between('A', 'Z'));
    if (of >= 3 && of <= 5) unit = static_cast<unsigned>(random.Between(0x4E00, 0x9FA5));
    if (of == 6) unit = static_cast<unsigned>(random.Between(1, 0xFFFF));
    if (random.OneIn(400)) unit = 0;
    PutUnit(&card.bytes, at, unit);
  }
  constexpr unsigned kMarks[] = {' ', 'I', 'J', 'K', 0x4E00};
  const int start = card.mode == 1 ? 16 : card.mode == 0 ? 14 : 0;
  if (!random.OneIn(8)) PutUnit(&card.bytes, start + 248, kMarks[random.Between(0, 4)]);
  if (random.OneIn(2)) {
    const std::string country = random.OneIn(2) ? "CHN" : "GBR";
    for (int i = 0; i < 3; ++i) {
      PutUnit(&card.bytes, start + 152 + 2 * i,
              static_cast<unsigned char>(country[static_cast<std::size_t>(i)]));
    }
  }
  // Lengths whose templates lie inside. In the unknown modes the text has their place.
  if (card.mode == 0 || card.mode == 1) {
    PutLength(&card.bytes, 10, random.OneIn(4) ? random.Between(0, 900) : 256);
    PutLength(&card.bytes, 12, random.OneIn(4) ? random.Between(0, 1100) : 1024);
  }
  if (card.mode == 1) {
    PutLength(&card.bytes, 14, random.OneIn(4) ? random.Between(0, 1024) : 1024);
  }
  return card;
}

int DecimalOf(const char* text) {
  const long value = std::strtol(text, nullptr, 10);
  return static_cast<int>(value);
}

int ModelField(const unsigned char* source, char* dest, int width, int size, bool raw) {
  std::memset(dest, 0, static_cast<std::size_t>(width));
  std::vector<unsigned char> work(4096);
  std::memcpy(work.data(), source, static_cast<std::size_t>(size));
  std::vector<char> text(4096);
  if (model::UnicodeToUtf8(work.data(), size, text.data(), 256) < 1) return -1;
  int kept = width;
  if (!raw) {
    kept = width - 1;
    while (kept > 0 && text[static_cast<std::size_t>(kept) - 1] == ' ') --kept;
  }
  if (kept <= 0) {
    std::memset(dest, 0, static_cast<std::size_t>(size));
  } else {
    std::memcpy(dest, text.data(), static_cast<std::size_t>(kept));
  }
  return size;
}

// Takes one field after the other.
class FieldReader {
 public:
  explicit FieldReader(const unsigned char* text) : at_(text) {}

  template <std::size_t kWidth>
  FieldReader& Take(char (&field)[kWidth], int size) {
    at_ += ModelField(at_, field, int{kWidth}, size, false);
    return *this;
  }

 private:
  const unsigned char* at_;
};

template <typename Record>
void ModelChinaFields(const unsigned char* text, Record* record) {
  FieldReader(text)
      .Take(record->name, 30)
      .Take(record->sexCode, 2)
      .Take(record->nationCode, 4)
      .Take(record->birthday, 16)
      .Take(record->address, 70)
      .Take(record->cardId, 36)
      .Take(record->police, 30)
      .Take(record->validStart, 16)
      .Take(record->validEnd, 16)
      .Take(record->reserved, 36);
}

void ModelForeignFields(const unsigned char* text, PERSONINFO_FOR_FP* record) {
  FieldReader(text)
      .Take(record->EngName, 120)
      .Take(record->sexCode, 2)
      .Take(record->cardId, 30)
      .Take(record->nationCode, 6)
      .Take(record->name, 30)
      .Take(record->validStart, 16)
      .Take(record->validEnd, 16)
      .Take(record->birthday, 16)
      .Take(record->version, 4)
      .Take(record->govCode, 8)
      .Take(record->cardType, 2)
      .Take(record->otherData, 6);
}

void ModelGatFields(const unsigned char* text, PERSONINFO_GAT_FP* record) {
  FieldReader(text)
      .Take(record->name, 30)
      .Take(record->sexCode, 2)
      .Take(record->gatReserved1, 4)
      .Take(record->birthday, 16)
      .Take(record->address, 70)
      .Take(record->cardId, 36)
      .Take(record->police, 30)
      .Take(record->validStart, 16)
      .Take(record->validEnd, 16)
      .Take(record->passNumber, 18)
      .Take(record->signTimes, 4)
      .Take(record->gatReserved2, 6)
      .Take(record->cardType, 2)
      .Take(record->gatReserved3, 6);
}

int TextStart(int mode) { return mode == 0 ? 14 : mode == 1 ? 16 : 0; }

void ModelSex(const char* code, char* dest) { WriteText(DecimalOf(code) == 1 ? "男" : "女", dest); }

void ModelTemplate(const unsigned char* bytes, int digits, char* dest) {
  for (int i = 0; i < digits; ++i) {
    const unsigned byte = bytes[i / 2];
    dest[i] = "0123456789ABCDEF"[i % 2 == 0 ? byte / 16 : byte % 16];
  }
  dest[digits] = '\0';
}

void ModelTemplates(const unsigned char* native, char* first, char* second) {
  const int digits = Length(native, 14);
  const int block = 16 + Length(native, 10) + Length(native, 12);
  ModelTemplate(native + block, digits, first);
  ModelTemplate(native + block + digits / 2, digits, second);
}

template <typename Record>
void ModelTemplatesOfMode(const Native& card, Record* record) {
  if (card.mode == 1) ModelTemplates(card.data(), record->fingerData1, record->fingerData2);
}

void ModelChina(const Native& card, PERSONINFO_CHA_FP* record) {
  ModelTemplatesOfMode(card, record);
  ModelChinaFields(card.data() + TextStart(card.mode), record);
  model::Nation(DecimalOf(record->nationCode), record->nation);
  ModelSex(record->sexCode, record->sex);
}

void ModelForeign(const Native& card, PERSONINFO_FOR_FP* record) {
  ModelTemplatesOfMode(card, record);
  ModelForeignFields(card.data() + TextStart(card.mode), record);
  model::Country(record->nationCode, record->nation);
  ModelSex(record->sexCode, record->sex);
}

void ModelGat(const Native& card, PERSONINFO_GAT_FP* record) {
  ModelTemplatesOfMode(card, record);
  ModelGatFields(card.data() + TextStart(card.mode), record);
  ModelSex(record->sexCode, record->sex);
}

int ModelPerson(bool foreigner, const Native& card, PERSONINFO_FP* record) {
  ModelTemplatesOfMode(card, record);
  PERSONINFO_CHA_FP china = {};
  PERSONINFO_FOR_FP foreign = {};
  const unsigned char* text = card.data() + TextStart(card.mode);
  if (foreigner) {
    ModelForeignFields(text, &foreign);
    if (model::ConverStruct(nullptr, &foreign, record) != 0) return -1;
    model::Country(record->nationCode, record->nation);
  } else {
    ModelChinaFields(text, &china);
    if (model::ConverStruct(&china, nullptr, record) != 0) return -1;
    model::Nation(DecimalOf(record->nationCode), record->nation);
  }
  record->personType = foreigner ? 1 : 0;
  ModelSex(record->sexCode, record->sex);
  return 0;
}

int ModelKind(const Native& card) {
  std::vector<char> mark(16);
  if (card.mode == 0 || card.mode == 1) {
    ModelField(card.data() + TextStart(card.mode) + 248, mark.data(), 10, 2, true);
  }
  for (int kind = 0; kind < 3; ++kind) {
    const char expected[8] = {" IJ"[kind]};
    if (std::memcmp(mark.data(), expected, 8) == 0) return kind;
  }
  return -1;
}

// A parser of one kind of card.
template <typename Record>
void ParsesCardAsTheModel(int parse(int, const unsigned char*, Record*),
                          void model(const Native&, Record*)) {
  ForEachInput(
      [parse, model](Random& random) {
        const Native card = AnyCard(random);
        Records<Record> record;

        const int library = parse(card.mode, card.data(), record.of_library());
        model(card, record.of_model());

        return Equal(0, library) && record.AreEqual();
      },
      kRecords);
}

// A parser of the card text alone, which begins anywhere.
template <typename Record, typename Parse>
void ParsesAsTheModel(Parse parse, void model(const unsigned char*, Record*)) {
  ForEachInput(
      [parse, model](Random& random) {
        const Native card = AnyCard(random);
        const int offset = random.Between(0, 1000);
        Records<Record> record(random);

        const int library = parse(card.data(), offset, record.of_library());
        model(card.data() + offset, record.of_model());

        return Equal(0, library) && record.AreEqual();
      },
      kRecords);
}

}  // namespace

TEST(ModelOfGetIdCardTypeFromNativeData, IsEqual) {
  ForEachInput([](Random& random) {
    const Native card = AnyCard(random);

    return Equal(ModelKind(card), GetIdCardTypeFromNativeData(card.mode, card.data()));
  });
}

TEST(ModelOfGetPersonChinaInfo, IsEqual) { ParsesCardAsTheModel(GetPersonChinaInfo, ModelChina); }

TEST(ModelOfGetPersonForeignInfo, IsEqual) {
  ParsesCardAsTheModel(GetPersonForeignInfo, ModelForeign);
}

TEST(ModelOfGetPersonGATInfo, IsEqual) { ParsesCardAsTheModel(GetPersonGATInfo, ModelGat); }

TEST(ModelOfGetPersonInfo, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const Native card = AnyCard(random);
        const int foreigner = random.Between(0, 2);
        Records<PERSONINFO_FP> record;

        const int library = GetPersonInfo(foreigner, card.mode, card.data(), record.of_library());
        const int person = ModelPerson(foreigner != 0, card, record.of_model());

        return Equal(person, library) && record.AreEqual();
      },
      kRecords);
}

TEST(ModelOfGetPersonParam, IsEqual) {
  ForEachInput([](Random& random) {
    const Native card = AnyCard(random);
    const int size = 2 * random.Between(1, 60);
    const int width = random.Between(2, 180);
    // A field of blanks alone is filled with as many zeros as the card has bytes.
    if (size > width) return true;
    const int raw = random.Between(0, 1);
    Outputs<180> out(random);

    const int library = GetPersonParam(card.data() + 16, out.library_text(), width, size, raw);
    const int field = ModelField(card.data() + 16, out.model_text(), width, size, raw != 0);

    return Equal(field, library) && out.AreEqual();
  });
}

TEST(ModelOfIdChinaParam, IsEqual) {
  ParsesAsTheModel<PERSONINFO_CHA_FP>(IdChinaParam, ModelChinaFields);
}

TEST(ModelOfIdForeignParam, IsEqual) {
  ParsesAsTheModel<PERSONINFO_FOR_FP>(IdForeignParam, ModelForeignFields);
}

TEST(ModelOfIdGatParam, IsEqual) {
  const auto parse = [](const unsigned char* native, int offset, PERSONINFO_GAT_FP* record) {
    return offset % 2 == 0 ? IdGatParam(native, offset, record)
                           : IdGATParam_FP(offset, native, offset, record);
  };
  ParsesAsTheModel<PERSONINFO_GAT_FP>(parse, ModelGatFields);
}

TEST(ModelOfIdParamFP, IsEqual) {
  ParsesAsTheModel<PERSONINFO_FP>(IdParam_FP, ModelChinaFields<PERSONINFO_FP>);
}

TEST(ModelOfFuncGetSex, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string code = random.Text(random.Between(0, 5), "012 +-x");
    Outputs<8> out(random);

    const int library = tFuncGetSex(code.c_str(), out.library_text());
    ModelSex(code.c_str(), out.model_text());

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfFuncGetFpTemplate, IsEqual) {
  ForEachInput(
      [](Random& random) {
        Native card = AnyCard(random);
        card.mode = 1;
        PutLength(&card.bytes, 10, random.Between(0, 900));
        PutLength(&card.bytes, 12, random.Between(0, 1100));
        PutLength(&card.bytes, 14, random.Between(0, 1024));
        Records<PERSONINFO_GAT_FP> record(random);

        if (random.OneIn(2)) {
          tFuncGetFpTemplate(card.data(), record.of_library()->fingerData1,
                             record.of_library()->fingerData2);
        } else {
          GetGATFpTemplate(card.data(), record.of_library());
        }
        ModelTemplates(card.data(), record.of_model()->fingerData1, record.of_model()->fingerData2);

        return record.AreEqual();
      },
      kRecords);
}

TEST(ModelOfGetPhotoData, IsEqual) {
  ForEachInput([](Random& random) {
    Native card = AnyCard(random);
    const int finger = random.Between(0, 3);
    PutLength(&card.bytes, 10, random.OneIn(2) ? 256 : random.Between(0, 3056));
    PutLength(&card.bytes, 12, random.OneIn(8) ? random.Between(0, 0xFFFF) : 1024);
    Outputs<1024> out(random);

    const int library = tFunc_GetPhotoData(finger, card.data(), out.library());
    int model = -2;
    if (Length(card.data(), 12) == 1024) {
      std::memcpy(out.model(), card.data() + Length(card.data(), 10) + (finger == 1 ? 16 : 14),
                  1024);
      model = 1024;
    }

    return Equal(model, library) && out.AreEqual();
  });
}
