/* Reads one card of any kind and prints its fields.
 *
 *   gcc -o read_card read_card.c $(pkg-config --cflags --libs quillonid)
 *   ./read_card HID              a USB reader
 *   ./read_card /dev/ttyUSB0     a serial reader
 */
#include <quillonid/quillonid.h>
#include <stdio.h>

int main(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: read_card DEVICE [PHOTO.bmp]\n");
    return 2;
  }
  char *photo = argc > 2 ? argv[2] : NULL;
  PERSONINFO_COLLECT_FP card;

  const int result = APP_ID_ReadCollectIDCard_FP(argv[1], "", 115200, 10, photo, &card);
  if (result != QL_SUCCESS && result != QL_PHOTO_DECODE_ERROR) {
    fprintf(stderr, "no card read: result %d\n", result);
    return 1;
  }
  printf("Name    %s\n", card.name);
  printf("Sex     %s\n", card.sex);
  printf("Born    %s\n", card.birthday);
  printf("Number  %s\n", card.cardId);
  printf("Valid   %s to %s\n", card.validStart, card.validEnd);
  if (photo) printf("Photo   %s\n", result == QL_SUCCESS ? photo : "not decoded");
  return 0;
}
