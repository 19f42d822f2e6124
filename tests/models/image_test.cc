// BMP files and names of image files.
#include "quillonid/image.h"

#include <strings.h>
#include <unistd.h>

#include <filesystem>

#include "tests/models/model.h"
#include "tests/testing/private_root.h"

namespace {

constexpr std::uint64_t kFiles = 20000;

void Put(std::string* bytes, unsigned value, int size) {
  for (; size > 0; --size, value /= 256) bytes->push_back(static_cast<char>(value % 256));
}

std::string ModelPixels(const std::string& pixels, int count) {
  std::string turned;
  turned.reserve(pixels.size());
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    turned.push_back(pixels[3 * i + 2]);
    turned.push_back(pixels[3 * i + 1]);
    turned.push_back(pixels[3 * i]);
  }
  return turned;
}

std::string ModelBmp(const std::string& pixels, int width, int height) {
  std::string file;
  Put(&file, 19778, 2);
  Put(&file, static_cast<unsigned>(height * 2 + 54 + width * height * 3), 4);
  Put(&file, 0, 4);
  Put(&file, 54, 4);
  Put(&file, 40, 4);
  Put(&file, static_cast<unsigned>(width), 4);
  Put(&file, static_cast<unsigned>(height), 4);
  Put(&file, 1, 2);
  Put(&file, 24, 2);
  file.append(24, '\0');
  const std::string turned = ModelPixels(pixels, width * height);
  file.reserve(file.size() + turned.size() + 2 * static_cast<std::size_t>(height));
  for (int n = 1; n <= width * height; ++n) {
    file.append(turned, 3 * static_cast<std::size_t>(n - 1), 3);
    if (n % width == 0) file += "\x96\x08";
  }
  return file;
}

// Folders that are there or not, patterns and file names.
std::string AnyPath(Random& random) {
  constexpr const char* kFolders[] = {"",     "/",     "/tmp",        "/tmp/",
                                      "none", "none/", "/proc/self/", "a/b/"};
  constexpr const char* kLast[] = {"",      "*.bmp", "*.JPG",  "*.png", "*.Gif", "*.bmp2",
                                   "x.bmp", "*",     "/*.gif", "*.jp",  "dir",   ".bmp"};
  std::string path = kFolders[random.Between(0, 7)];
  if (random.OneIn(8)) path += random.Text(random.Between(1, 200), "ab") + "/";
  return path + kLast[random.Between(0, 11)];
}

bool IsFolder(const std::string& path) {
  if (path.empty()) return false;
  return path.back() == '/' || path == "/tmp";
}

std::string ModelPath(const std::string& path, const std::string& suffix, const std::string& name) {
  if (IsFolder(path)) {
    std::string whole = path;
    if (path.back() != '/') whole += '/';
    return whole.append(name).append(suffix);
  }
  const std::size_t slash = path.rfind('/');
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  const std::string last = path.substr(start);
  for (const char* pattern : {"*.bmp", "*.jpg", "*.png", "*.gif"}) {
    if (strcasecmp(last.c_str(), pattern) == 0) {
      return path.substr(0, start).append(name).append(suffix).append(last, 1);
    }
  }
  return path;
}

constexpr std::uint64_t kPhotos = 10000;  // each loads a decoder
constexpr int kWidth = 102, kHeight = 126;

// A photo decoder in the root directory, under a name of its own.
void InstallDecoder(const std::string& behaviour, const std::string& name) {
  std::filesystem::copy_file(QL_DECODERS "decoder_" + behaviour + ".so", "/" + name,
                             std::filesystem::copy_options::overwrite_existing);
}

// What the good one of tests/image/decoder.c makes of a photo.
std::string DecodedPixels(const std::string& photo) {
  std::string pixels(std::size_t{3} * kWidth * kHeight, '\0');
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const std::size_t sum = static_cast<unsigned char>(photo[i % 1024]) + i / 1024 + 608;
    pixels[i] = static_cast<char>(static_cast<unsigned char>(sum % 256));
  }
  return pixels;
}

// A folder that is there, one that is not, and what was left by the photo before.
std::string PhotoPath(Random& random) {
  const std::string path = random.OneIn(8) ? "/none/photo" : WorkFolder() + "/photo";
  if (random.OneIn(2)) unlink(path.c_str());
  return path;
}

bool CanBeWritten(const std::string& path) { return path.rfind("/none/", 0) != 0; }

}  // namespace

TEST(ModelOfConvert2RGBData, IsEqual) {
  ForEachInput([](Random& random) {
    const int width = random.Between(-1, 12);
    const int height = random.Between(-1, 12);
    const int count = std::max(width * height, 0);
    if (width < 0 && height < 0) return true;
    const std::string pixels = random.Bytes(3 * count);
    Outputs<432> out(random);

    Convert2RGBData(BytesOf(pixels), width, height, out.library());
    std::memcpy(out.model(), ModelPixels(pixels, count).data(), pixels.size());

    return out.AreEqual();
  });
}

TEST(ModelOfSaveBmp, IsEqual) {
  const std::string path = WorkFolder() + "/picture";
  ForEachInput(
      [&path](Random& random) {
        const bool is_photo = random.OneIn(16);
        const int width = is_photo ? 102 : random.Between(1, 20);
        const int height = is_photo ? 126 : random.Between(1, 20);
        const std::string pixels = random.Bytes(3 * width * height);

        const int library = SaveBmp(path.c_str(), BytesOf(pixels), width, height);

        return Equal(1, library) && Equal(ModelBmp(pixels, width, height), ReadWholeFile(path));
      },
      kFiles);
}

TEST(ModelOfGetImgPathEx, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string path = AnyPath(random);
    const std::string suffix =
        random.OneIn(2) ? "-head.bmp" : random.Text(random.Between(0, 259), "xy.");
    const std::string name = random.Text(random.OneIn(16) ? 300 : random.Between(0, 20), "0189X./");
    const bool has_suffix = !random.OneIn(8);
    Outputs<1200> out;

    GetImgPathEx(path.c_str(), has_suffix ? suffix.c_str() : nullptr, name.c_str(),
                 out.library_text(), 1023);
    WriteText(ModelPath(path, has_suffix ? suffix : "", name), out.model_text());

    return out.AreEqual();
  });
}

TEST(ModelOfFuncSaveHeadImg, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string path = AnyPath(random);
    const std::string name = random.Text(random.Between(0, 30), "0189X");
    Outputs<QL_IMAGE_PATH_SIZE> written;
    WriteText(path, written.library_text());

    const int library = tFuncSaveHeadImg(name.c_str(), written.library_text());
    if (!path.empty()) {
      WriteText(ModelPath(path, "-head.bmp", name), written.model_text());
    }

    return Equal(0, library) && written.AreEqual();
  });
}

TEST(ModelOfGetPhotoBmp, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder("good", "good.so");
  InstallDecoder("failing", "failing.so");
  InstallDecoder("without_unpack", "without.so");
  constexpr const char* kNames[] = {"failing.so", "without.so", "missing.so", "", "tmp"};
  ForEachInput(
      [&kNames](Random& random) {
        const bool is_good = !random.OneIn(4);
        const std::string name = is_good ? "good.so" : kNames[random.Between(0, 4)];
        const std::string photo = random.Bytes(1024);
        const std::string path = PhotoPath(random);
        const std::string before = ReadWholeFile(path);
        const bool is_made = is_good && CanBeWritten(path);

        const int library = GetPhotoBmp(name.c_str(), BytesOf(photo), path.c_str());
        const std::string model =
            is_made ? ModelBmp(DecodedPixels(photo), kWidth, kHeight) : before;

        return Equal(is_made, library != 0) && Equal(model, ReadWholeFile(path));
      },
      kPhotos);
}

TEST(ModelOfSavePhotoImage, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  bool is_installed = false;
  ForEachInput(
      [&is_installed](Random& random) {
        if (random.OneIn(16)) {
          is_installed = !is_installed;
          if (is_installed) InstallDecoder("good", "libwlt.so");
          if (!is_installed) unlink("/libwlt.so");
        }
        std::string native = random.Bytes(4096);
        const int text = random.OneIn(2) ? 256 : random.Between(0, 3000);
        const int photo = random.OneIn(4) ? random.Between(1020, 1028) : 1024;
        for (const auto& [at, length] : {std::pair(10U, text), std::pair(12U, photo)}) {
          native[at] = static_cast<char>(length / 256);
          native[at + 1] = static_cast<char>(length % 256);
        }
        const int finger = random.Between(0, 3);
        const std::string path = PhotoPath(random);
        std::string model = ReadWholeFile(path);

        const int library = SavePhotoImage(finger, BytesOf(native), path.c_str());
        int result = -2008;
        if (photo == 1024) {
          result = -2000;
          if (is_installed && CanBeWritten(path)) {
            result = 0;
            const int at = text + (finger == 1 ? 16 : 14);
            const std::string block = native.substr(static_cast<std::size_t>(at), 1024);
            model = ModelBmp(DecodedPixels(block), kWidth, kHeight);
          }
        }

        return Equal(result, library) && Equal(model, ReadWholeFile(path));
      },
      kPhotos);
}
