// String and BCD helpers.
#include <cctype>

#include "quillonid/link.h"
#include "tests/models/model.h"

namespace {

const std::string kHexDigits = "0123456789ABCDEFabcdef";

// Hexadecimal digits, now and then any character.
std::string NearlyHex(Random& random, int size) {
  return random.OneIn(4) ? random.Bytes(size) : random.Text(size, kHexDigits);
}

unsigned Nibble(unsigned code) {
  if (code >= 0x61) return code - 0x57;
  if (code > 0x40) return code - 0x37;
  if (code > 0x2F) return code - 0x30;
  return code & 0x0F;
}

void ModelAscToHex(const std::string& text, unsigned char* out) {
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const unsigned high = Nibble(BytesOf(text)[i]);
    const unsigned low = i + 1 < text.size() ? Nibble(BytesOf(text)[i + 1]) : 0;
    out[i / 2] = static_cast<unsigned char>((high << 4 | low) & 0xFF);
  }
}

int DigitOf(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Pairs of digits; a character that is none counts as all ones.
void ModelPairs(const std::string& text, unsigned char* out) {
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const auto high = static_cast<unsigned>(DigitOf(BytesOf(text)[i]));
    const auto low = static_cast<unsigned>(DigitOf(BytesOf(text)[i + 1]));
    out[i / 2] = static_cast<unsigned char>((high << 4 | low) & 0xFF);
  }
}

int ModelByteToBcd(int value, unsigned char* out) {
  if (value < 0 || value > 99) return -1;
  *out = static_cast<unsigned char>(value / 10 * 16 + value % 10);
  return 0;
}

int ModelIntTo4Bcd(int value, unsigned char* out, int* length) {
  if (value < 0 || value > 99999999) return -1;
  ModelByteToBcd(value / 1000000, out);
  ModelByteToBcd(value / 10000, out + 1);
  ModelByteToBcd(value / 100, out + 2);
  ModelByteToBcd(value % 100, out + 3);
  *length = 4;
  return 0;
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Records of a letter, three digits of length and a value, with slips.
std::string NearlyRecords(Random& random) {
  std::string text;
  for (int i = random.Between(0, 5); i > 0; --i) {
    const int length = random.OneIn(6) ? random.Between(0, 140) : random.Between(0, 9);
    const int kept = random.OneIn(8) ? random.Between(0, length) : length;
    text += random.Text(1, "ABab");
    const std::string digits = std::to_string(1000 + length);
    text += digits.substr(1);
    text += random.Text(kept, "ABC019 ");
    if (random.OneIn(4)) text += random.Text(random.Between(1, 3), " 01;");
  }
  return text;
}

const char* ModelFindTag(const std::string& tag, const char* text) {
  for (;;) {
    if (*text == '\0') return nullptr;
    if (std::strncmp(text, tag.c_str(), tag.size()) == 0) return text;
    if (!IsLetter(*text)) {
      ++text;
      continue;
    }
    if (std::strlen(text) < 4) return nullptr;
    const std::string digits(text + 1, 3);
    if (digits.find_first_not_of("0123456789") != std::string::npos) return nullptr;
    const std::size_t length = std::stoul(digits);
    if (length >= 129 || length > std::strlen(text) - 4) return nullptr;
    text += 4 + length;
  }
}

}  // namespace

TEST(ModelOfStrByteToBcd, IsEqual) {
  ForEachInput([](Random& random) {
    const int value = random.Between(-20, 120);
    Outputs<1> out(random);

    const int library = Str_ByteToBcd(value, out.library());

    return Equal(ModelByteToBcd(value, out.model()), library) && out.AreEqual();
  });
}

TEST(ModelOfStrIntTo4Bcd, IsEqual) {
  ForEachInput([](Random& random) {
    const int digits = random.Between(1, 9);
    int most = 1;
    for (int i = 0; i < digits; ++i) most *= 10;
    const int value = random.Between(-most / 8, most);
    Outputs<4> out(random);
    int library_length = -7;
    int model_length = -7;

    const int library = Str_IntTo4Bcd(value, out.library(), &library_length);
    const int model = ModelIntTo4Bcd(value, out.model(), &model_length);

    return Equal(model, library) && Equal(model_length, library_length) && out.AreEqual();
  });
}

TEST(ModelOfStrBcdtoUint64, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bcd = random.Bytes(random.Between(0, 9));
    std::uint64_t model = 0;
    for (const char c : bcd) {
      const auto byte = static_cast<unsigned char>(c);
      model = model * 10 + byte / 16;
      model = model * 10 + byte % 16;
    }

    return Equal(model, std::uint64_t{Str_BcdtoUint64(BytesOf(bcd), SizeOf(bcd))});
  });
}

TEST(ModelOfStrAscToHex, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = NearlyHex(random, random.Between(0, 100));
    Outputs<50> out(random);

    const int library = Str_AscToHex(text.data(), SizeOf(text), out.library());
    ModelAscToHex(text, out.model());

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrAsciiToBcd, IsEqual) {
  ForEachInput([](Random& random) {
    const int n = random.OneIn(64) ? random.Between(1, 2048) : random.Between(1, 20);
    const std::string text = NearlyHex(random, random.Between(1, 50));
    Outputs<2048> out(random);

    const int library = Str_AsciiToBcd(text.data(), SizeOf(text), out.library(), n);
    const auto wanted = std::size_t{2} * static_cast<unsigned>(n);
    std::string padded = text.substr(0, wanted);
    padded.insert(0, wanted - padded.size(), '0');
    ModelAscToHex(padded, out.model());

    return Equal(n, library) && out.AreEqual();
  });
}

TEST(ModelOfStrAsciiToCn, IsEqual) {
  ForEachInput([](Random& random) {
    const int n = random.OneIn(64) ? random.Between(1, 2048) : random.Between(1, 20);
    const std::string text = NearlyHex(random, random.Between(1, 50));
    Outputs<2048> out(random);

    const int library = Str_AsciiToCn(text.data(), SizeOf(text), out.library(), n);
    std::string padded = text;
    padded.resize(std::size_t{2} * static_cast<unsigned>(n), 'F');
    ModelAscToHex(padded, out.model());

    return Equal(n, library) && out.AreEqual();
  });
}

TEST(ModelOfStrHexToAsc, IsEqual) {
  ForEachInput([](Random& random) {
    const int count = random.Between(-2, 100);
    const std::string bytes = random.Bytes(50);
    Outputs<101> out(random);

    const int library = Str_HexToAsc(BytesOf(bytes), count, out.library_text());
    for (int i = 0; i < count; ++i) {
      const unsigned byte = BytesOf(bytes)[i / 2];
      out.model_text()[i] = "0123456789ABCDEF"[i % 2 == 0 ? byte >> 4 : byte & 0x0F];
    }
    out.model_text()[std::max(count, 0)] = '\0';

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrSplitHexToBCD, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(0, 50));
    Outputs<100> out(random);

    Str_SplitHexToBCD(BytesOf(bytes), SizeOf(bytes), out.library_text());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      char two[3];
      std::snprintf(two, sizeof two, "%02X", unsigned{BytesOf(bytes)[i]});
      std::memcpy(out.model() + 2 * i, two, 2);
    }

    return out.AreEqual();
  });
}

TEST(ModelOfStrMergeBcdToHex, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = random.Text(random.Between(0, 100), kHexDigits);
    Outputs<50> out(random);

    const int library = Str_MergeBcdToHex(text.data(), SizeOf(text), out.library());
    const bool even = text.size() % 2 == 0;
    if (even) ModelPairs(text, out.model());

    return Equal(even ? SizeOf(text) / 2 : 0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrLocalSplitHex2Asc, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char byte = random.Byte();
    Outputs<2> out(random);

    const int library = Str_localSplitHex2Asc(byte, out.library(), out.library() + 1);
    out.model()[0] = static_cast<unsigned char>(0x30 + byte / 16);
    out.model()[1] = static_cast<unsigned char>(0x30 + byte % 16);

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrLocalMergeAsc2Hex, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char high = random.Byte();
    const unsigned char low = random.Byte();
    Outputs<1> out(random);

    const int library = Str_localMergeAsc2Hex(out.library(), high, low);
    *out.model() = static_cast<unsigned char>(((high & 0x0F) * 16 + (low - 0x30)) & 0xFF);

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrLocalHexCharToNum, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char c = random.Byte();

    return Equal(DigitOf(c), Str_localHexCharToNum(static_cast<char>(c)));
  });
}

TEST(ModelOfStrLocalSplitHexToBCD, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(1, 50));
    Outputs<101> out(random);

    const int library = Str_localSplitHexToBCD(BytesOf(bytes), SizeOf(bytes), out.library_text());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const unsigned byte = BytesOf(bytes)[i];
      std::snprintf(out.model_text() + 2 * i, 3, "%1x%1x", byte >> 4, byte & 0x0F);
    }

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrLocalMergeBcdToHex, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = NearlyHex(random, 2 * random.Between(1, 50));
    Outputs<50> out(random);

    const int library = Str_localMergeBcdToHex(text.data(), SizeOf(text), out.library());
    ModelPairs(text, out.model());

    return Equal(SizeOf(text) / 2, library) && out.AreEqual();
  });
}

TEST(ModelOfStrLocalXor, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string a = random.Bytes(8);
    const std::string b = random.Bytes(8);
    Outputs<8> out(random);

    Str_localXor(BytesOf(a), BytesOf(b), out.library());
    for (std::size_t i = 0; i < 8; ++i) {
      out.model()[i] = static_cast<unsigned char>(BytesOf(a)[i] ^ BytesOf(b)[i]);
    }

    return out.AreEqual();
  });
}

TEST(ModelOfStrLocalFindMsgSign, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(0, 300));
    const unsigned char byte = random.Byte();
    std::ptrdiff_t model = 0;
    while (model < SizeOf(bytes) && BytesOf(bytes)[model] != byte) ++model;
    if (model == SizeOf(bytes)) model = -1;

    const unsigned char* found = Str_localFindMsgSign(BytesOf(bytes), SizeOf(bytes), byte);

    return Equal(model, found == nullptr ? std::ptrdiff_t{-1} : found - BytesOf(bytes));
  });
}

TEST(ModelOfStrChar4ToInt, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(4);
    unsigned library = 0;
    std::uint64_t model = 0;
    for (const char c : bytes) model = model * 256 + static_cast<unsigned char>(c);

    Str_Char4ToInt(&library, BytesOf(bytes));

    return Equal(model, std::uint64_t{library});
  });
}

TEST(ModelOfStrDesNumtoHex, IsEqual) {
  ForEachInput([](Random& random) {
    const auto value = static_cast<unsigned>(random.Word() >> 32);
    const int n = random.Between(0, 4);
    Outputs<4> out(random);

    const int library = Str_DesNumtoHex(value, out.library(), n);
    unsigned left = value;
    for (int i = n; i > 0; --i, left /= 256) {
      out.model()[i - 1] = static_cast<unsigned char>(left % 256);
    }

    return Equal(0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrGetDataDeleteChar, IsEqual) {
  ForEachInput([](Random& random) {
    std::string bytes = random.Bytes(random.Between(0, 20));
    const unsigned char byte = random.Byte();
    bytes.append(static_cast<std::size_t>(random.Between(0, 20)), static_cast<char>(byte));
    int model = SizeOf(bytes);
    while (model > 0 && BytesOf(bytes)[model - 1] == byte) --model;

    return Equal(model, Str_GetDataDeleteChar(BytesOf(bytes), SizeOf(bytes), byte));
  });
}

TEST(ModelOfStrStrsTrim, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = random.Text(random.Between(0, 60), "ab \r\t\n\v\x80\xC4");
    std::string model;
    for (const char c : text) {
      if (c != ' ' && c != '\r' && c != '\t' && c != '\n') model.push_back(c);
    }
    Outputs<61> out(random);
    std::memcpy(out.library(), text.c_str(), text.size() + 1);

    const char* trimmed = Str_strsTrim(out.library_text());

    return Equal(out.library_text(), const_cast<char*>(trimmed)) &&
           Equal(model, std::string(trimmed));
  });
}

TEST(ModelOfStrGetSplitData, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = random.Text(random.Between(0, 60), "ab,;");
    const std::string separator = random.Text(random.Between(1, 3), "ab,;");
    Outputs<64> out;
    const std::size_t found = text.find(separator);
    if (found != std::string::npos) std::memcpy(out.model(), text.data(), found);

    const int library = Str_GetSplitData(text.c_str(), separator.c_str(), out.library_text());

    return Equal(found == std::string::npos ? -2 : 0, library) && out.AreEqual();
  });
}

TEST(ModelOfStrFindTagApp, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = NearlyRecords(random);
    const std::string tag = random.Text(random.OneIn(4) ? 2 : 1, "ABab0");

    const char* library = Str_FindTagApp(tag.c_str(), SizeOf(tag), text.c_str());

    return Equal(ModelFindTag(tag, text.c_str()), library);
  });
}

TEST(ModelOfStrGetTagValueApp, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = NearlyRecords(random);
    const std::string tag = random.Text(1, "ABab");
    const char* record = ModelFindTag(tag, text.c_str());
    Outputs<1024> out(random);
    int library_length = -7;
    int model_length = -7;
    int model = -1;
    if (record != nullptr && std::strlen(record) >= 4) {
      const std::string digits(record + 1, 3);
      if (digits.find_first_not_of("0123456789") != std::string::npos) return true;
      model_length = std::stoi(digits);
      if (model_length > static_cast<int>(std::strlen(record + 4))) return true;
      std::memcpy(out.model(), record + 4, static_cast<std::size_t>(model_length));
      model = 0;
    }

    const int library = Str_GetTagValueApp(tag.c_str(), SizeOf(tag), text.c_str(), 0,
                                           out.library_text(), &library_length);

    if (model == 0 && !Equal(model_length, library_length)) return false;
    return Equal(model, library) && out.AreEqual();
  });
}
