// Text encodings.
#include <iterator>

#include "quillonid/carddata.h"
#include "tests/models/model.h"
#include "tests/models/text_model.h"

namespace {

// UCS-2 units of which many are ASCII, some Han, some anything.
unsigned AnyUnit(Random& random) {
  if (random.OneIn(3)) return static_cast<unsigned>(random.Between(0x20, 0x7F));
  if (random.OneIn(3)) return static_cast<unsigned>(random.Between(0x80, 0x7FF));
  if (random.OneIn(3)) return static_cast<unsigned>(random.Between(0, 0xFFFF));
  return static_cast<unsigned>(random.Between(0x4E00, 0x9FA5));
}

std::string AnyUcs2(Random& random, int units) {
  std::string bytes;
  for (int i = 0; i < units; ++i) {
    const unsigned unit = AnyUnit(random);
    bytes.push_back(static_cast<char>(unit % 256));
    bytes.push_back(static_cast<char>(unit / 256));
  }
  return bytes;
}

// Whole characters of GBK, with bytes and pairs that are none.
std::string AnyGbk(Random& random, int characters) {
  std::string text;
  for (int i = 0; i < characters; ++i) {
    if (random.OneIn(3)) {
      text.push_back(static_cast<char>(random.Between(1, 0x80)));
      continue;
    }
    if (random.OneIn(16)) {
      text.push_back('\xFF');
      continue;
    }
    text.push_back(static_cast<char>(random.Between(0x81, 0xFE)));
    text.push_back(static_cast<char>(random.Between(0x40, 0xFF)));
  }
  return text;
}

}  // namespace

TEST(ModelOfUnicodeToUTF8, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string source = AnyUcs2(random, random.Between(0, 128));
    const int size = random.OneIn(16) ? 0 : SizeOf(source);
    const int room = random.OneIn(2) ? 400 : random.Between(-1, 400);
    Outputs<402> out(random);

    const int library = UnicodeToUTF8(BytesOf(source), size, out.library_text(), room);
    const int utf8 = model::UnicodeToUtf8(BytesOf(source), size, out.model_text(), room);

    return Equal(utf8, library) && out.AreEqual();
  });
}

TEST(ModelOfGbkToUcs2, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string source = AnyGbk(random, random.Between(0, 100));
    const int max = random.OneIn(2) ? 255 : random.Between(0, 100);
    Outputs<512> out(random);

    const int library =
        GbkToUcs2(reinterpret_cast<std::uint16_t*>(out.library()), source.c_str(), max);
    const int ucs2 =
        model::GbkToUcs2(reinterpret_cast<std::uint16_t*>(out.model()), BytesOf(source), max);

    return Equal(ucs2, library) && out.AreEqual();
  });
}

TEST(ModelOfGbkToUcs2, CountsEqually) {
  ForEachInput([](Random& random) {
    std::string source = AnyGbk(random, random.Between(0, 100));
    if (!source.empty() && source.back() == '\xFF') source.push_back('x');
    source.push_back('x');
    source.push_back('\0');  // behind a lead byte of the count that is none of the conversion

    return Equal(model::GbkToUcs2(nullptr, BytesOf(source), 255),
                 GbkToUcs2(nullptr, source.c_str(), 255));
  });
}

TEST(ModelOfUcs2ToGbk, IsEqual) {
  ForEachInput([](Random& random) {
    std::uint16_t source[101] = {};
    const int units = random.Between(0, 100);
    for (int i = 0; i < units; ++i) source[i] = static_cast<std::uint16_t>(AnyUnit(random));
    const int room = random.OneIn(2) ? 204 : random.Between(1, 204);
    Outputs<204> out(random);

    const int library = Ucs2ToGbk(out.library_text(), source, room);
    const int gbk = model::Ucs2ToGbk(out.model_text(), source, room);

    return Equal(gbk, library) && out.AreEqual() &&
           Equal(model::Ucs2ToGbk(nullptr, source, 0), Ucs2ToGbk(nullptr, source, 0));
  });
}

TEST(ModelOfUcs2Len, IsEqual) {
  ForEachInput([](Random& random) {
    std::uint16_t source[101] = {};
    const int units = random.Between(0, 100);
    for (int i = 0; i < units; ++i) source[i] = static_cast<std::uint16_t>(AnyUnit(random));
    int model = 0;
    while (source[model] != 0) ++model;

    return Equal(model, Ucs2Len(source));
  });
}

TEST(ModelOfGBKToUTF8, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string source = AnyGbk(random, random.Between(0, 100));
    const int room = random.OneIn(2) ? 400 : random.Between(-1, 400);
    Outputs<402> out(random);

    GBKToUTF8(source.c_str(), out.library_text(), room);
    model::GbkToUtf8(source.c_str(), out.model_text(), room);

    return out.AreEqual();
  });
}

TEST(ModelOfGetNation, IsEqual) {
  ForEachInput([](Random& random) {
    const int code = random.OneIn(8) ? static_cast<int>(random.Word()) : random.Between(-1, 100);
    Outputs<50> out(random);

    GetNation(code, out.library_text(), 50);
    model::Nation(code, out.model_text());

    return out.AreEqual();
  });
}

TEST(ModelOfGetCountry, IsEqual) {
  const std::string letters = "ABCEHKNORSTU";
  ForEachInput([&letters](Random& random) {
    const std::string code = random.Text(random.Between(0, 5), letters);
    Outputs<50> out;

    GetCountry(code.c_str(), out.library_text());
    model::Country(code.c_str(), out.model_text());

    return out.AreEqual();
  });
}
