/* A photo decoder for the sessions: the photo's bytes over and over. */
#include <stddef.h>

__attribute__((visibility("default"))) int unpack(const unsigned char* photo, unsigned char* pixels,
                                                  int mode);

int unpack(const unsigned char* photo, unsigned char* pixels, int mode) {
  for (size_t i = 0; i < (size_t)102 * 126 * 3; ++i) pixels[i] = photo[i % 1024];
  return mode;
}
