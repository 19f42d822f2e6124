// Records to JSON text and back.
#include <cstdio>
#include <utility>
#include <vector>

#include "quillonid/carddata.h"
#include "quillonid/reader.h"
#include "tests/models/model.h"
#include "tests/models/record_model.h"

namespace {

constexpr std::uint64_t kTexts = 10000;
using KeyValues = std::vector<std::pair<std::string, std::string>>;

// RFC 8259 with the short escapes, everything above 7F as it is.
std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const std::size_t known = std::string("\"\\\b\f\n\r\t").find(c);
    if (known != std::string::npos) {
      out += {'\\', "\"\\bfnrt"[known]};
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", unsigned{static_cast<unsigned char>(c)});
      out += escape;
    } else {
      out.push_back(c);
    }
  }
  return out + '"';
}

std::string ModelText(const KeyValues& values) {
  std::string text = "{\n";
  for (std::size_t i = 0; i < values.size(); ++i) {
    text += '\t' + Quoted(values[i].first) + ":\t" + Quoted(values[i].second);
    text += i + 1 < values.size() ? ",\n" : "\n";
  }
  return text + '}';
}

template <typename Record>
KeyValues Beginning(const Record& r) {
  return {
      {"Address",           r.address                                                },
      {"Birth",             r.birthday                                               },
      {"CardActivity",      std::string(r.validStart) + "-" + std::string(r.validEnd)},
      {"CardActivityStart", r.validStart                                             },
      {"CardActivityExp",   r.validEnd                                               }
  };
}

void Append(KeyValues* values, const KeyValues& more) {
  values->insert(values->end(), more.begin(), more.end());
}

KeyValues ValuesOf(const PERSONINFO_CHA_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"NationCode",  r.nationCode },
                      {"Ethnicity",   r.nation     },
                      {"IDNumber",    r.cardId     },
                      {"ChinaName",   r.name       },
                      {"Remark",      r.reserved   },
                      {"Sex",         r.sex        },
                      {"SexCode",     r.sexCode    },
                      {"Signatory",   r.police     },
                      {"CardType",    " "          },
                      {"FingerTemp1", r.fingerData1},
                      {"FingerTemp2", r.fingerData2}
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_FOR_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType   },
                      {"CountryCode", r.nationCode },
                      {"EngName",     r.EngName    },
                      {"GovCode",     r.govCode    },
                      {"Reserved",    r.otherData  },
                      {"Version",     r.version    },
                      {"Ethnicity",   r.nation     },
                      {"IDNumber",    r.cardId     },
                      {"ChinaName",   r.name       },
                      {"Remark",      r.reserved   },
                      {"Sex",         r.sex        },
                      {"SexCode",     r.sexCode    },
                      {"Signatory",   r.police     },
                      {"FingerTemp1", r.fingerData1},
                      {"FingerTemp2", r.fingerData2}
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_GAT_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType    },
                      {"IDNumber",    r.cardId      },
                      {"ChinaName",   r.name        },
                      {"AppendMsg1",  r.gatReserved1},
                      {"AppendMsg2",  r.gatReserved2},
                      {"AppendMsg3",  r.gatReserved3},
                      {"PassNumber",  r.passNumber  },
                      {"SignTimes",   r.signTimes   },
                      {"Sex",         r.sex         },
                      {"SexCode",     r.sexCode     },
                      {"Signatory",   r.police      },
                      {"FingerTemp1", r.fingerData1 },
                      {"FingerTemp2", r.fingerData2 }
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_COLLECT_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType    },
                      {"ChinaName",   r.name        },
                      {"EngName",     r.EngName     },
                      {"GovCode",     r.govCode     },
                      {"Reserved",    r.otherData   },
                      {"Version",     r.version     },
                      {"Ethnicity",   r.nation      },
                      {"NationCode",  r.nationCode  },
                      {"CountryCode", r.nationCode  },
                      {"IDNumber",    r.cardId      },
                      {"Remark",      r.reserved    },
                      {"Sex",         r.sex         },
                      {"SexCode",     r.sexCode     },
                      {"Signatory",   r.police      },
                      {"FingerTemp1", r.fingerData1 },
                      {"FingerTemp2", r.fingerData2 },
                      {"AppendMsg1",  r.gatReserved1},
                      {"AppendMsg2",  r.gatReserved2},
                      {"AppendMsg3",  r.gatReserved3},
                      {"PassNumber",  r.passNumber  },
                      {"SignTimes",   r.signTimes   }
  });
  return values;
}

// A text that may fill a field to its zero.
std::string AnyText(Random& random, std::size_t width) {
  const int size = random.OneIn(3)
                       ? random.Between(0, static_cast<int>(width) - 1)
                       : random.Between(0, static_cast<int>(std::min<std::size_t>(width - 1, 12)));
  if (random.OneIn(2)) return random.Text(size, "0123456789ABCDEF ");
  std::string text = random.Bytes(size);
  for (char& c : text) {
    if (c == '\0') c = ' ';
  }
  return text;
}

// Fills every field of a record of any kind.
class Filler {
 public:
  explicit Filler(Random& random) : random_(random) {}

  template <std::size_t kWidth>
  void operator()(char (&field)[kWidth]) {
    std::strcpy(field, AnyText(random_, kWidth).c_str());
  }

 private:
  Random& random_;
};

template <typename Record>
Record AnyRecord(Random& random) {
  Record r = {};
  Filler fill(random);
  fill(r.name);
  fill(r.sex);
  fill(r.birthday);
  fill(r.address);
  fill(r.cardId);
  fill(r.police);
  fill(r.validStart);
  fill(r.validEnd);
  fill(r.sexCode);
  fill(r.fingerData1);
  fill(r.fingerData2);
  if constexpr (requires { r.nation; }) {
    fill(r.nation);
    fill(r.nationCode);
    fill(r.reserved);
  }
  if constexpr (requires { r.EngName; }) {
    fill(r.EngName);
    fill(r.version);
    fill(r.govCode);
    fill(r.otherData);
  }
  if constexpr (requires { r.cardType; }) fill(r.cardType);
  if constexpr (requires { r.passNumber; }) {
    fill(r.passNumber);
    fill(r.signTimes);
    fill(r.gatReserved1);
    fill(r.gatReserved2);
    fill(r.gatReserved3);
  }
  return r;
}

// Native data with a photo, kept by the library as the last read's; the mode stays 0.
std::string KeepPhoto(Random& random) {
  std::string native(1295, '\0');
  native[10] = 1;
  native[12] = 4;
  const std::string photo = random.Bytes(1024);
  native.replace(14 + 256, photo.size(), photo);
  tFunc_SetIdNativeData(reinterpret_cast<unsigned char*>(native.data()), SizeOf(native));
  return photo;
}

std::string HexOf(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {"0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
  }
  return text;
}

std::string Base64Of(const std::string& bytes) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group * 256 + (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (unsigned part = 64 * 64 * 64; part > 0; part /= 64) text += kAlphabet[group / part % 64];
  }
  for (std::size_t i = bytes.size() % 3; i % 3 != 0; ++i) text[text.size() - 3 + i] = '=';
  return text;
}

template <typename Record>
constexpr bool kIsCollect = std::is_same_v<Record, PERSONINFO_COLLECT_FP>;

template <typename Record, typename Pack>
void ComparePacker(Pack pack) {
  ForEachInput(
      [&](Random& random) {
        const auto record = AnyRecord<Record>(random);
        KeyValues values = ValuesOf(record);
        const bool has_photo = random.OneIn(16);
        const std::string photo = has_photo ? KeepPhoto(random) : "";
        if (has_photo) {
          values.emplace_back("PhotoNativeData",
                              kIsCollect<Record> ? Base64Of(photo) : HexOf(photo));
        }
        const std::string text = ModelText(values);
        if (text.size() + 2 > QL_JSON_SIZE) return true;
        // Not taken back: the packer does that.
        if (has_photo) tFunc_SetAddPhotoDataToJsonFlag(1);
        Outputs<QL_JSON_SIZE> out(random);

        const int library = pack(record, out.library_text());
        if (kIsCollect<Record>) std::memset(out.model(), 0, text.size() + 2);
        std::memcpy(out.model(), text.data(), text.size());

        return Equal(0, library) && out.AreEqual();
      },
      kTexts);
}

// A text of keys in any order, some missing, some no strings, some unknown, with blanks between.
struct Source {
  std::string text;
  KeyValues values;  // the strings that it holds
};

Source AnyJson(Random& random, const KeyValues& of_record) {
  Source source;
  std::string text;
  for (const auto& [key, value] : of_record) {
    if (random.OneIn(6)) continue;
    if (!text.empty()) text += random.OneIn(2) ? "," : " ,\r\n ";
    text += Quoted(key) + (random.OneIn(2) ? ":" : "\t: ");
    if (random.OneIn(12)) {
      text += random.OneIn(2) ? "17" : "null";
      continue;
    }
    text += Quoted(value);
    source.values.emplace_back(key, value);
  }
  source.text = "{" + text + "}";
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

TEST(ModelOfFuncPackChinaJson, IsEqual) { ComparePacker<PERSONINFO_CHA_FP>(tFuncPackChinaJson); }

TEST(ModelOfFuncPackForeignJson, IsEqual) {
  ComparePacker<PERSONINFO_FOR_FP>(tFuncPackForeignJson);
}

TEST(ModelOfFuncPackGATJson, IsEqual) { ComparePacker<PERSONINFO_GAT_FP>(tFuncPackGATJson); }

TEST(ModelOfFuncPackCollectJson, IsEqual) {
  ComparePacker<PERSONINFO_COLLECT_FP>([](const PERSONINFO_COLLECT_FP& record, char* out) {
    return tFuncPackCollectJson(&record, out);
  });
}

TEST(ModelOfFuncConvertIdInfoStruct, IsEqual) {
  ForEachInput(
      [](Random& random) {
        auto person = AnyRecord<PERSONINFO_FP>(random);
        person.cardType[0] = " IJ"[random.Between(0, 2)];
        if (person.name[0] == '\0') return true;
        PERSONINFO_CHA_FP china = {};
        PERSONINFO_FOR_FP foreign = {};
        model::ConverStruct(person.cardType[0] == ' ' ? &china : nullptr,
                            person.cardType[0] == ' ' ? nullptr : &foreign, &person);
        const std::string text =
            ModelText(person.cardType[0] == ' ' ? ValuesOf(china) : ValuesOf(foreign));
        if (text.size() + 2 > QL_JSON_SIZE) return true;
        const bool is_known = person.cardType[0] != 'J';
        Outputs<QL_JSON_SIZE> out;

        const int library = tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, &person, nullptr,
                                                     out.library_text());
        if (is_known) std::memcpy(out.model(), text.data(), text.size());

        return Equal(is_known ? 0 : -1, library) && out.AreEqual();
      },
      kTexts);
}

TEST(ModelOfFuncGetStringFromJson, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const auto values = ValuesOf(AnyRecord<PERSONINFO_GAT_FP>(random));
        const Source source = AnyJson(random, values);
        const std::string& key =
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

        return Equal(model, tFuncGetStringFromJson(source.text.c_str(), key.c_str(),
                                                   out.library_text())) &&
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
        if (random.OneIn(16)) std::strcpy(record.cardType, "J ");
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
