/* A photo decoder that paints everything grey, and refuses a block that begins with EE. */
#include <string.h>

int unpack(const unsigned char* photo, unsigned char* pixels, int mode);

int unpack(const unsigned char* photo, unsigned char* pixels, int mode) {
  if (mode != 608 || photo[0] == 0xEE) return 0;
  memset(pixels, 0x80, (size_t)102 * 126 * 3);
  return 1;
}
