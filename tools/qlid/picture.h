// The photo: out of the library's BMP file, into a PNG file, onto the terminal.
#ifndef QUILLONID_TOOLS_QLID_PICTURE_H
#define QUILLONID_TOOLS_QLID_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace qlid {

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;  // 3 bytes a pixel, top row first
};

// Takes a 24-bit uncompressed BMP file apart.
bool ReadBmp(const std::vector<std::uint8_t>& file, Picture* picture);

std::vector<std::uint8_t> EncodePng(const Picture& picture);

// The picture as upper half blocks in true colour, `columns` wide; two rows of pixels in each line.
std::string HalfBlocks(const Picture& picture, int columns);

// Decodes the photo of a read reply through the library with the decoder "/" + `decoder` and gives
// the BMP file's bytes. Returns a published code.
int DecodePhoto(const std::vector<std::uint8_t>& native, bool fingerprints_asked,
                const std::string& decoder, std::vector<std::uint8_t>* bmp);

// Whether a file of this name is to be a PNG file, and whether it is to be a picture at all.
bool IsPngName(const std::string& path);
bool IsPictureName(const std::string& path);

}  // namespace qlid

#endif
