/* An application with functions of its own that have names of the library's: the library must not
   take them for its own. Reads the card on argv[1], its photo to argv[2], and prints the result. */
#include <stdio.h>
#include <stdlib.h>

#include "quillonid/quillonid.h"

/* Never called: they are somebody else's. */
#define OWN(name) \
  int name(void); \
  int name(void) { abort(); }

OWN(test)
OWN(Check)
OWN(CopyFile)
OWN(ReadBlock)
OWN(WriteBlock)
OWN(SetAuxFd)
OWN(GeneralSleep)
OWN(GetTickCount)
OWN(GetTickCountStartTime)
OWN(ClearReceiveBuffer)
OWN(SearchCard)
OWN(SaveBmp)
OWN(isWriteLog)

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  PERSONINFO_COLLECT record = {0};
  printf("%d\n", APP_ID_ReadCollectIDCard(argv[1], "", 9600, 10, argv[2], &record));
  return 0;
}
