/* SPDX-License-Identifier: MIT */
/** @file
 *  Card reading engine: identity-card commands, read cycle, services that read one kind of card.
 * All results are internal codes. */
#ifndef QUILLONID_READER_H
#define QUILLONID_READER_H

#include "quillonid/records.h"

QL_BEGIN_DECLS

/** @name Identity-card commands
 *  They work on the device that tFuncOpenDevice() opened. One runs at a time; only CancelIdRead(),
 *  tFuncSearchIdDirect() and tFuncReadOneInstr() may be called from another thread.
 *
 *  `pData` holds 4,096 bytes and receives the card module's whole reply, preamble to check byte;
 *  `*pLen` becomes its length (1,295, 1,297 or 2,321) or 0. Null for either gives -2.
 *  "An exchange code" is what the exchange with the reader failed with: -54 (sending), -55
 *  (receiving), -56 (no whole answer in time), -57 (cancelled), -2 (nothing is open); a silent USB
 *  reader gives 0.
 *  @{ */

/** Asks whether the card module is ready. Returns the length of its answer, -6 for an unexpected
 *  answer, or an exchange code. Waits until the end condition in use is met, or the read time is
 *  over. */
QL_API int CheckDevice(void);

/** Searches until a card is found, 3 s for each answer and a pause of 1 s after each that says
 *  otherwise. Returns 0, -56 when `nTimeOut` milliseconds have passed, or -57. */
QL_API int SearchCard(int nTimeOut);

/** Searches once and waits `nTimeOut` seconds for the answer. Returns 0 for a card, the length of
 *  any other answer, or an exchange code. */
QL_API int SearchCardOneTime(int nTimeOut);

/** Selects the card that was found and pauses for 1 s. Returns 0, -2003 (no card), -2007 (IC
 *  power-on status), -55 (any other answer) or an exchange code. */
QL_API int SelectIDCard(void);

/** The same without the pause; it does not clear a cancel. */
QL_API int SelectIDCardOneTime(void);

/** Reads the selected card, with fingerprints unless `bFinger` is 0; 5 s for the answer. Returns 0,
 *  -55 for a reply of another length or with a wrong check byte, -2002 when the module does not
 *  support it, or an exchange code. */
QL_API int ReadIDCard(int bFinger, unsigned char* pData, int* pLen);

/** The same with the one command that searches, selects and reads. */
QL_API int ReadIDCardOneCmd(unsigned char* pData, int* pLen);

/** Searches, selects and reads until a card was read or `nTimeOut` seconds (1 to 120) have passed.
 *  A bad reply is tried again. Every search gets the whole time again, so the call may take about
 *  twice `nTimeOut` and 10 s. Returns 0, -2 (time out of range), -56, -57, -2002, or what a failed
 *  select returned. */
QL_API int GetIDCardInfo(int nTimeOut, int bFinger, unsigned char* pData, int* pLen);

/** Asks the running read to stop; may be called from another thread. A serial read ends within 0.1
 *  s, a pause within 1 s, a USB read at the end of its time. Search, select and read clear the
 *  request as they begin, so one that falls between two of them is lost: call again until the read
 *  returns. Returns 0. */
QL_API int CancelIdRead(void);

QL_API int tFuncSearchIdDirect(int bFlag); /**< 1: no search, no select, until set again; 0 */
QL_API int tFuncReadOneInstr(int bFlag);   /**< non-zero: one-command reads, until set again; 0 */
/** @} */

/** @name Read cycle: open, read, close
 *  `szDevice`, `szBpNo`, `nBaud` and `nParam` are those of tFuncOpenDevice(); `nTimeOut` is in
 *  seconds, 1 to 120; `pData` and `pLen` are those of the commands above. Each returns 0, what the
 *  opening failed with, or what GetIDCardInfo() returned.
 *  @{ */

/** One read without fingerprints. */
QL_API int ReadIDCardInfo(const char* szDevice, const char* szBpNo, int nBaud, int nParam,
                          int nTimeOut, unsigned char* pData, int* pLen);
/** One read with fingerprints. */
QL_API int ReadIDCardInfo_FP(const char* szDevice, const char* szBpNo, int nBaud, int nParam,
                             int nTimeOut, unsigned char* pData, int* pLen);

/** One read, with fingerprints unless `bFinger` is 0. A good one replaces the native data that is
 *  kept for tFunc_GetIdNativeData(); a failed one leaves it. Numbers that no int holds become the
 *  nearest one. */
QL_API int tFuncReadIdNativeData(const char* szDevice, const char* szBpNo, long nBaud,
                                 long nTimeOut, int bFinger, unsigned char* pData, int* pLen);

/** Keeps a copy of `nLen` bytes of native data; a length other than 1,295, 1,297 and 2,321, or
 *  null, leaves nothing kept. Returns 0. */
QL_API int tFunc_SetIdNativeData(unsigned char* pData, int nLen);

/** Copies the kept native data to `pBuf` of `nSize` bytes. Returns its length, or 0 when nothing is
 *  kept or it does not fit. */
QL_API int tFunc_GetIdNativeData(void* pBuf, int nSize);
/** @} */

/** @name Kind readers
 *  One read cycle, the fields into `record`, the photo into the BMP file `szHeadDir`. `record` is
 *  cleared first; null gives -2 before the device is opened. Fields are UTF-8 and end in a zero
 *  byte. With `bFinger` 1 the fingerprint templates are filled as well.
 *
 *  Each returns 0, what the read failed with, -2004 for another kind of card, or what the photo
 *  failed with (-2000, -2008), the record then being filled.
 *  @{ */
QL_API int tFuncReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                                int bFinger, char* szHeadDir,
                                PERSONINFO_CHA_FP* record); /**< resident card; another kind leaves
                                                               what it decodes to in the record */
QL_API int tFuncReadForeignerIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                    long nTimeOut, int bFinger, char* szHeadDir,
                                    PERSONINFO_FOR_FP* record); /**< foreigner's card */
QL_API int tFuncReadGatIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                              int bFinger, char* szHeadDir,
                              PERSONINFO_GAT_FP* record); /**< residence permit for Hong Kong,
                                                             Macau and Taiwan residents */
QL_API int tFuncReadIdInfo(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                           int bFinger, char* szHeadDir,
                           PERSONINFO_FP* record); /**< resident or foreigner's card */
QL_API int tFuncReadCollectIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                  long nTimeOut, int bFinger, char* szHeadDir,
                                  PERSONINFO_COLLECT_FP* record); /**< any card; -1 for an unknown
                                     kind; null or empty `szHeadDir` leaves the photo out, at most
                                     1,024 bytes of it are used */
/** @} */

/** @name Read services
 *  A kind reader and the conversion to the record that the caller wants. The `APP_ID_` functions of
 *  the same name publish the result. The record is cleared first. A plain one is filled only by a
 *  read that succeeds, photo included; null gives -2004 after the read. A null `_FP` record gives
 *  -2, as a null `szJson` does, before the device is opened.
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
