/* SPDX-License-Identifier: MIT */
/** @file
 *  What an application includes: reading cards and the settings.
 *
 *  A read opens the device, runs the card commands within the time limit, closes the device and
 *  returns. One read runs at a time in a process; only APP_ID_CancelRead() may be called from
 *  another thread. Every function takes and gives zero-terminated text; paths and device texts are
 *  bytes as the system calls take them. */
#ifndef QUILLONID_QUILLONID_H
#define QUILLONID_QUILLONID_H

#include "quillonid/records.h"
#include "quillonid/results.h"

QL_BEGIN_DECLS

/** @name Reading a card
 *  Arguments of the family:
 *  - `szDevice`: "HID" for a USB reader, or a serial device such as "/dev/ttyS0"
 *  - `szBpNo`: extension number; accepted and not used, "" will do
 *  - `nBaud`: serial speed in bit/s; not used for USB
 *  - `nTimeOut`: limit of the read in seconds, 1 to 120
 *  - `szHeadDir`: path of the BMP file that receives the photo
 *  - `record`: cleared, then receives the fields, UTF-8 text that ends in a zero byte inside its
 * field
 *
 *  Returns 0 or a published code. Without a usable photo or decoder the result is -7 or -100; an
 *  `_FP` record is filled nevertheless, a plain one stays empty. A serial read that fails just
 *  before its limit searches once more: it may take about twice the limit and 10 s.
 *
 *  The native data of the last card read stays in the library's memory until the next read.
 *  @{ */
QL_API int APP_ID_ReadIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                             char* szHeadDir,
                             PERSONINFO* record); /**< resident or foreigner's card */
QL_API int APP_ID_ReadIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                                char* szHeadDir,
                                PERSONINFO_FP* record); /**< the same with fingerprints */
QL_API int APP_ID_ReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud,
                                  long nTimeOut, char* szHeadDir,
                                  PERSONINFO_CHA* record); /**< resident identity card */
QL_API int APP_ID_ReadChinaIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud,
                                     long nTimeOut, char* szHeadDir,
                                     PERSONINFO_CHA_FP* record); /**< the same with fingerprints */
QL_API int APP_ID_ReadForeignerIDCard(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_FOR* record); /**< foreigner's permanent residence card */
QL_API int APP_ID_ReadForeignerIDCard_FP(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_FOR_FP* record); /**< the same with fingerprints */
QL_API int APP_ID_ReadIDCardForeigner(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO* record); /**< foreigner's card in the combined record; `personType` stays 0 */
QL_API int APP_ID_ReadGATIDCard(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_GAT* record); /**< residence permit for Hong Kong, Macau and Taiwan residents */
QL_API int APP_ID_ReadGATIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud,
                                   long nTimeOut, char* szHeadDir,
                                   PERSONINFO_GAT_FP* record); /**< the same with fingerprints */
QL_API int APP_ID_ReadCollectIDCard(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_COLLECT* record); /**< any kind; null or empty `szHeadDir` leaves the photo out */
QL_API int APP_ID_ReadCollectIDCard_FP(
    const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut, char* szHeadDir,
    PERSONINFO_COLLECT_FP* record); /**< the same with fingerprints */

/** Any kind as JSON text. `szJson` holds 8,192 bytes; `bFinger` non-zero reads fingerprints; null
 *  or empty `szHeadDir` leaves the photo file out. */
QL_API int APP_ID_ReadCollectIDCardInfo(const char* szDevice, const char* szBpNo, long nBaud,
                                        long nTimeOut, int bFinger, char* szHeadDir, char* szJson);

/** Asks the running read to stop: at once on a serial line (0.1 s; up to 1 s in a pause), at the
 *  end of the running command on USB. A cancel that falls between two commands may be missed; call
 *  again until the read returns. From any thread, not from a signal handler: it logs. Returns 0. */
QL_API int APP_ID_CancelRead(void);

/** Copies the native data of the last successful read to `pBuf`. Returns its length (1,295, 1,297
 *  or 2,321), or 0 when there is none or `nSize` is too small. */
QL_API int APP_ID_GetIdNativeData(void* pBuf, int nSize);

/** Message of a published code; see TY_IDGetErrMessage(). */
QL_API char* APP_ID_IDGetErrCodeMessage(int nErrCode, char* pMsg);
/** @} */

/** @name Settings
 *  They hold for the process until changed.
 *  @{ */
QL_API int APP_ID_SetSearchDirect(int bFlag);     /**< 1: read at once, without search and select */
QL_API int APP_ID_SetOneInstrReadInfo(int bFlag); /**< non-zero: read with one command */
QL_API int APP_ID_AddHID(int nIndex, int nPid,
                         int nVid); /**< adds a USB id at slot 0 to 9; 0, or -2 for another slot */
QL_API int QL_APP_Id_RaiseBaundFlag(int bFlag); /**< non-zero: reach a serial reader at 9600 bit/s,
                                                   then raise its speed to `nBaud` */
QL_API int APP_ID_IDCardAddPhotoDataToJsonFlag(
    int bFlag); /**< non-zero: the next JSON text carries the photo block */
QL_API int APP_ID_IDCardAddNativeDataToJsonFlag(void); /**< does nothing */
/** @} */

/** @name The shorter set
 *  @{ */
QL_API char* Linux_QL_ID_GetErrCodeMessage(int nErrCode,
                                           char* pMsg); /**< see APP_ID_IDGetErrCodeMessage() */
QL_API int Linux_QL_ID_GetNativeData(void* pBuf, int nSize); /**< see APP_ID_GetIdNativeData() */
QL_API int Linux_QL_ID_CancelRead(void);                     /**< see APP_ID_CancelRead() */
QL_API int Linux_QL_ID_RaiseBaundFlag(int bFlag);            /**< see QL_APP_Id_RaiseBaundFlag() */
/** As APP_ID_ReadCollectIDCardInfo(); switches the raising of the baud rate on, for good. */
QL_API int Linux_QL_ID_ReadCollectCardInfo(const char* szDevice, long nBaud, long nTimeOut,
                                           int bFinger, char* szHeadDir, char* szJson);
QL_API int Linux_QL_ID_SetOrgData(void); /**< does nothing */
QL_API int Linux_QL_ID_AddPhotoDataToJsonFlag(
    int bFlag); /**< see APP_ID_IDCardAddPhotoDataToJsonFlag() */
/** Adds a USB id given as 4 hexadecimal characters each. Returns 0 or -2. */
QL_API int Linux_QL_ID_AddHID(int nIndex, const char* szPid, const char* szVid);
QL_API int Linux_QL_ID_SetSearchDirect(int bFlag); /**< see APP_ID_SetSearchDirect() */
QL_API int Linux_QL_ID_SetOneInstrReadInfo(void);  /**< changes nothing */
/** @} */

QL_END_DECLS

#endif
