// Records to JSON text.
#include "quillonid/carddata.h"
#include "quillonid/reader.h"
#include "tests/models/json_model.h"
#include "tests/models/record_model.h"

namespace {

using model::AnyRecord;
using model::AppendQuoted;
using model::KeyValues;
using model::kTexts;
using model::ValuesOf;

std::string ModelText(const KeyValues& values) {
  std::string text = "{\n";
  text.reserve(QL_JSON_SIZE);
  for (std::size_t i = 0; i < values.size(); ++i) {
    text.push_back('\t');
    AppendQuoted(&text, values[i].first);
    text += ":\t";
    AppendQuoted(&text, values[i].second);
    text += i + 1 < values.size() ? ",\n" : "\n";
  }
  text.push_back('}');
  return text;
}

// Native data with a photo, kept by the library as the last read's; the mode stays 0.
std::string KeepPhoto(Random& random) {
  std::string native(1295, '\0');
  native[10] = 1;
  native[12] = 4;
  std::string photo = random.Bytes(1024);
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

namespace {

// One text after the other into the same place, as far as they come. Returns the result.
class ModelPacker {
 public:
  // `photo`: of the card read last; empty when none is asked for. Without `kept` there is no card.
  ModelPacker(char* out, std::string photo, bool kept)
      : out_(out), photo_(std::move(photo)), kept_(kept) {}

  void Pack(KeyValues values, bool is_collect) {
    if (result_ != 0) return;
    if (!photo_.empty()) {
      if (is_collect && !kept_) {
        result_ = -1;
        return;
      }
      values.emplace_back("PhotoNativeData", is_collect ? Base64Of(photo_) : HexOf(photo_));
      photo_.clear();
    }
    const std::string text = ModelText(values);
    fits_ = fits_ && text.size() + 2 <= QL_JSON_SIZE;
    if (!fits_) return;
    if (is_collect) std::memset(out_, 0, text.size() + 2);
    std::memcpy(out_, text.data(), text.size());
  }
  void Fail() {
    if (result_ == 0) result_ = -1;
  }

  int result() const { return result_; }
  bool fits() const { return fits_; }

 private:
  char* out_;
  std::string photo_;
  bool kept_;
  bool fits_ = true;
  int result_ = 0;
};

// Any of the five records, or null.
template <typename Record>
class Given {
 public:
  explicit Given(Random& random) : record_(AnyRecord<Record>(random)), is_given_(random.OneIn(3)) {}

  Record* get() { return is_given_ ? &record_ : nullptr; }

 private:
  Record record_;
  bool is_given_;
};

}  // namespace

TEST(ModelOfFuncConvertIdInfoStructOfEveryKind, IsEqual) {
  ForEachInput(
      [](Random& random) {
        Given<PERSONINFO_CHA_FP> china(random);
        Given<PERSONINFO_FOR_FP> foreign(random);
        Given<PERSONINFO_GAT_FP> gat(random);
        Given<PERSONINFO_FP> person(random);
        Given<PERSONINFO_COLLECT_FP> collect(random);
        if (person.get() != nullptr) {
          person.get()->cardType[0] = " IJ"[random.Between(0, 2)];
          if (person.get()->name[0] == '\0') return true;
        }
        const bool has_photo = random.OneIn(8);
        // Only the text of every kind says what is to be done when no card was read.
        const bool only_collect = china.get() == nullptr && foreign.get() == nullptr &&
                                  gat.get() == nullptr && person.get() == nullptr;
        const bool kept = !only_collect || random.OneIn(2);
        const std::string photo = has_photo ? KeepPhoto(random) : "";
        if (!kept) tFunc_SetIdNativeData(nullptr, 0);
        tFunc_SetAddPhotoDataToJsonFlag(has_photo ? 1 : 0);
        Outputs<QL_JSON_SIZE> out;
        ModelPacker model(out.model_text(), photo, kept);

        const int library = tFuncConvertIdInfoStruct(
            china.get(), foreign.get(), gat.get(), person.get(), collect.get(), out.library_text());
        if (china.get() != nullptr) model.Pack(ValuesOf(*china.get()), false);
        if (foreign.get() != nullptr) model.Pack(ValuesOf(*foreign.get()), false);
        if (gat.get() != nullptr) model.Pack(ValuesOf(*gat.get()), false);
        if (person.get() != nullptr) {
          PERSONINFO_CHA_FP as_china = {};
          PERSONINFO_FOR_FP as_foreign = {};
          const char mark = person.get()->cardType[0];
          model::ConverStruct(mark == ' ' ? &as_china : nullptr,
                              mark == ' ' ? nullptr : &as_foreign, person.get());
          if (mark == 'J') model.Fail();
          model.Pack(mark == ' ' ? ValuesOf(as_china) : ValuesOf(as_foreign), false);
        }
        if (collect.get() != nullptr) model.Pack(ValuesOf(*collect.get()), true);
        if (!model.fits()) return true;

        return Equal(model.result(), library) && out.AreEqual();
      },
      kTexts);
}
