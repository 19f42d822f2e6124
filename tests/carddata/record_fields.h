// The fields of the records as lists of names and widths, to hold the library's structures and
// tables against. Offsets are sums of widths.
#ifndef QUILLONID_TESTS_CARDDATA_RECORD_FIELDS_H
#define QUILLONID_TESTS_CARDDATA_RECORD_FIELDS_H

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

struct ExpectedField {
  std::string name;
  std::size_t width;
  std::size_t offset = 0;
};

using RecordFields = std::vector<ExpectedField>;

enum class RecordKind { kChina, kForeign, kGat, kPerson, kCollect };

// Without templates, or with the two behind what the plain record has.
RecordFields FieldsOf(RecordKind kind, bool with_templates);

const ExpectedField& FieldNamed(const RecordFields& fields, const std::string& name);

// A record as bytes.
class RawRecord {
 public:
  RawRecord(RecordKind kind, bool with_templates, char fill = '\0');

  template <typename Record>
  Record* As() {
    if (sizeof(Record) != size_) throw std::logic_error("another record's size");
    return reinterpret_cast<Record*>(bytes_.data());
  }

  // Text from the start of a field on; what was behind it stays.
  void Put(const std::string& name, const std::string& text);
  // The whole field.
  std::string Get(const std::string& name) const;
  // The field up to its zero.
  std::string Text(const std::string& name) const {
    const std::string field = Get(name);
    return field.substr(0, field.find('\0'));
  }

  const RecordFields& fields() const { return fields_; }
  // The record, and the bytes behind it, which nobody may write.
  const std::string& bytes() const { return bytes_; }
  bool IsTailUntouched() const;

 private:
  RecordFields fields_;
  std::size_t size_;
  std::string bytes_;
};

#endif
