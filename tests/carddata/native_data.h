// Native data put together field by field.
#ifndef QUILLONID_TESTS_CARDDATA_NATIVE_DATA_H
#define QUILLONID_TESTS_CARDDATA_NATIVE_DATA_H

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "simulator/card.h"
#include "tests/carddata/record_fields.h"

using Bytes = std::vector<std::uint8_t>;

using CardField = simulator::TextField;

// The fields of the card text of a resident's, foreigner's or permit's card.
std::span<const CardField> CardFields(RecordKind kind);

using CardTexts = std::map<std::string, std::u16string>;

// 256 bytes, each field padded with blanks.
Bytes CardText(RecordKind kind, const CardTexts& texts);

// A buffer of 4,096 bytes with the answer to a read: a head of zeros, lengths, text, a photo and,
// in mode 1, the fingerprint block.
Bytes NativeData(int mode, const Bytes& text, const Bytes& fingerprints = {});

void PutBigEndian16(Bytes* native, std::size_t at, unsigned value);

#endif
