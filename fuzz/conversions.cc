// Conversions between records whose fields may lack their zero: same-named fields, one by one.
#include <cstring>
#include <span>

#include "carddata/layout.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/carddata.h"

namespace {

using Fields = std::span<const Field>;

const Field* Named(Fields fields, const char* name) {
  for (const Field& field : fields) {
    if (std::strcmp(field.name, name) == 0) return &field;
  }
  return nullptr;
}

// `before` after the texts of same-named fields were copied into it, without their zeros.
Bytes Copied(Fields from, const void* source, std::size_t source_size, Fields to, Bytes before) {
  for (const Field& field : from) {
    if (field.offset >= source_size) continue;  // templates, in a record without them
    const Field* const target = Named(to, field.name);
    if (target == nullptr || target->offset >= before.size()) continue;
    std::string text(field.In(source), field.width);
    text.resize(std::min(text.find('\0'), text.size()));
    text.resize(std::min<std::size_t>(text.size(), target->width - 1U));
    std::copy(text.begin(), text.end(), before.begin() + target->offset);
  }
  return before;
}

template <typename Record>
std::unique_ptr<Record> RecordOf(const Bytes& content) {
  auto record = std::make_unique<Record>();
  std::memset(record.get(), 0, sizeof(Record));
  if (!content.empty()) {
    for (std::size_t i = 0; i < sizeof(Record); ++i) {
      reinterpret_cast<std::uint8_t*>(record.get())[i] = content[i % content.size()];
    }
  }
  return record;
}

// `personType` of the combined record is a number and of no interest to the copies of texts.
template <typename From, typename To>
void Variant(const Field* fields, std::size_t count, int convert(const From*, To*),
             const Bytes& content) {
  const auto source = RecordOf<From>(content);
  GuardedRecord<To> dest;
  FUZZ_CHECK(convert(source.get(), dest.get()) == 0);
  const Fields table(fields, count);
  Bytes expected = Copied(table, source.get(), std::min(sizeof(From), sizeof(To)), table,
                          Bytes(sizeof(To), kUntouched));
  if constexpr (requires { dest->personType; }) {
    if (convert == reinterpret_cast<int (*)(const From*, To*)>(&tFuncConvertPersonFp)) {
      std::memcpy(expected.data() + offsetof(To, personType), &source->personType, sizeof(int));
    }
  }
  FUZZ_CHECK(dest.bytes().First(sizeof(To)) == expected);
}

void Variants(const Bytes& content) {
  const auto run = [&](const auto& fields, auto drop, auto add) {
    Variant(std::data(fields), std::size(fields), drop, content);
    Variant(std::data(fields), std::size(fields), add, content);
  };
  run(kChinaRecord, &tFuncConvertChinaFp, &tFuncConvertChina);
  run(kForeignRecord, &tFuncConvertForeignFp, &tFuncConvertForeign);
  run(kGatRecord, &tFuncConvertGatFp, &tFuncConvertGat);
  run(kCollectRecord, &tFuncConvertCollectFp, &tFuncConvertCollect);
  run(kPersonRecord, &tFuncConvertPersonFp, &tFuncConvertPerson);
}

template <typename Record>
Bytes Snapshot(const Record& record) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(&record);
  return {first, first + sizeof record};
}

void Combined(const Bytes& first, const Bytes& second, const Bytes& third) {
  const auto china = RecordOf<PERSONINFO_CHA_FP>(first);
  const auto foreign = RecordOf<PERSONINFO_FOR_FP>(second);
  const auto person = RecordOf<PERSONINFO_FP>(third);
  const Bytes before[] = {Snapshot(*china), Snapshot(*foreign), Snapshot(*person)};
  Bytes after[] = {before[0], before[1], before[2]};
  int expected = 0;
  if (china->name[0] != '\0') {
    after[2] = Copied(kChinaRecord, china.get(), sizeof *china, kPersonRecord, before[2]);
    after[2][offsetof(PERSONINFO_FP, cardType)] = ' ';
  } else if (foreign->name[0] != '\0') {
    after[2] = Copied(kForeignRecord, foreign.get(), sizeof *foreign, kPersonRecord, before[2]);
    after[2][offsetof(PERSONINFO_FP, cardType)] = 'I';
  } else if (person->name[0] == '\0') {
    expected = -1;
  } else if (person->cardType[0] == ' ') {
    after[0] = Copied(kPersonRecord, person.get(), sizeof *person, kChinaRecord, before[0]);
  } else if (person->cardType[0] == 'I') {
    after[1] = Copied(kPersonRecord, person.get(), sizeof *person, kForeignRecord, before[1]);
  }

  FUZZ_CHECK(ConverStruct(china.get(), foreign.get(), person.get()) == expected);

  FUZZ_CHECK(Snapshot(*china) == after[0]);
  FUZZ_CHECK(Snapshot(*foreign) == after[1]);
  FUZZ_CHECK(Snapshot(*person) == after[2]);
}

template <typename Record, std::size_t kCount>
void ToCollect(const Field (&fields)[kCount], const Bytes& content, bool resident) {
  const auto source = RecordOf<Record>(content);
  GuardedRecord<PERSONINFO_COLLECT_FP> collect;
  if constexpr (std::is_same_v<Record, PERSONINFO_CHA_FP>) {
    FUZZ_CHECK(tFuncConvertStruct2Collect(source.get(), nullptr, nullptr, collect.get()) == 0);
  } else if constexpr (std::is_same_v<Record, PERSONINFO_FOR_FP>) {
    FUZZ_CHECK(tFuncConvertStruct2Collect(nullptr, source.get(), nullptr, collect.get()) == 0);
  } else {
    FUZZ_CHECK(tFuncConvertStruct2Collect(nullptr, nullptr, source.get(), collect.get()) == 0);
  }
  Bytes expected = Copied(fields, source.get(), sizeof(Record), kCollectRecord,
                          Bytes(sizeof(PERSONINFO_COLLECT_FP), kUntouched));
  if (resident) expected[offsetof(PERSONINFO_COLLECT_FP, cardType)] = ' ';
  FUZZ_CHECK(collect.bytes().First(sizeof(PERSONINFO_COLLECT_FP)) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Bytes first = input.Take(input.Byte());
  const Bytes second = input.Take(input.Byte());
  const Bytes third = input.Rest();
  Variants(third);
  Combined(first, second, third);
  ToCollect<PERSONINFO_CHA_FP>(kChinaRecord, third, true);
  ToCollect<PERSONINFO_FOR_FP>(kForeignRecord, third, false);
  ToCollect<PERSONINFO_GAT_FP>(kGatRecord, third, false);
  return 0;
}
