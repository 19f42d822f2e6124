// Base64 both ways, over the standard alphabet and over one that the application wrote, against
// arithmetic on numbers.
#include <algorithm>
#include <string>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/support.h"

namespace {

const std::string kStandard = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string Encoded(const std::string& alphabet, const Bytes& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto at = [&](std::size_t k) { return k < bytes.size() ? bytes[k] : std::uint8_t{0}; };
    const unsigned group = at(i) * 65536U + at(i + 1) * 256U + at(i + 2);
    text += alphabet[group / 262144];
    text += alphabet[group / 4096 % 64];
    text += i + 1 < bytes.size() ? alphabet[group / 64 % 64] : '=';
    text += i + 2 < bytes.size() ? alphabet[group % 64] : '=';
  }
  return text;
}

int IndexOf(const std::string& alphabet, char c) {
  if (c == '=') return 0;
  const std::size_t at = alphabet.find(c);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

struct Decoded {
  int result;
  Bytes bytes;  // written, also by a failure
};

// A stranger's -1 stays -1 under a division that rounds down, and fills the byte from its place on.
Decoded Decode(const std::string& alphabet, const std::string& text, int room) {
  Decoded out = {0, {}};
  for (std::size_t i = 0; i + 4 <= text.size(); i += 4) {
    for (std::size_t j = 0; j < 3; ++j) {
      if (text[i + j] == '=' || text[i + j + 1] == '=') return out;
      if (out.result > room) return {-1, out.bytes};
      const int high = IndexOf(alphabet, text[i + j]), low = IndexOf(alphabet, text[i + j + 1]);
      constexpr int kUp[] = {4, 16, 64}, kDown[] = {16, 4, 1};
      const int down = low < 0 ? -1 : low / kDown[j];
      const int byte = (high * kUp[j]) | down;
      out.bytes.push_back(static_cast<std::uint8_t>(byte & 0xFF));
      ++out.result;
    }
  }
  return out;
}

void EncodeBytes(const std::string& alphabet, int encode(const unsigned char*, int, char*, int),
                 const Bytes& bytes, int shortage) {
  const std::string expected = Encoded(alphabet, bytes);
  const Exact<unsigned char> in(bytes);
  const std::size_t room =
      expected.size() - std::min<std::size_t>(expected.size(), static_cast<std::size_t>(shortage));
  Guarded out(room);
  const int result =
      encode(in.get(), static_cast<int>(bytes.size()), out.text(), static_cast<int>(room));
  if (room < expected.size()) {
    FUZZ_CHECK(result == -1 && out.UntouchedFrom(0));
  } else {
    FUZZ_CHECK(result == static_cast<int>(expected.size()));
    FUZZ_CHECK(out.FirstAsText(room) == expected);
  }
}

void DecodeText(const std::string& alphabet, int decode(const char*, int, unsigned char*, int),
                const std::string& text, int room) {
  const Exact<char> in(text.data(), text.size());
  Guarded out(static_cast<std::size_t>(room) + 1);
  const int result = decode(in.get(), static_cast<int>(text.size()), out.bytes(), room);
  const Decoded expected = Decode(alphabet, text, room);
  FUZZ_CHECK(result == expected.result);
  FUZZ_CHECK(out.First(expected.bytes.size()) == expected.bytes);
  FUZZ_CHECK(out.UntouchedFrom(expected.bytes.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  std::string alphabet = kStandard;
  char* const table = IniBase64Table();
  if (const std::size_t changes = input.Byte() % 4; changes > 0) {
    for (std::size_t i = 0; i < changes; ++i) {
      alphabet[input.Byte() % 64] = static_cast<char>(input.Byte());
    }
    std::copy(alphabet.begin(), alphabet.end(), table);
  }
  const int shortage = input.Between(0, 7) == 7 ? 1 : 0;
  const Bytes spare = input.Take(1);
  const Bytes bytes = input.Rest();

  EncodeBytes(kStandard, Base64_EncData, bytes, shortage);
  EncodeBytes(alphabet, EncryptBase64, bytes, shortage);
  const std::string text(bytes.begin(), bytes.end());
  const int room =
      static_cast<int>(text.size()) * 3 / 4 - (spare.empty() ? 0 : spare[0] % 16) * (shortage + 1);
  DecodeText(kStandard, Base64_DecData, text, std::max(room, 0));
  DecodeText(alphabet, DecryptBase64, text, std::max(room, 0));
  const std::string encoded = Encoded(kStandard, bytes);
  DecodeText(kStandard, Base64_DecData, encoded, static_cast<int>(bytes.size()));
  FUZZ_CHECK(Decode(kStandard, encoded, 1 << 20).bytes == bytes);
  for (const std::uint8_t byte : bytes) {
    FUZZ_CHECK(GetIndexFromTable(byte) == IndexOf(kStandard, static_cast<char>(byte)));
    FUZZ_CHECK(GetIndexFromBase64Table(byte) == IndexOf(alphabet, static_cast<char>(byte)));
  }
  IniBase64Table();
  return 0;
}
