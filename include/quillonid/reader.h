/* SPDX-License-Identifier: MIT */
/** @file
 *  Card reading engine: identity-card commands, read cycle, services that read one kind of card.
 * All results are internal codes. */
#ifndef QUILLONID_READER_H
#define QUILLONID_READER_H

#include "quillonid/records.h"

QL_BEGIN_DECLS

/** @name Identity-card commands, on an open device
 *  @{ */
/** Asks whether the card module is ready. Returns the length of its answer, -6, or an exchange
 *  code. */
QL_API int CheckDevice(void);
/** Searches for `nTimeOut` milliseconds. Returns 0, -56 or -57. */
QL_API int SearchCard(int nTimeOut);
/** Searches once, waiting `nTimeOut` seconds. Returns 0, the length of another answer, or a code.
 */
QL_API int SearchCardOneTime(int nTimeOut);
QL_API int SelectIDCard(void); /**< selects the card; 0, -2003, -2007, -55 or an exchange code */
QL_API int SelectIDCardOneTime(void); /**< the same without pause */
/** Reads the card. `pData` holds 4,096 bytes. Returns 0, -55, -2002 or an exchange code. */
QL_API int ReadIDCard(int bFinger, unsigned char* pData, int* pLen);
/** The same with the one-command read. */
QL_API int ReadIDCardOneCmd(unsigned char* pData, int* pLen);
/** Searches, selects and reads within `nTimeOut` seconds (1 to 120). */
QL_API int GetIDCardInfo(int nTimeOut, int bFinger, unsigned char* pData, int* pLen);
/** Asks a running read to stop; may be called from another thread. Returns 0. */
QL_API int CancelIdRead(void);
QL_API int tFuncSearchIdDirect(int bFlag); /**< 1: no search, no select; 0 */
QL_API int tFuncReadOneInstr(int bFlag);   /**< non-zero: one-command read; 0 */
/** @} */

/** @name Read cycle: open, read, close
 *  `pData` holds 4,096 bytes.
 *  @{ */
QL_API int ReadIDCardInfo(const char* szDevice, const char* szBpNo, int nBaud, int nParam,
                          int nTimeOut, unsigned char* pData,
                          int* pLen); /**< without fingerprints */
QL_API int ReadIDCardInfo_FP(const char* szDevice, const char* szBpNo, int nBaud, int nParam,
                             int nTimeOut, unsigned char* pData,
                             int* pLen); /**< with fingerprints */
/** One read; keeps the native data. */
QL_API int tFuncReadIdNativeData(const char* szDevice, const char* szBpNo, long nBaud,
                                 long nTimeOut, int bFinger, unsigned char* pData, int* pLen);
/** Keeps native data of 1,295, 1,297 or 2,321 bytes; any other length clears it. Returns 0. */
QL_API int tFunc_SetIdNativeData(unsigned char* pData, int nLen);
/** Copies the kept native data. Returns its length, or 0. */
QL_API int tFunc_GetIdNativeData(void* pBuf, int nSize);
/** @} */

/** @name Kind readers
 *  @{ */
QL_API int tFuncReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                                int bFinger, char* szHeadDir,
                                PERSONINFO_CHA_FP* record); /**< resident card */
QL_API int tFuncReadForeignerIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                    long nTimeOut, int bFinger, char* szHeadDir,
                                    PERSONINFO_FOR_FP* record); /**< foreigner's card */
QL_API int tFuncReadGatIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                              int bFinger, char* szHeadDir,
                              PERSONINFO_GAT_FP* record); /**< permit */
QL_API int tFuncReadIdInfo(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                           int bFinger, char* szHeadDir,
                           PERSONINFO_FP* record); /**< resident or foreigner's card */
QL_API int tFuncReadCollectIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                  long nTimeOut, int bFinger, char* szHeadDir,
                                  PERSONINFO_COLLECT_FP* record); /**< any card */
/** @} */

/** @name Read services
 *  The `APP_ID_` functions of the same name add the conversion of the result.
 *  @{ */
QL_API int tFunc_ReadIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                            char* szHeadDir, PERSONINFO* record); /**< see APP_ID_ReadIDCard() */
QL_API int tFunc_ReadIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                               char* szHeadDir,
                               PERSONINFO_FP* record); /**< see APP_ID_ReadIDCard_FP() */
QL_API int tFunc_ReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                 long nTimeOut, char* szHeadDir,
                                 PERSONINFO_CHA* record); /**< see APP_ID_ReadChinaIDCard() */
QL_API int tFunc_ReadChinaIDCard_FP(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_CHA_FP* record); /**< see APP_ID_ReadChinaIDCard_FP() */
QL_API int tFunc_ReadForeignerIDCard(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_FOR* record); /**< see APP_ID_ReadForeignerIDCard() */
QL_API int tFunc_ReadForeignerIDCard_FP(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_FOR_FP* record); /**< see APP_ID_ReadForeignerIDCard_FP() */
QL_API int tFunc_ReadIDCardForeigner(const char* szDevice, const char* szBpNo, long nBaud,
                                     long nTimeOut, char* szHeadDir,
                                     PERSONINFO* record); /**< see APP_ID_ReadIDCardForeigner() */
QL_API int tFunc_ReadGATIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                               char* szHeadDir,
                               PERSONINFO_GAT* record); /**< see APP_ID_ReadGATIDCard() */
QL_API int tFunc_ReadGATIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud,
                                  long nTimeOut, char* szHeadDir,
                                  PERSONINFO_GAT_FP* record); /**< see APP_ID_ReadGATIDCard_FP() */
QL_API int tFunc_ReadCollectIDCard(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_COLLECT* record); /**< see APP_ID_ReadCollectIDCard() */
QL_API int tFunc_ReadCollectIDCard_FP(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_COLLECT_FP* record); /**< see APP_ID_ReadCollectIDCard_FP() */
QL_API int tFunc_ReadCollectIDCardInfo(const char* szDevice, const char* szBpNo, long nBaud,
                                       long nTimeOut, int bFinger, char* szHeadDir,
                                       char* szJson); /**< see APP_ID_ReadCollectIDCardInfo() */
QL_API int tFunc_CancelRead(void);                    /**< see APP_ID_CancelRead() */
/** @} */

QL_END_DECLS

#endif
