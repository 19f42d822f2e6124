/* A C99 program as an application would write it: reads one card and prints what it says. */
#include <stdio.h>
#include <string.h>

#include "quillonid/quillonid.h"

int main(int argc, char** argv) {
  PERSONINFO_COLLECT record;
  char photo[] = "";
  char message[128];
  int code;

  if (argc != 2) return 2;
  memset(&record, 0, sizeof record);
  code = APP_ID_ReadCollectIDCard(argv[1], "", 9600, 10, photo, &record);
  printf("%d|%s|%s|%s|%s\n", code, record.name, record.sex, record.nation, record.cardId);
  if (code != 0) printf("%s\n", APP_ID_IDGetErrCodeMessage(code, message));
  return code == 0 ? 0 : 1;
}
