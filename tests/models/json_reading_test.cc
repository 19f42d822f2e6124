// JSON text to records.
#include "quillonid/carddata.h"
#include "tests/models/json_model.h"
#include "tests/models/record_model.h"

namespace {

using model::AnyRecord;
using model::AppendQuoted;
using model::KeyValues;
using model::kTexts;
using model::Quoted;
using model::ValuesOf;

// A text of keys in any order, some missing, some no strings, some unknown, with blanks between.
struct Source {
  std::string text;
  KeyValues values;  // the strings that it holds
};

Source AnyJson(Random& random, const KeyValues& of_record) {
  Source source;
  std::string text = "{";
  text.reserve(QL_JSON_SIZE);
  source.values.reserve(of_record.size());
  for (const auto& [key, value] : of_record) {
    if (random.OneIn(6)) continue;
    if (text.size() > 1) text += random.OneIn(2) ? "," : " ,\r\n ";
    AppendQuoted(&text, key);
    text += random.OneIn(2) ? ":" : "\t: ";
    if (random.OneIn(12)) {
      text += random.OneIn(2) ? "17" : "null";
      continue;
    }
    AppendQuoted(&text, value);
    source.values.emplace_back(key, value);
  }
  source.text = std::move(text) + "}";
  return source;
}

// The reader's side of one key.
class Reader {
 public:
  explicit Reader(const Source& source) : values_(source.values) {}

  template <std::size_t kWidth>
  Reader& Take(const char* key, char (&field)[kWidth]) {
    for (const auto& [known, value] : values_) {
      if (known == key) std::memcpy(field, value.c_str(), value.size() + 1);
    }
    return *this;
  }

 private:
  const KeyValues& values_;
};

template <typename Record>
Reader& ReadCommon(Reader& reader, Record* r) {
  return reader.Take("Address", r->address)
      .Take("Birth", r->birthday)
      .Take("CardActivityStart", r->validStart)
      .Take("CardActivityExp", r->validEnd)
      .Take("IDNumber", r->cardId)
      .Take("ChinaName", r->name)
      .Take("Sex", r->sex)
      .Take("SexCode", r->sexCode)
      .Take("FingerTemp1", r->fingerData1)
      .Take("FingerTemp2", r->fingerData2);
}

void ModelRead(const Source& source, PERSONINFO_CHA_FP* r) {
  Reader reader(source);
  ReadCommon(reader, r)
      .Take("NationCode", r->nationCode)
      .Take("Ethnicity", r->nation)
      .Take("Remark", r->reserved)
      .Take("Signatory", r->police);
}

void ModelRead(const Source& source, PERSONINFO_FOR_FP* r) {
  Reader reader(source);
  ReadCommon(reader, r)
      .Take("CardType", r->cardType)
      .Take("CountryCode", r->nationCode)
      .Take("EngName", r->EngName)
      .Take("GovCode", r->govCode)
      .Take("Reserved", r->otherData)
      .Take("Version", r->version)
      .Take("Ethnicity", r->nation);
}

template <typename Record>
Reader& ReadPermit(Reader& reader, Record* r) {
  return ReadCommon(reader, r)
      .Take("CardType", r->cardType)
      .Take("AppendMsg1", r->gatReserved1)
      .Take("AppendMsg2", r->gatReserved2)
      .Take("AppendMsg3", r->gatReserved3)
      .Take("PassNumber", r->passNumber)
      .Take("SignTimes", r->signTimes)
      .Take("Signatory", r->police);
}

void ModelRead(const Source& source, PERSONINFO_GAT_FP* r) {
  Reader reader(source);
  ReadPermit(reader, r);
}

void ModelRead(const Source& source, PERSONINFO_COLLECT_FP* r) {
  Reader reader(source);
  ReadPermit(reader, r)
      .Take("EngName", r->EngName)
      .Take("GovCode", r->govCode)
      .Take("Reserved", r->otherData)
      .Take("Version", r->version)
      .Take("Ethnicity", r->nation)
      .Take("NationCode", r->nationCode)
      .Take("Remark", r->reserved);
}

template <typename Record>
void CompareReader(int (*read)(const char*, Record*)) {
  ForEachInput(
      [&](Random& random) {
        const auto values = ValuesOf(AnyRecord<Record>(random));
        const Source source = AnyJson(random, values);
        Records<Record> record(random);

        const int library = read(source.text.c_str(), record.of_library());
        ModelRead(source, record.of_model());

        return Equal(0, library) && record.AreEqual();
      },
      kTexts);
}

}  // namespace

TEST(ModelOfFuncGetStringFromJson, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const auto values = ValuesOf(AnyRecord<PERSONINFO_GAT_FP>(random));
        const Source source = AnyJson(random, values);
        const std::string_view key =
            values[static_cast<std::size_t>(random.Between(0, SizeOf(source.text)) %
                                            static_cast<int>(values.size()))]
                .first;
        Outputs<1200> out(random);
        int model = source.text.find(Quoted(key)) == std::string::npos ? -2 : -2004;
        for (const auto& [known, value] : source.values) {
          if (known != key) continue;
          std::memcpy(out.model(), value.c_str(), value.size() + 1);
          model = 0;
        }

        return Equal(model,
                     tFuncGetStringFromJson(source.text.c_str(), key.data(), out.library_text())) &&
               out.AreEqual();
      },
      kTexts);
}

TEST(ModelOfFuncConvertJsontoChinaStruct, IsEqual) { CompareReader(tFuncConvertJsontoChinaStruct); }

TEST(ModelOfFuncConvertJsontoForeignStruct, IsEqual) {
  CompareReader(tFuncConvertJsontoForeignStruct);
}

TEST(ModelOfFuncConvertJsontoGatStruct, IsEqual) { CompareReader(tFuncConvertJsontoGatStruct); }

TEST(ModelOfFuncConvertJsontoCollectStruct, IsEqual) {
  CompareReader(tFuncConvertJsontoCollectStruct);
}

// The kind that the text's mark names, into the record without templates.
TEST(ModelOfFuncConvertIdInfotoStruct, IsEqual) {
  ForEachInput(
      [](Random& random) {
        auto record = AnyRecord<PERSONINFO_COLLECT_FP>(random);
        record.cardType[0] = " IJx"[random.Between(0, 3)];
        record.cardType[1] = '\0';
        if (random.OneIn(16)) std::memcpy(record.cardType, "J ", 3);
        const Source source = AnyJson(random, ValuesOf(record));
        Records<PERSONINFO_CHA> china(random);
        Records<PERSONINFO_FOR> foreign(random);
        Records<PERSONINFO_GAT> gat(random);
        int model = source.text.find("\"CardType\"") == std::string::npos ? -2 : -2004;
        for (const auto& [key, mark] : source.values) {
          if (key != "CardType") continue;
          model = -1;
          if (mark == " ") {
            model = 0;
            PERSONINFO_CHA_FP read = {};
            ModelRead(source, &read);
            *china.of_model() = {};
            model::CopyResident(*china.of_model(), read);
          } else if (mark == "I") {
            model = 1;
            PERSONINFO_FOR_FP read = {};
            ModelRead(source, &read);
            *foreign.of_model() = {};
            model::CopyForeigner(*foreign.of_model(), read);
          } else if (mark == "J") {
            model = 2;
            PERSONINFO_GAT_FP read = {};
            ModelRead(source, &read);
            *gat.of_model() = {};
            model::CopyPermit(*gat.of_model(), read);
          }
        }

        const int library = tFuncConvertIdInfotoStruct(source.text.c_str(), china.of_library(),
                                                       foreign.of_library(), gat.of_library());

        return Equal(model, library) && china.AreEqual() && foreign.AreEqual() && gat.AreEqual();
      },
      kTexts);
}
