#include "tests/carddata/record_fields.h"

#include <algorithm>

#include "quillonid/records.h"

namespace {

constexpr std::size_t kTail = 64;
constexpr char kTailFill = '\x5A';

// Fields 1 to 17 of all records but the resident's and the permit's.
const RecordFields kCommon = {
    {"name",       80 },
    {"EngName",    120},
    {"version",    10 },
    {"govCode",    10 },
    {"cardType",   10 },
    {"otherData",  10 },
    {"sex",        10 },
    {"nation",     50 },
    {"birthday",   30 },
    {"address",    180},
    {"cardId",     50 },
    {"police",     80 },
    {"validStart", 30 },
    {"validEnd",   30 },
    {"sexCode",    10 },
    {"nationCode", 10 },
    {"reserved",   180},
};

const RecordFields kChina = {
    {"name",       80 },
    {"sex",        10 },
    {"nation",     50 },
    {"birthday",   30 },
    {"address",    180},
    {"cardId",     50 },
    {"police",     80 },
    {"validStart", 30 },
    {"validEnd",   30 },
    {"sexCode",    10 },
    {"nationCode", 10 },
    {"reserved",   180},
};

const RecordFields kGat = {
    {"name",         80 },
    {"sexCode",      10 },
    {"sex",          10 },
    {"gatReserved1", 10 },
    {"birthday",     30 },
    {"address",      180},
    {"cardId",       50 },
    {"police",       80 },
    {"validStart",   30 },
    {"validEnd",     30 },
    {"passNumber",   40 },
    {"signTimes",    10 },
    {"gatReserved2", 10 },
    {"cardType",     8  },
    {"gatReserved3", 10 },
};

const RecordFields kOnlyInCollect = {
    {"passNumber",   40},
    {"signTimes",    10},
    {"gatReserved1", 10},
    {"gatReserved2", 10},
    {"gatReserved3", 10},
};

std::size_t SizeOf(RecordKind kind, bool with_templates) {
  switch (kind) {
    case RecordKind::kChina:
      return with_templates ? 2790 : 740;
    case RecordKind::kForeign:
      return with_templates ? 2950 : 900;
    case RecordKind::kGat:
      return with_templates ? 2638 : 588;
    case RecordKind::kPerson:
      return with_templates ? 2956 : 904;
    case RecordKind::kCollect:
      return with_templates ? 3030 : 980;
  }
  throw std::logic_error("no such kind");
}

}  // namespace

RecordFields FieldsOf(RecordKind kind, bool with_templates) {
  RecordFields fields = kind == RecordKind::kChina ? kChina
                        : kind == RecordKind::kGat ? kGat
                                                   : kCommon;
  if (kind == RecordKind::kCollect) {
    fields.insert(fields.end(), kOnlyInCollect.begin(), kOnlyInCollect.end());
  }
  std::size_t offset = 0;
  for (ExpectedField& field : fields) {
    field.offset = offset;
    offset += field.width;
  }
  if (kind == RecordKind::kPerson) offset += sizeof(int32_t);  // personType
  if (with_templates) {
    fields.push_back({"fingerData1", 1025, offset});
    fields.push_back({"fingerData2", 1025, offset + 1025});
  }
  return fields;
}

const ExpectedField& FieldNamed(const RecordFields& fields, const std::string& name) {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const ExpectedField& field) { return field.name == name; });
  if (found == fields.end()) throw std::out_of_range("no field " + name);
  return *found;
}

RawRecord::RawRecord(RecordKind kind, bool with_templates, char fill)
    : fields_(FieldsOf(kind, with_templates)),
      size_(SizeOf(kind, with_templates)),
      bytes_(std::string(size_, fill) + std::string(kTail, kTailFill)) {}

void RawRecord::Put(const std::string& name, const std::string& text) {
  const ExpectedField& field = FieldNamed(fields_, name);
  if (text.size() > field.width) throw std::length_error("too long for " + name);
  bytes_.replace(field.offset, text.size(), text);
}

std::string RawRecord::Get(const std::string& name) const {
  const ExpectedField& field = FieldNamed(fields_, name);
  return bytes_.substr(field.offset, field.width);
}

bool RawRecord::IsTailUntouched() const {
  return bytes_.substr(size_) == std::string(kTail, kTailFill);
}
