// Native data with a photo, for tests of what becomes of it.
#ifndef QUILLONID_TESTS_IMAGE_PHOTO_DATA_H
#define QUILLONID_TESTS_IMAGE_PHOTO_DATA_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

// A photo block in which every place has its own neighbourhood.
inline Bytes TestPhoto() {
  Bytes photo(1024);
  for (std::size_t i = 0; i < photo.size(); ++i) {
    photo[i] = static_cast<unsigned char>(i * 7 + i / 256 + 3);
  }
  return photo;
}

// Native data in a buffer of 4,096 bytes: a head that states these lengths, `photo` at `photo_at`.
inline Bytes NativeData(int text_length, int photo_length, std::size_t photo_at,
                        const Bytes& photo = TestPhoto()) {
  Bytes native(4096);
  native[10] = static_cast<unsigned char>(text_length >> 8);
  native[11] = static_cast<unsigned char>(text_length);
  native[12] = static_cast<unsigned char>(photo_length >> 8);
  native[13] = static_cast<unsigned char>(photo_length);
  std::copy(photo.begin(), photo.end(), native.begin() + static_cast<std::ptrdiff_t>(photo_at));
  return native;
}

// Native data of an ordinary read without fingerprints: text of 256 bytes, photo behind it.
inline Bytes OrdinaryNativeData(const Bytes& photo = TestPhoto()) {
  return NativeData(256, 1024, 14 + 256, photo);
}

// Log lines: information and error of the photo and images, information of the card data.
inline std::string ApiLine(const std::string& text) { return "  TIME  INFO:    AppId:   " + text; }
inline std::string ApiErrorLine(const std::string& text) {
  return "  TIME  !!ERROR:     AppId:R:     " + text;
}
inline std::string CardLine(const std::string& text) { return "  TIME  INFO:    BusiId:  " + text; }

#endif
