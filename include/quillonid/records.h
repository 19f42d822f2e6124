/* SPDX-License-Identifier: MIT */
/** @file
 *  Person records: fixed-layout results of a read.
 *
 *  Fields are UTF-8 text, zero-terminated within their width, except `personType`. A field that a
 *  card kind does not carry is empty. Trailing blanks of the card's text stay. A text longer than
 *  its field is cut at the field's width less one byte, which may fall inside a character. The
 *  `_FP` records add two fingerprint templates: up to 1,024 upper-case hexadecimal characters each,
 *  empty when the card carries none. The caller owns the records; reads clear them first,
 *  parsers and conversions take them zero-filled. */
#ifndef QUILLONID_RECORDS_H
#define QUILLONID_RECORDS_H

#include <stdint.h>

#include "quillonid/export.h"

QL_BEGIN_DECLS

/** Resident identity card. */
typedef struct PERSONINFO_CHA {
  char name[80];       /**< name */
  char sex[10];        /**< sex as text, "男" or "女" */
  char nation[50];     /**< ethnic group */
  char birthday[30];   /**< date of birth, YYYYMMDD */
  char address[180];   /**< address */
  char cardId[50];     /**< identity number, 18 characters (GB 11643) */
  char police[80];     /**< issuing authority */
  char validStart[30]; /**< start of validity, YYYYMMDD */
  char validEnd[30];   /**< end of validity, as on the card */
  char sexCode[10];    /**< sex code digit */
  char nationCode[10]; /**< ethnic-group code, two digits (GB/T 3304) */
  char reserved[180];  /**< rest of the card text */
} PERSONINFO_CHA;

/** Resident identity card, with fingerprint templates. */
typedef struct PERSONINFO_CHA_FP {
  char name[80];          /**< name */
  char sex[10];           /**< sex as text, "男" or "女" */
  char nation[50];        /**< ethnic group */
  char birthday[30];      /**< date of birth, YYYYMMDD */
  char address[180];      /**< address */
  char cardId[50];        /**< identity number, 18 characters (GB 11643) */
  char police[80];        /**< issuing authority */
  char validStart[30];    /**< start of validity, YYYYMMDD */
  char validEnd[30];      /**< end of validity, as on the card */
  char sexCode[10];       /**< sex code digit */
  char nationCode[10];    /**< ethnic-group code, two digits (GB/T 3304) */
  char reserved[180];     /**< rest of the card text */
  char fingerData1[1025]; /**< first template, hexadecimal */
  char fingerData2[1025]; /**< second template, hexadecimal */
} PERSONINFO_CHA_FP;

/** Foreigner's permanent residence card; `address`, `police` and `reserved` stay empty. */
typedef struct PERSONINFO_FOR {
  char name[80];       /**< Chinese name */
  char EngName[120];   /**< English name */
  char version[10];    /**< card version */
  char govCode[10];    /**< code of the issuing authority */
  char cardType[10];   /**< card-kind mark */
  char otherData[10];  /**< reserved card bytes */
  char sex[10];        /**< sex as text */
  char nation[50];     /**< country or ethnic group */
  char birthday[30];   /**< date of birth, YYYYMMDD */
  char address[180];   /**< address */
  char cardId[50];     /**< identity or permanent-residence number */
  char police[80];     /**< issuing authority */
  char validStart[30]; /**< start of validity, YYYYMMDD */
  char validEnd[30];   /**< end of validity */
  char sexCode[10];    /**< sex code digit */
  char nationCode[10]; /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];  /**< rest of the card text */
} PERSONINFO_FOR;

/** Foreigner's permanent residence card; `address`, `police` and `reserved` stay empty, with
 * fingerprint templates. */
typedef struct PERSONINFO_FOR_FP {
  char name[80];          /**< Chinese name */
  char EngName[120];      /**< English name */
  char version[10];       /**< card version */
  char govCode[10];       /**< code of the issuing authority */
  char cardType[10];      /**< card-kind mark */
  char otherData[10];     /**< reserved card bytes */
  char sex[10];           /**< sex as text */
  char nation[50];        /**< country or ethnic group */
  char birthday[30];      /**< date of birth, YYYYMMDD */
  char address[180];      /**< address */
  char cardId[50];        /**< identity or permanent-residence number */
  char police[80];        /**< issuing authority */
  char validStart[30];    /**< start of validity, YYYYMMDD */
  char validEnd[30];      /**< end of validity */
  char sexCode[10];       /**< sex code digit */
  char nationCode[10];    /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];     /**< rest of the card text */
  char fingerData1[1025]; /**< first template, hexadecimal */
  char fingerData2[1025]; /**< second template, hexadecimal */
} PERSONINFO_FOR_FP;

/** Residence permit for Hong Kong, Macau and Taiwan residents. */
typedef struct PERSONINFO_GAT {
  char name[80];         /**< name */
  char sexCode[10];      /**< sex code digit */
  char sex[10];          /**< sex as text */
  char gatReserved1[10]; /**< reserved card bytes */
  char birthday[30];     /**< date of birth, YYYYMMDD */
  char address[180];     /**< address */
  char cardId[50];       /**< identity number, 18 characters (GB 11643) */
  char police[80];       /**< issuing authority */
  char validStart[30];   /**< start of validity, YYYYMMDD */
  char validEnd[30];     /**< end of validity, YYYYMMDD */
  char passNumber[40];   /**< travel permit number */
  char signTimes[10];    /**< number of issues */
  char gatReserved2[10]; /**< reserved card bytes */
  char cardType[8];      /**< card-kind mark, "J" */
  char gatReserved3[10]; /**< reserved card bytes */
} PERSONINFO_GAT;

/** Residence permit for Hong Kong, Macau and Taiwan residents, with fingerprint templates. */
typedef struct PERSONINFO_GAT_FP {
  char name[80];          /**< name */
  char sexCode[10];       /**< sex code digit */
  char sex[10];           /**< sex as text */
  char gatReserved1[10];  /**< reserved card bytes */
  char birthday[30];      /**< date of birth, YYYYMMDD */
  char address[180];      /**< address */
  char cardId[50];        /**< identity number, 18 characters (GB 11643) */
  char police[80];        /**< issuing authority */
  char validStart[30];    /**< start of validity, YYYYMMDD */
  char validEnd[30];      /**< end of validity, YYYYMMDD */
  char passNumber[40];    /**< travel permit number */
  char signTimes[10];     /**< number of issues */
  char gatReserved2[10];  /**< reserved card bytes */
  char cardType[8];       /**< card-kind mark, "J" */
  char gatReserved3[10];  /**< reserved card bytes */
  char fingerData1[1025]; /**< first template, hexadecimal */
  char fingerData2[1025]; /**< second template, hexadecimal */
} PERSONINFO_GAT_FP;

/** Resident or foreigner's card. */
typedef struct PERSONINFO {
  char name[80];       /**< Chinese name */
  char EngName[120];   /**< English name */
  char version[10];    /**< card version */
  char govCode[10];    /**< code of the issuing authority */
  char cardType[10];   /**< card-kind mark */
  char otherData[10];  /**< reserved card bytes */
  char sex[10];        /**< sex as text */
  char nation[50];     /**< country or ethnic group */
  char birthday[30];   /**< date of birth, YYYYMMDD */
  char address[180];   /**< address */
  char cardId[50];     /**< identity or permanent-residence number */
  char police[80];     /**< issuing authority */
  char validStart[30]; /**< start of validity, YYYYMMDD */
  char validEnd[30];   /**< end of validity */
  char sexCode[10];    /**< sex code digit */
  char nationCode[10]; /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];  /**< rest of the card text */
  int32_t personType;  /**< 0 resident identity card, 1 foreigner's card */
} PERSONINFO;

/** Resident or foreigner's card, with fingerprint templates. */
typedef struct PERSONINFO_FP {
  char name[80];          /**< Chinese name */
  char EngName[120];      /**< English name */
  char version[10];       /**< card version */
  char govCode[10];       /**< code of the issuing authority */
  char cardType[10];      /**< card-kind mark */
  char otherData[10];     /**< reserved card bytes */
  char sex[10];           /**< sex as text */
  char nation[50];        /**< country or ethnic group */
  char birthday[30];      /**< date of birth, YYYYMMDD */
  char address[180];      /**< address */
  char cardId[50];        /**< identity or permanent-residence number */
  char police[80];        /**< issuing authority */
  char validStart[30];    /**< start of validity, YYYYMMDD */
  char validEnd[30];      /**< end of validity */
  char sexCode[10];       /**< sex code digit */
  char nationCode[10];    /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];     /**< rest of the card text */
  int32_t personType;     /**< 0 resident identity card, 1 foreigner's card */
  char fingerData1[1025]; /**< first template, hexadecimal */
  char fingerData2[1025]; /**< second template, hexadecimal */
} PERSONINFO_FP;

/** Any kind of card; the first byte of `cardType` tells which: ' ' resident, 'I' foreigner, 'J'
 * Hong Kong, Macau and Taiwan. */
typedef struct PERSONINFO_COLLECT {
  char name[80];         /**< Chinese name */
  char EngName[120];     /**< English name */
  char version[10];      /**< card version */
  char govCode[10];      /**< code of the issuing authority */
  char cardType[10];     /**< card-kind mark */
  char otherData[10];    /**< reserved card bytes */
  char sex[10];          /**< sex as text */
  char nation[50];       /**< country or ethnic group */
  char birthday[30];     /**< date of birth, YYYYMMDD */
  char address[180];     /**< address */
  char cardId[50];       /**< identity or permanent-residence number */
  char police[80];       /**< issuing authority */
  char validStart[30];   /**< start of validity, YYYYMMDD */
  char validEnd[30];     /**< end of validity */
  char sexCode[10];      /**< sex code digit */
  char nationCode[10];   /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];    /**< rest of the card text */
  char passNumber[40];   /**< travel permit number */
  char signTimes[10];    /**< number of issues */
  char gatReserved1[10]; /**< reserved card bytes */
  char gatReserved2[10]; /**< reserved card bytes */
  char gatReserved3[10]; /**< reserved card bytes */
} PERSONINFO_COLLECT;

/** Any kind of card; the first byte of `cardType` tells which: ' ' resident, 'I' foreigner, 'J'
 * Hong Kong, Macau and Taiwan, with fingerprint templates. */
typedef struct PERSONINFO_COLLECT_FP {
  char name[80];          /**< Chinese name */
  char EngName[120];      /**< English name */
  char version[10];       /**< card version */
  char govCode[10];       /**< code of the issuing authority */
  char cardType[10];      /**< card-kind mark */
  char otherData[10];     /**< reserved card bytes */
  char sex[10];           /**< sex as text */
  char nation[50];        /**< country or ethnic group */
  char birthday[30];      /**< date of birth, YYYYMMDD */
  char address[180];      /**< address */
  char cardId[50];        /**< identity or permanent-residence number */
  char police[80];        /**< issuing authority */
  char validStart[30];    /**< start of validity, YYYYMMDD */
  char validEnd[30];      /**< end of validity */
  char sexCode[10];       /**< sex code digit */
  char nationCode[10];    /**< country code (ISO 3166-1 alpha-3) or ethnic-group code */
  char reserved[180];     /**< rest of the card text */
  char passNumber[40];    /**< travel permit number */
  char signTimes[10];     /**< number of issues */
  char gatReserved1[10];  /**< reserved card bytes */
  char gatReserved2[10];  /**< reserved card bytes */
  char gatReserved3[10];  /**< reserved card bytes */
  char fingerData1[1025]; /**< first template, hexadecimal */
  char fingerData2[1025]; /**< second template, hexadecimal */
} PERSONINFO_COLLECT_FP;

QL_STATIC_ASSERT(sizeof(PERSONINFO_CHA) == 740, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_CHA_FP) == 2790, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_FOR) == 900, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_FOR_FP) == 2950, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_GAT) == 588, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_GAT_FP) == 2638, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO) == 904, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_FP) == 2956, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_COLLECT) == 980, "layout shared with applications");
QL_STATIC_ASSERT(sizeof(PERSONINFO_COLLECT_FP) == 3030, "layout shared with applications");

QL_END_DECLS

#endif
