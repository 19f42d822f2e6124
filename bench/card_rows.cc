// Native data to records, records to JSON, pixels to a BMP file.
#include <cjson/cJSON.h>
#include <iconv.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "bench/files.h"
#include "bench/stand_ins.h"
#include "bench/table.h"
#include "carddata/json_fields.h"
#include "carddata/layout.h"
#include "quillonid/carddata.h"
#include "quillonid/image.h"
#include "simulator/card.h"

namespace bench {
namespace {

// A decoder as one would write it at first: iconv with a reused descriptor for each field, names
// out of a map.
class PlainDecoder {
 public:
  PlainDecoder() : descriptor_(iconv_open("UTF-8", "UTF-16LE")) {
    for (int code = 1; code <= 98; ++code) {
      char name[64] = {};
      GetNation(code, name, sizeof name);
      if (*name != '\0') nations_[code] = name;
    }
    for (char code[] = "AAA"; code[0] <= 'Z'; ++code[0]) {
      for (code[1] = 'A'; code[1] <= 'Z'; ++code[1]) {
        for (code[2] = 'A'; code[2] <= 'Z'; ++code[2]) {
          char name[64] = {};
          GetCountry(code, name);
          if (*name != '\0') countries_[code] = name;
        }
      }
    }
  }

  void Decode(const unsigned char* native, bool fingers, PERSONINFO_CHA_FP* record) const {
    DecodeText(kChinaText, native, fingers, record);
    Copy(nations_, std::atoi(record->nationCode), record->nation);
  }
  void Decode(const unsigned char* native, bool fingers, PERSONINFO_FOR_FP* record) const {
    DecodeText(kForeignText, native, fingers, record);
    Copy(countries_, record->nationCode, record->nation);
  }
  void Decode(const unsigned char* native, bool fingers, PERSONINFO_GAT_FP* record) const {
    DecodeText(kGatText, native, fingers, record);
  }

 private:
  template <typename Map, typename Key, std::size_t kSize>
  static void Copy(const Map& names, const Key& key, char (&dest)[kSize]) {
    if (const auto found = names.find(key); found != names.end()) {
      std::snprintf(dest, kSize, "%s", found->second.c_str());
    }
  }

  template <std::size_t kCount, typename Record>
  void DecodeText(const TextField (&fields)[kCount], const unsigned char* native, bool fingers,
                  Record* record) const {
    const unsigned char* const text = native + (fingers ? 16 : 14);
    for (const TextField& field : fields) {
      char utf8[512];
      char* in = const_cast<char*>(reinterpret_cast<const char*>(text + field.offset));
      char* out = utf8;
      std::size_t left = field.size, room = sizeof utf8;
      iconv(descriptor_, &in, &left, &out, &room);
      std::size_t length = static_cast<std::size_t>(out - utf8);
      const std::size_t width = field.field.width;
      if (length >= width - 1) {
        length = width - 1;
        while (length > 0 && utf8[length - 1] == ' ') --length;
      }
      std::memcpy(field.field.In(record), utf8, length);
    }
    std::strcpy(record->sex, std::atoi(record->sexCode) == 1 ? "男" : "女");
    if (!fingers) return;
    const unsigned char* const templates =
        text + (native[10] << 8 | native[11]) + (native[12] << 8 | native[13]);
    PutHex(templates, 512, record->fingerData1);
    PutHex(templates + 512, 512, record->fingerData2);
  }

  static void PutHex(const unsigned char* bytes, int size, char* text) {
    for (int i = 0; i < size; ++i) {
      *text++ = "0123456789ABCDEF"[bytes[i] >> 4];
      *text++ = "0123456789ABCDEF"[bytes[i] & 15];
    }
    *text = '\0';
  }

  iconv_t descriptor_;
  std::unordered_map<int, std::string> nations_;
  std::unordered_map<std::string, std::string> countries_;
};

simulator::Bytes Native(const char* card, bool fingers) {
  simulator::Bytes native = simulator::NativeData(simulator::MakeCard(card, fingers), fingers);
  native.resize(QL_NATIVE_DATA_SIZE);
  return native;
}

template <typename Record>
std::string BytesOf(const Record& record) {
  return std::string(reinterpret_cast<const char*>(&record), sizeof record);
}

template <typename Record, typename Parse>
void AddDecode(Table& table, const char* id, const char* card, bool fingers, Parse parse,
               const std::shared_ptr<PlainDecoder>& plain, Limits limits) {
  const simulator::Bytes native = Native(card, fingers);
  const auto ours = std::make_shared<Record>(), theirs = std::make_shared<Record>();
  const std::string title =
      std::string("native data to record: ") + card + (fingers ? " with fingerprints" : "");
  // The look-up of a name is logged, and a look for the configuration file takes as long as several
  // cards.
  table.NewRow(id, title, limits)
      .Before([] { TakeOutLogChecks(true); })
      .Add(
          Role::kLibrary, "library",
          [=] {
            std::memset(ours.get(), 0, sizeof(Record));
            parse(fingers ? 1 : 0, native.data(), ours.get());
          },
          [=] { return BytesOf(*ours); })
      .Add(
          Role::kPeer, "iconv decoder",
          [=] {
            std::memset(theirs.get(), 0, sizeof(Record));
            plain->Decode(native.data(), fingers, theirs.get());
          },
          [=] { return BytesOf(*theirs); });
}

// The libraries differ in the blanks that they put between a key and its value. Once read and
// printed again, the texts have to be the same.
std::string PrintedAgain(const char* json) {
  cJSON* const tree = cJSON_Parse(json);
  char* const text = cJSON_Print(tree);
  const std::string printed = text == nullptr ? "no JSON" : text;
  cJSON_free(text);
  cJSON_Delete(tree);
  return printed;
}

// Each key of the collect record and its value; `add` takes both.
template <typename Add>
void ForEachValue(const PERSONINFO_COLLECT_FP& record, Add add) {
  for (const JsonField& row : kCollectJson) {
    const char* const value = row.field.In(&record);
    if (row.use == JsonUse::kValidity) {
      char both[64];
      std::snprintf(both, sizeof both, "%s-%s", record.validStart, record.validEnd);
      add(row.key, both, std::strlen(both), true);
    } else {
      add(row.key, value, strnlen(value, row.field.width), false);
    }
  }
}

void AddJson(Table& table) {
  const auto china = std::make_shared<PERSONINFO_CHA_FP>();
  GetPersonChinaInfo(0, Native("resident", false).data(), china.get());
  const auto record = std::make_shared<PERSONINFO_COLLECT_FP>();
  tFuncConvertStruct2Collect(china.get(), nullptr, nullptr, record.get());

  using Text = std::array<char, QL_JSON_SIZE>;
  const auto ours = std::make_shared<Text>(), rapid = std::make_shared<Text>();
  const auto plain = std::make_shared<Text>(), modern = std::make_shared<Text>();
  const auto again = [](const std::shared_ptr<Text>& text) {
    return [=] { return PrintedAgain(text->data()); };
  };
  table.NewRow("json", "collect record to JSON text", {1.15, 0.90})
      .Add(
          Role::kLibrary, "tFuncPackCollectJson",
          [=] { tFuncPackCollectJson(record.get(), ours->data()); }, again(ours))
      .Add(
          Role::kPeer, "RapidJSON",
          [=] {
            rapidjson::Document document(rapidjson::kObjectType);
            auto& allocator = document.GetAllocator();
            ForEachValue(*record,
                         [&](const char* key, const char* value, std::size_t size, bool temporary) {
                           const auto length = static_cast<rapidjson::SizeType>(size);
                           rapidjson::Value text;
                           if (temporary) {
                             text.SetString(value, length, allocator);
                           } else {
                             text.SetString(rapidjson::StringRef(value, length));
                           }
                           document.AddMember(rapidjson::StringRef(key), text, allocator);
                         });
            rapidjson::StringBuffer buffer;
            rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
            writer.SetIndent('\t', 1);
            document.Accept(writer);
            std::memcpy(rapid->data(), buffer.GetString(), buffer.GetSize() + 1);
          },
          again(rapid))
      .Add(
          Role::kShown, "cJSON",
          [=] {
            cJSON* const object = cJSON_CreateObject();
            ForEachValue(*record, [&](const char* key, const char* value, std::size_t, bool) {
              cJSON_AddStringToObject(object, key, value);
            });
            char* const text = cJSON_Print(object);
            std::strcpy(plain->data(), text);
            cJSON_free(text);
            cJSON_Delete(object);
          },
          again(plain))
      .Add(
          Role::kShown, "nlohmann::json",
          [=] {
            nlohmann::ordered_json object;
            ForEachValue(*record, [&](const char* key, const char* value, std::size_t size, bool) {
              object[key] = std::string(value, size);
            });
            const std::string text = object.dump(1, '\t');
            std::memcpy(modern->data(), text.c_str(), text.size() + 1);
          },
          again(modern));
}

// A portrait's size. The file lies on a tmpfs.
constexpr int kWidth = 102, kHeight = 126;

void AddBmp(Table& table) {
  static const char kFile[] = "/home/quillon/portrait.bmp";
  std::vector<unsigned char> pixels(static_cast<std::size_t>(kWidth * kHeight * 3));
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 31);
  SaveBmp(kFile, pixels.data(), kWidth, kHeight);
  const std::string prepared = ReadWhole(kFile);
  table.NewRow("bmp", "BMP file on tmpfs", {1.60, 1.15})
      .Add(
          Role::kLibrary, "SaveBmp", [=] { SaveBmp(kFile, pixels.data(), kWidth, kHeight); },
          [] { return ReadWhole(kFile); })
      .Add(
          Role::kPeer, "one fwrite",
          [=] {
            std::FILE* const file = std::fopen(kFile, "wb");
            std::fwrite(prepared.data(), prepared.size(), 1, file);
            std::fclose(file);
          },
          [] { return ReadWhole(kFile); });
}

}  // namespace

void AddCardRows(Table& table) {
  const auto plain = std::make_shared<PlainDecoder>();
  AddDecode<PERSONINFO_CHA_FP>(table, "native-resident", "resident", false, GetPersonChinaInfo,
                               plain, {0.90, 0.40});
  AddDecode<PERSONINFO_FOR_FP>(table, "native-foreigner", "foreigner", false, GetPersonForeignInfo,
                               plain, {0.50, 0.20});
  AddDecode<PERSONINFO_GAT_FP>(table, "native-permit", "permit", false, GetPersonGATInfo, plain,
                               {0.90, 0.35});
  AddDecode<PERSONINFO_CHA_FP>(table, "native-fingerprints", "resident", true, GetPersonChinaInfo,
                               plain, {0.70, 0.30});
  AddJson(table);
  if (HaveFolder()) AddBmp(table);
}

}  // namespace bench
