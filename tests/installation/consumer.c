// Built against the installed headers and library: what an application's first lines look like.
#include <quillonid/quillonid.h>
#include <stdio.h>

int main(int argc, char **argv) {
  char message[QL_MESSAGE_SIZE];
  PERSONINFO_COLLECT record;
  const int result =
      APP_ID_ReadCollectIDCard(argc > 1 ? argv[1] : "", "", 115200, 1, NULL, &record);
  printf("%d %s\n", result, Linux_QL_ID_GetErrCodeMessage(result, message));
  return result == QL_DEVICE_ERROR ? 0 : 1;
}
