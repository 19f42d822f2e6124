#include "tests/carddata/native_data.h"

#include <algorithm>
#include <stdexcept>

using simulator::Kind;

std::span<const CardField> CardFields(RecordKind kind) {
  switch (kind) {
    case RecordKind::kChina:
      return simulator::TextFields(Kind::kResident);
    case RecordKind::kForeign:
      return simulator::TextFields(Kind::kForeigner);
    case RecordKind::kGat:
      return simulator::TextFields(Kind::kPermit);
    default:
      throw std::invalid_argument("no card of this kind");
  }
}

Bytes CardText(RecordKind kind, const CardTexts& texts) {
  Bytes bytes;
  for (int unit = 0; unit < 128; ++unit) bytes.insert(bytes.end(), {' ', 0});
  for (const auto& [name, text] : texts) {
    const auto fields = CardFields(kind);
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [&, wanted = name](const auto& f) { return f.name == wanted; });
    if (field == fields.end() || 2 * text.size() > field->size) throw std::invalid_argument(name);
    std::size_t at = field->offset;
    for (const char16_t unit : text) {
      bytes.at(at++) = static_cast<std::uint8_t>(unit);
      bytes.at(at++) = static_cast<std::uint8_t>(unit >> 8);
    }
  }
  return bytes;
}

void PutBigEndian16(Bytes* native, std::size_t at, unsigned value) {
  native->at(at) = static_cast<std::uint8_t>(value >> 8);
  native->at(at + 1) = static_cast<std::uint8_t>(value);
}

Bytes NativeData(int mode, const Bytes& text, const Bytes& fingerprints) {
  Bytes native(mode == 1 ? 16 : 14);
  PutBigEndian16(&native, 10, static_cast<unsigned>(text.size()));
  PutBigEndian16(&native, 12, 1024);
  if (mode == 1) PutBigEndian16(&native, 14, static_cast<unsigned>(fingerprints.size()));
  native.insert(native.end(), text.begin(), text.end());
  native.insert(native.end(), 1024, 0xEE);
  native.insert(native.end(), fingerprints.begin(), fingerprints.end());
  native.resize(4096);
  return native;
}
