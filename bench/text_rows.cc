// Text encodings, base64 and hexadecimal text.
#include <glib.h>
#include <iconv.h>
#include <modp_b16.h>
#include <modp_b64.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "bench/table.h"
#include "quillonid/carddata.h"
#include "quillonid/link.h"
#include "quillonid/support.h"
#include "simulator/card.h"

namespace bench {
namespace {

// Text or bytes that several ways write, each to a block of its own.
struct Output {
  std::vector<char> bytes;
  std::size_t size = 0;

  explicit Output(std::size_t room) : bytes(room) {}
  char* data() { return bytes.data(); }
  unsigned char* unsigned_data() { return reinterpret_cast<unsigned char*>(bytes.data()); }
  std::string Text() const { return std::string(bytes.data(), size); }
};

std::shared_ptr<Output> NewOutput(std::size_t room) { return std::make_shared<Output>(room); }

// What a caller of iconv does for each text: the descriptor is opened once.
class Converter {
 public:
  Converter(const char* to, const char* from) : descriptor_(iconv_open(to, from)) {}
  std::size_t operator()(const char* text, std::size_t size, char* out, std::size_t room) const {
    char* in = const_cast<char*>(text);
    char* const start = out;
    iconv(descriptor_, &in, &size, &out, &room);
    return static_cast<std::size_t>(out - start);
  }

 private:
  iconv_t descriptor_;
};

void AddTextBlock(Table& table, const char* id, const char* title, const char* card,
                  Limits limits) {
  const simulator::Bytes block = simulator::CardText(simulator::MakeCard(card));
  const int size = static_cast<int>(block.size());
  constexpr int kRoom = 1024;
  const auto ours = NewOutput(kRoom), icu = NewOutput(kRoom), libc = NewOutput(kRoom);
  const Converter convert("UTF-8", "UTF-16LE");
  table.NewRow(id, title, limits)
      .Add(
          Role::kLibrary, "UnicodeToUTF8",
          [=] { UnicodeToUTF8(block.data(), size, ours->data(), kRoom - 2); },
          [=] { return std::string(ours->data()); })
      .Add(
          Role::kPeer, "ICU",
          [=] {
            UErrorCode error = U_ZERO_ERROR;
            int32_t length = 0;
            u_strToUTF8(icu->data(), kRoom, &length, reinterpret_cast<const UChar*>(block.data()),
                        size / 2, &error);
            icu->size = static_cast<std::size_t>(length);
          },
          [=] { return icu->Text(); })
      .Add(
          Role::kShown, "iconv",
          [=] {
            libc->size = convert(reinterpret_cast<const char*>(block.data()), block.size(),
                                 libc->data(), kRoom);
          },
          [=] { return libc->Text(); });
}

// Every name of an ethnic group and of a country, in GBK.
std::vector<std::string> AllNames() {
  std::vector<std::string> names;
  const Converter convert("GBK", "UTF-8");
  const auto add = [&](const char* name) {
    char gbk[64];
    if (*name != '\0') names.emplace_back(gbk, convert(name, std::strlen(name), gbk, sizeof gbk));
  };
  for (int code = 1; code <= 98; ++code) {
    char name[64] = {};
    GetNation(code, name, sizeof name);
    add(name);
  }
  for (char code[] = "AAA"; code[0] <= 'Z'; ++code[0]) {
    for (code[1] = 'A'; code[1] <= 'Z'; ++code[1]) {
      for (code[2] = 'A'; code[2] <= 'Z'; ++code[2]) {
        char name[64] = {};
        GetCountry(code, name);
        add(name);
      }
    }
  }
  return names;
}

void AddNames(Table& table, const char* id, const std::string& title,
              const std::vector<std::string>& names, Limits limits) {
  constexpr std::size_t kRoom = 128;
  const auto ours = NewOutput(names.size() * kRoom), libc = NewOutput(names.size() * kRoom);
  const Converter convert("UTF-8", "GBK");
  const auto all = [=](const std::shared_ptr<Output>& output) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) text += output->data() + i * kRoom;
    return text;
  };
  table.NewRow(id, title, limits)
      .Add(
          Role::kLibrary, "GBKToUTF8",
          [=] {
            char* out = ours->data();
            for (const std::string& name : names) {
              GBKToUTF8(name.c_str(), out, kRoom - 2);
              out += kRoom;
            }
          },
          [=] { return all(ours); })
      .Add(
          Role::kPeer, "iconv",
          [=] {
            char* out = libc->data();
            for (const std::string& name : names) {
              out[convert(name.data(), name.size(), out, kRoom - 1)] = '\0';
              out += kRoom;
            }
          },
          [=] { return all(libc); });
}

simulator::Bytes SomeBytes(std::size_t size) {
  simulator::Bytes bytes(size);
  std::uint32_t state = 1;
  for (auto& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}

void AddBase64Encode(Table& table, const char* id, const char* title, std::size_t size) {
  const simulator::Bytes bytes = SomeBytes(size);
  const int length = static_cast<int>(size);
  const std::size_t room = 2 * size;
  const auto ours = NewOutput(room), ssl = NewOutput(room), modp = NewOutput(room);
  const auto glib = NewOutput(room);
  const auto put = [](const std::shared_ptr<Output>& output, auto written) {
    output->size = static_cast<std::size_t>(written);
  };
  table.NewRow(id, title, {0.60, 0.28})
      .Add(
          Role::kLibrary, "Base64_EncData",
          [=] {
            put(ours, Base64_EncData(bytes.data(), length, ours->data(), static_cast<int>(room)));
          },
          [=] { return ours->Text(); })
      .Add(
          Role::kPeer, "OpenSSL",
          [=] { put(ssl, EVP_EncodeBlock(ssl->unsigned_data(), bytes.data(), length)); },
          [=] { return ssl->Text(); })
      .Add(
          Role::kPeer, "stringencoders",
          [=] {
            put(modp,
                modp_b64_encode(modp->data(), reinterpret_cast<const char*>(bytes.data()), size));
          },
          [=] { return modp->Text(); })
      .Add(
          Role::kPeer, "GLib",
          [=] {
            gint state = 0, save = 0;
            gsize written =
                g_base64_encode_step(bytes.data(), size, FALSE, glib->data(), &state, &save);
            written += g_base64_encode_close(FALSE, glib->data() + written, &state, &save);
            glib->size = written;
          },
          [=] { return glib->Text(); });
}

void AddBase64Decode(Table& table, const char* id, const char* title, std::size_t size) {
  const simulator::Bytes bytes = SomeBytes(size);
  std::string text(2 * size, '\0');
  text.resize(static_cast<std::size_t>(Base64_EncData(bytes.data(), static_cast<int>(size),
                                                      text.data(), static_cast<int>(text.size()))));
  const int length = static_cast<int>(text.size());
  const std::size_t room = text.size() + 16;
  const auto ours = NewOutput(room), ssl = NewOutput(room), modp = NewOutput(room);
  const auto glib = NewOutput(room);
  const auto padding = static_cast<std::size_t>(std::count(text.begin(), text.end(), '='));
  table.NewRow(id, title, {0.95, 0.35})
      .Add(
          Role::kLibrary, "Base64_DecData",
          [=] {
            ours->size = static_cast<std::size_t>(
                Base64_DecData(text.data(), length, ours->unsigned_data(), static_cast<int>(room)));
          },
          [=] { return ours->Text(); })
      .Add(
          Role::kPeer, "OpenSSL",
          [=] {  // It counts the padding's zeros among the bytes.
            const int written = EVP_DecodeBlock(
                ssl->unsigned_data(), reinterpret_cast<const unsigned char*>(text.data()), length);
            ssl->size = static_cast<std::size_t>(written) - padding;
          },
          [=] { return ssl->Text(); })
      .Add(
          Role::kPeer, "stringencoders",
          [=] { modp->size = modp_b64_decode(modp->data(), text.data(), text.size()); },
          [=] { return modp->Text(); })
      .Add(
          Role::kPeer, "GLib",
          [=] {
            gint state = 0;
            guint save = 0;
            glib->size = g_base64_decode_step(text.data(), text.size(), glib->unsigned_data(),
                                              &state, &save);
          },
          [=] { return glib->Text(); });
}

void AddHex(Table& table) {
  constexpr std::size_t kSize = 1024;
  const simulator::Bytes bytes = SomeBytes(kSize);
  const auto ours = NewOutput(2 * kSize + 1), ssl = NewOutput(2 * kSize + 1);
  const auto modp = NewOutput(2 * kSize + 1);
  table.NewRow("hex", "hex of 1,024 bytes", {0.60, 0.22})
      .Add(
          Role::kLibrary, "Str_HexToAsc",
          [=] { Str_HexToAsc(bytes.data(), 2 * kSize, ours->data()); },
          [=] { return std::string(ours->data(), 2 * kSize); })
      .Add(
          Role::kPeer, "OpenSSL",
          [=] {
            OPENSSL_buf2hexstr_ex(ssl->data(), 2 * kSize + 1, &ssl->size, bytes.data(), kSize,
                                  '\0');
          },
          [=] { return std::string(ssl->data(), 2 * kSize); })
      .Add(
          Role::kPeer, "stringencoders",
          [=] {
            modp->size =
                modp_b16_encode(modp->data(), reinterpret_cast<const char*>(bytes.data()), kSize);
          },
          [=] { return modp->Text(); });
}

}  // namespace

void AddTextRows(Table& table) {
  AddTextBlock(table, "ucs2-resident", "UCS-2 to UTF-8, resident text block", "resident",
               {0.90, 0.65});
  AddTextBlock(table, "ucs2-foreigner", "UCS-2 to UTF-8, foreigner text block", "foreigner",
               {0.60, 0.35});
  const std::vector<std::string> names = AllNames();
  const auto longest = std::max_element(
      names.begin(), names.end(),
      [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
  AddNames(table, "gbk-longest", "GBK to UTF-8, longest name", {*longest}, {0.70, 0.40});
  AddNames(table, "gbk-all", "GBK to UTF-8, all " + std::to_string(names.size()) + " names", names,
           {0.60, 0.30});
  AddBase64Encode(table, "base64-encode-1024", "base64 encode, 1,024 bytes", 1024);
  AddBase64Encode(table, "base64-encode-38862", "base64 encode, 38,862 bytes", 38862);
  AddBase64Decode(table, "base64-decode-1024", "base64 decode, 1,024 bytes", 1024);
  AddBase64Decode(table, "base64-decode-38862", "base64 decode, 38,862 bytes", 38862);
  AddHex(table);
}

}  // namespace bench
