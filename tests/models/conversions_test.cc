// Records copied from one to another.
#include "quillonid/carddata.h"
#include "tests/models/model.h"
#include "tests/models/record_model.h"

namespace {

constexpr std::uint64_t kRecords = 30000;

// Noise with a zero at the end of every field, and texts that end anywhere.
template <typename Record>
class AnyRecord {
 public:
  explicit AnyRecord(Random& random) : random_(random) { random.Fill(&record, sizeof record); }

  template <std::size_t kWidth>
  void End(char (&field)[kWidth]) {
    field[random_.Between(0, int{kWidth} - 1)] = '\0';
    field[kWidth - 1] = '\0';
  }

  Record record;

 private:
  Random& random_;
};

template <typename Any>
void EndResident(Any& any) {
  any.End(any.record.name);
  any.End(any.record.sex);
  any.End(any.record.birthday);
  any.End(any.record.address);
  any.End(any.record.cardId);
  any.End(any.record.police);
  any.End(any.record.validStart);
  any.End(any.record.validEnd);
  any.End(any.record.sexCode);
  if constexpr (requires { any.record.nation; }) {
    any.End(any.record.nation);
    any.End(any.record.nationCode);
    any.End(any.record.reserved);
  }
  if constexpr (requires { any.record.EngName; }) {
    any.End(any.record.EngName);
    any.End(any.record.version);
    any.End(any.record.govCode);
    any.End(any.record.otherData);
  }
  if constexpr (requires { any.record.cardType; }) any.End(any.record.cardType);
  if constexpr (requires { any.record.passNumber; }) {
    any.End(any.record.passNumber);
    any.End(any.record.signTimes);
    any.End(any.record.gatReserved1);
    any.End(any.record.gatReserved2);
    any.End(any.record.gatReserved3);
  }
  if constexpr (requires { any.record.fingerData1; }) {
    any.End(any.record.fingerData1);
    any.End(any.record.fingerData2);
  }
}

template <typename Record>
Record Any(Random& random) {
  AnyRecord<Record> any(random);
  EndResident(any);
  if (random.OneIn(3)) any.record.name[0] = '\0';
  if constexpr (requires { any.record.cardType; }) {
    if (random.OneIn(2)) any.record.cardType[0] = " IJ"[random.Between(0, 2)];
  }
  return any.record;
}

// `convert` of the library beside `copy`.
template <typename Source, typename Dest, typename Copy>
void CompareConversion(int (*convert)(const Source*, Dest*), Copy copy) {
  ForEachInput(
      [&](Random& random) {
        const Source source = Any<Source>(random);
        Records<Dest> dest(random);

        const int library = convert(&source, dest.of_library());
        copy(*dest.of_model(), source);

        return Equal(0, library) && dest.AreEqual();
      },
      kRecords);
}

}  // namespace

TEST(ModelOfFuncConvertChinaFp, IsEqual) {
  CompareConversion(tFuncConvertChinaFp,
                    [](auto& dest, const auto& source) { model::CopyResident(dest, source); });
}

TEST(ModelOfFuncConvertChina, IsEqual) {
  CompareConversion(tFuncConvertChina,
                    [](auto& dest, const auto& source) { model::CopyResident(dest, source); });
}

TEST(ModelOfFuncConvertForeignFp, IsEqual) {
  CompareConversion(tFuncConvertForeignFp,
                    [](auto& dest, const auto& source) { model::CopyForeigner(dest, source); });
}

TEST(ModelOfFuncConvertForeign, IsEqual) {
  CompareConversion(tFuncConvertForeign,
                    [](auto& dest, const auto& source) { model::CopyForeigner(dest, source); });
}

TEST(ModelOfFuncConvertGatFp, IsEqual) {
  CompareConversion(tFuncConvertGatFp,
                    [](auto& dest, const auto& source) { model::CopyPermit(dest, source); });
}

TEST(ModelOfFuncConvertGat, IsEqual) {
  CompareConversion(tFuncConvertGat,
                    [](auto& dest, const auto& source) { model::CopyPermit(dest, source); });
}

TEST(ModelOfFuncConvertCollectFp, IsEqual) {
  CompareConversion(tFuncConvertCollectFp,
                    [](auto& dest, const auto& source) { model::CopyCollect(dest, source); });
}

TEST(ModelOfFuncConvertCollect, IsEqual) {
  CompareConversion(tFuncConvertCollect,
                    [](auto& dest, const auto& source) { model::CopyCollect(dest, source); });
}

TEST(ModelOfFuncConvertPerson, IsEqual) {
  CompareConversion(tFuncConvertPerson,
                    [](auto& dest, const auto& source) { model::CopyForeigner(dest, source); });
}

TEST(ModelOfFuncConvertPersonFp, IsEqual) {
  CompareConversion(tFuncConvertPersonFp, [](auto& dest, const auto& source) {
    model::CopyForeigner(dest, source);
    dest.personType = source.personType;
  });
}

// In both directions; each of the two cards may be missing.
TEST(ModelOfConverStruct, IsEqual) {
  ForEachInput(
      [](Random& random) {
        Records<PERSONINFO_CHA_FP> china(random);
        Records<PERSONINFO_FOR_FP> foreign(random);
        Records<PERSONINFO_FP> person(random);
        *china.of_library() = *china.of_model() = Any<PERSONINFO_CHA_FP>(random);
        *foreign.of_library() = *foreign.of_model() = Any<PERSONINFO_FOR_FP>(random);
        *person.of_library() = *person.of_model() = Any<PERSONINFO_FP>(random);
        const bool has_china = !random.OneIn(4);
        const bool has_foreign = !random.OneIn(4);

        const int library =
            ConverStruct(has_china ? china.of_library() : nullptr,
                         has_foreign ? foreign.of_library() : nullptr, person.of_library());
        const int model =
            model::ConverStruct(has_china ? china.of_model() : nullptr,
                                has_foreign ? foreign.of_model() : nullptr, person.of_model());

        return Equal(model, library) && china.AreEqual() && foreign.AreEqual() && person.AreEqual();
      },
      kRecords);
}

TEST(ModelOfFuncConvertStruct2Collect, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const auto china = Any<PERSONINFO_CHA_FP>(random);
        const auto foreign = Any<PERSONINFO_FOR_FP>(random);
        const auto gat = Any<PERSONINFO_GAT_FP>(random);
        const auto* of_china = random.OneIn(3) ? &china : nullptr;
        const auto* of_foreign = random.OneIn(2) ? &foreign : nullptr;
        const auto* of_gat = random.OneIn(8) ? nullptr : &gat;
        Records<PERSONINFO_COLLECT_FP> collect(random);

        const int library =
            tFuncConvertStruct2Collect(of_china, of_foreign, of_gat, collect.of_library());
        model::ConvertToCollect(of_china, of_foreign, of_gat, collect.of_model());

        return Equal(0, library) && collect.AreEqual();
      },
      kRecords);
}
