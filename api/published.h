// What an exported function returns for the result of its service.
#ifndef QUILLONID_API_PUBLISHED_H
#define QUILLONID_API_PUBLISHED_H

#include "quillonid/results.h"

inline int PublishedCode(int result) {
  int code = 0;
  TY_Id_ConvertErr(result, &code);
  return code;
}

#endif
