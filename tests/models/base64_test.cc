// Base64 of blocks and of files, and the file helpers.
#include <sys/stat.h>

#include <filesystem>

#include "quillonid/support.h"
#include "tests/models/model.h"
#include "tests/testing/private_root.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint64_t kFiles = 20000;

int ModelIndex(unsigned char c) {
  if (c == '=') return 0;
  for (int i = 0; i < 64; ++i) {
    if (kAlphabet[i] == static_cast<char>(c)) return i;
  }
  return -1;
}

int ModelEncode(const unsigned char* in, int size, char* out, int out_size) {
  if (out_size < (size + 2) / 3 * 4) return -1;
  int written = 0;
  for (int i = 0; i < size; i += 3) {
    const unsigned first = in[i];
    const unsigned second = i + 1 < size ? in[i + 1] : 0;
    const unsigned third = i + 2 < size ? in[i + 2] : 0;
    out[written++] = kAlphabet[first >> 2];
    out[written++] = kAlphabet[(first & 3) << 4 | second >> 4];
    out[written++] = i + 1 < size ? kAlphabet[(second & 15) << 2 | third >> 6] : '=';
    out[written++] = i + 2 < size ? kAlphabet[third & 63] : '=';
  }
  return written;
}

int ModelDecode(const char* in, int size, unsigned char* out, int out_size) {
  if (size < 4) return 0;
  int written = 0;
  for (int at = 0; size - at > 3; at += 4) {
    for (int j = 0; j < 3; ++j) {
      const char left = in[at + j];
      const char right = in[at + j + 1];
      if (left == '=' || right == '=') return written;
      if (written > out_size) return -1;
      // Minus one has all its bits set, whatever it is shifted by.
      const auto high = static_cast<unsigned>(ModelIndex(static_cast<unsigned char>(left)));
      const int low = ModelIndex(static_cast<unsigned char>(right));
      const unsigned shifted = low < 0 ? 0xFF : static_cast<unsigned>(low) >> (4 - 2 * j);
      out[written++] = static_cast<unsigned char>((high << (2 + 2 * j) | shifted) & 0xFF);
    }
  }
  return written;
}

std::string NearlyBase64(Random& random) {
  std::string text = random.Text(random.Between(0, 120), kAlphabet);
  if (random.OneIn(4) && !text.empty()) {
    text[static_cast<std::size_t>(random.Between(0, SizeOf(text) - 1))] =
        static_cast<char>(random.Byte());
  }
  if (random.OneIn(2)) text += random.OneIn(2) ? "=" : "==";
  return text;
}

// A file that now and then gets another content.
class ChangingFile {
 public:
  const std::string& Path() const { return path_; }
  const std::string& Content(Random& random) {
    if (content_.empty() || random.OneIn(8)) {
      content_ =
          random.Bytes(random.OneIn(8) ? random.Between(1000, 5000) : random.Between(1, 300));
      WriteWholeFile(path_, content_);
    }
    return content_;
  }

 private:
  std::string path_ = WorkFolder() + "/file";
  std::string content_;
};

}  // namespace

TEST(ModelOfBase64EncData, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(0, 100));
    const int room = random.OneIn(2) ? 200 : random.Between(0, 140);
    Outputs<200> out(random);

    const auto encode = random.OneIn(2) ? Base64_EncData : EncryptBase64;
    const int library = encode(BytesOf(bytes), SizeOf(bytes), out.library_text(), room);
    const int model = ModelEncode(BytesOf(bytes), SizeOf(bytes), out.model_text(), room);

    return Equal(model, library) && out.AreEqual();
  });
}

TEST(ModelOfBase64DecData, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = NearlyBase64(random);
    const int room = random.OneIn(2) ? 100 : random.Between(0, 100);
    Outputs<101> out(random);

    const auto decode = random.OneIn(2) ? Base64_DecData : DecryptBase64;
    const int library = decode(text.data(), SizeOf(text), out.library(), room);
    const int model = ModelDecode(text.data(), SizeOf(text), out.model(), room);

    return Equal(model, library) && out.AreEqual();
  });
}

TEST(ModelOfGetIndexFromTable, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char c = random.Byte();

    return Equal(ModelIndex(c), GetIndexFromTable(c)) &&
           Equal(ModelIndex(c), GetIndexFromBase64Table(c));
  });
}

TEST(ModelOfReadFileData, IsEqual) {
  ChangingFile file;
  ForEachInput(
      [&file](Random& random) {
        const std::string& content = file.Content(random);
        const bool asks = random.OneIn(4);
        const int room = random.OneIn(2) ? 5000 : random.Between(-1, 5000);
        Outputs<5000> out(random);
        int length = room;

        const int library =
            ReadFileData(file.Path().c_str(), asks ? nullptr : out.library(), &length);
        int model = -2;
        int model_length = SizeOf(content);
        if (!asks && room >= SizeOf(content)) {
          model = 0;
          model_length = room;
          std::memcpy(out.model(), content.data(), content.size());
        }

        return Equal(model, library) && Equal(model_length, length) && out.AreEqual() &&
               Equal(static_cast<long>(content.size()), get_file_size(file.Path().c_str()));
      },
      kFiles);
}

TEST(ModelOfWriteFileData, IsEqual) {
  const std::string path = WorkFolder() + "/written";
  ForEachInput(
      [&path](Random& random) {
        const std::string bytes = random.Bytes(random.Between(0, 3000));

        const int library = WriteFileData(path.c_str(), bytes.data(), SizeOf(bytes));

        return Equal(1, library) && Equal(bytes, ReadWholeFile(path));
      },
      kFiles);
}

TEST(ModelOfCopyFile, IsEqual) {
  ChangingFile file;
  const std::string target = WorkFolder() + "/copy";
  ForEachInput(
      [&](Random& random) {
        const std::string& content = file.Content(random);
        const bool is_there = random.OneIn(2);
        if (is_there) {
          WriteWholeFile(target, "old");
        } else {
          std::filesystem::remove(target);
        }
        const int overwrite = random.Between(0, 2);
        const bool stays = is_there && overwrite == 0;

        const int library = CopyFile(file.Path().c_str(), target.c_str(), overwrite);

        return Equal(stays ? 0 : 1, library) &&
               Equal(stays ? std::string("old") : content, ReadWholeFile(target));
      },
      kFiles);
}

TEST(ModelOfGetBase64DataEx, IsEqual) {
  ChangingFile file;
  ForEachInput(
      [&file](Random& random) {
        const std::string& content = file.Content(random);
        Outputs<7000> out(random);

        const int library = GetBase64DataEx(file.Path().c_str(), out.library_text());
        const int size = ModelEncode(BytesOf(content), SizeOf(content), out.model_text(), 7000);
        out.model()[size] = 0;

        return Equal(0, library) && out.AreEqual();
      },
      kFiles);
}

TEST(ModelOfGetBase64FromFile, IsEqual) {
  ChangingFile file;
  ForEachInput(
      [&file](Random& random) {
        const int needed = (SizeOf(file.Content(random)) + 2) / 3 * 4;
        const bool asks = random.OneIn(4);
        const int room = random.OneIn(2) ? 7000 : random.Between(-1, 7000);
        Outputs<7000> out(random);
        int length = room;

        const int library =
            GetBase64FromFile(file.Path().c_str(), asks ? nullptr : out.library_text(), &length);
        const bool fits = !asks && room >= needed;
        if (fits) std::memset(out.model(), 0, static_cast<std::size_t>(room));

        return Equal(fits ? 0 : -2, library) && Equal(needed, length) && out.AreEqual();
      },
      kFiles);
}
