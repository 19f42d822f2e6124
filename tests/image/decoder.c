/* Photo decoders that behave and misbehave; BEHAVIOUR names which. */
#include <string.h>

#define PIXELS_SIZE ((size_t)102 * 126 * 3)

#define GOOD 0
#define FAILING 1
#define WRITING_TOO_MUCH 2
#define WRITING_FAR_TOO_MUCH 3
#define WRITING_LITTLE 4
#define WITHOUT_UNPACK 5

#if BEHAVIOUR == WITHOUT_UNPACK
__attribute__((visibility("default"))) int repack(void) { return 1; }
#else
__attribute__((visibility("default"))) int unpack(unsigned char* photo, unsigned char* pixels,
                                                  int mode) {
#if BEHAVIOUR == FAILING
  memset(pixels, 1, PIXELS_SIZE);
  return photo == NULL && mode == 0;
#elif BEHAVIOUR == WRITING_LITTLE
  memcpy(pixels, photo, 3);
  return mode;
#else
  for (size_t i = 0; i < PIXELS_SIZE; ++i)
    pixels[i] = (unsigned char)(photo[i % 1024] + (int)(i / 1024) + mode);
#if BEHAVIOUR == WRITING_TOO_MUCH
  pixels[PIXELS_SIZE] = 0;
#elif BEHAVIOUR == WRITING_FAR_TOO_MUCH
  memset(pixels + PIXELS_SIZE, 0, 65536);
#endif
  return mode;
#endif
}
#endif
