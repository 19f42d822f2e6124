/* SPDX-License-Identifier: MIT */
/** @file
 *  Reader link: packets, exchange, device opening, string and BCD helpers. */
#ifndef QUILLONID_LINK_H
#define QUILLONID_LINK_H

#include <stdint.h>

#include "quillonid/transport.h"

QL_BEGIN_DECLS

/** @name Reader packets
 *  @{ */

/** Builds the frame of `n` payload bytes in `out`, which must hold 2 n + 8 bytes. Returns 2 n + 8.
 */
QL_API uint32_t Str_ZEL_MakePacket(uint8_t head, uint8_t end, const unsigned char* data, uint32_t n,
                                   unsigned char* out);
/** Takes a response frame of at most 1,024 body characters apart. Writes the payload (at most 1,020
 *  bytes) to `out`, its length to `*out_len`, and keeps the status. Returns 0, or -4 for a
 * malformed frame. */
QL_API int Str_ZEL_ParsePacket(uint8_t head, uint8_t end, const unsigned char* packet, uint32_t len,
                               unsigned char* out, uint32_t* out_len);
/** @} */

/** @name Reader exchange
 *  Head and end bytes of (0, 0) mean unframed.
 *  @{ */
QL_API int COMM_Zel_OpenReader(
    QL_TRANSPORT_DESCRIPTION* description); /**< the transport's result */
QL_API int COMM_Zel_CloseReader(void);      /**< the transport's result */
/** Writes a message; framed, at most 508 bytes; unframed, at most 1,024. Returns 0 or -1. */
QL_API int COMM_Zel_WriteDataToReader(uint8_t head, uint8_t end, const unsigned char* data,
                                      int len);
/** Reads a message of at most `max` bytes. Returns its length, 0, or a negative code. */
QL_API int COMM_Zel_ReadDataFromReader(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                       unsigned char* buffer, int max);
/** Writes and, given a buffer, reads. Returns -54 when the write failed, else the read's result. */
QL_API int COMM_Zel_SendAndReciveData(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                      const unsigned char* command, int len,
                                      unsigned char* response, int max);
QL_API int COMM_Zel_ReaderCmd(const unsigned char* data, int len); /**< unframed write; 0 or -1 */
QL_API uint32_t COMM_Zel_GetRecStatus(void);            /**< status of the last framed response */
QL_API uint32_t COMM_Zel_SetRecStatus(uint32_t status); /**< sets it; returns it */
QL_API int COMM_Zel_SetHidClearZero(uint32_t flag);     /**< USB trailing zeros; 0 */
QL_API int COMM_Zel_SetEndCondition(
    QL_END_CONDITION end_condition);               /**< end condition of reads; 0 */
QL_API int COMM_Zel_ChageReadTimeOut(int seconds); /**< seconds for the next reads; 0 */
QL_API int COMM_Zel_Cancel(void);                  /**< ends a running read */
/** 0 when the last of `count` bytes is the end byte of the read, else -1. */
QL_API int ChangeEndCondition(const unsigned char* buffer, int count);
/** Asks the reader which card it holds. Returns 0 (contact or identity card), 1 (contactless), 2
 *  (magnetic stripe), -1 (unknown), or a negative code. */
QL_API int ICC_ZELPADCHECKCARD(int kind);
/** @} */

/** @name Device opening
 *  @{ */

/** Opens the device that `device` names: "HID" or "1001" for USB, or a path such as "/dev/ttyS0"
 * with `baud` in bit/s. Returns 0, -50 (cannot be opened) or -2 (text or speed not understood). */
QL_API int tFuncOpenDevice(const char* device, const char* ext_no, int baud, int aux_param,
                           int timeout_s);
QL_API int tFuncCloseDevice(void); /**< closes; the close's result */
/** Sends an identity-card command and reads its answer. Returns the bytes read or a negative code.
 */
QL_API int Dev_Zel_IdSendAndReciveData(uint32_t mode, const unsigned char* command, uint32_t len,
                                       unsigned char* response, uint32_t max);
QL_API int Dev_Zel_IdReciveData(unsigned char* buffer, int max); /**< reads one more answer */
QL_API int Dev_Zel_IdCardCancel(void);                           /**< ends a running read; 0 */
QL_API uint32_t Dev_Zel_IdCard_GetConnectType(void); /**< 0 USB, 2 PCSC, 3 SDT; others leave it */
/** Registers a USB id at `index` 0 to 9 and sets the count to `index` + 1. Returns 0, or -2 for
 *  another index. */
QL_API int Dev_Zel_Id_AddHid(uint32_t index, uint64_t product_id, uint64_t vendor_id);
QL_API int Dev_Zel_Id_RaiseBaundFlag(
    int flag); /**< non-zero: reach serial readers at 9600, then raise; 0 */
QL_API int SetExtNo(const char* ext_no); /**< accepts anything; 0 */
QL_API int Set_ZelBp(
    const char* letter); /**< selects a port of an extension box, "A", "B", "C" or "K" */
/** 0 when the bytes hold an identity-card response with all the bytes it announces, else -1. */
QL_API int IdEndCondition(const unsigned char* buffer, int count);
QL_API int COMM_Id_InitCardReaderParam(
    QL_TRANSPORT_DESCRIPTION* description); /**< does nothing; 0 */
QL_API int COMM_Id_OpenCardReader(
    QL_TRANSPORT_DESCRIPTION* description); /**< the open's result; -50 for a slot other than 0 */
QL_API int COMM_Id_CloseCardReader(void);   /**< the close's result; -50 for a slot other than 0 */
QL_API int COMM_Id_WriteDataToCardReader(const unsigned char* data, int len); /**< framed write */
QL_API int COMM_Id_ReadDataFromCardReader(unsigned char* buffer, int max);    /**< framed read */
QL_API int COMM_Id_CardReaderSynBps(
    QL_TRANSPORT_DESCRIPTION* description);           /**< 0; 1 probe failed; -1 reopen failed */
QL_API int COMM_Id_SetBaud(int baud);                 /**< sends the reader's baud command */
QL_API int COMM_Id_CardReaderResetSynBps(void);       /**< 0 */
QL_API uint32_t COMM_Id_CardReaderGetRecStatus(void); /**< status of the last framed response */
QL_API int COMM_Id_CancelRead(void);                  /**< ends a running read */
/** @} */

/** @name String and BCD helpers
 *  Outputs are the caller's and must hold what is said; nothing is checked.
 *  @{ */
QL_API void Str_ZelModeSplitData(const unsigned char* in, int len,
                                 unsigned char* out); /**< each byte to two of nibble + 0x30 */
QL_API void Str_ZelModeMergeData(const unsigned char* in, int len,
                                 unsigned char* out);       /**< the reverse, for even `len` */
QL_API int Str_CalcLrc(const unsigned char* data, int len); /**< exclusive-or, 0 to 255 */
QL_API unsigned char Str_GetDataLRC(const unsigned char* data, int len); /**< exclusive-or */
QL_API int Str_GetPacketBody(uint8_t head, uint8_t end, const unsigned char* buffer, int len,
                             unsigned char* out); /**< bytes between head and end; length or -1 */
QL_API int Str_ByteToBcd(int value, unsigned char* out); /**< 0..99; 0 or -1 */
QL_API int Str_IntTo4Bcd(int value, unsigned char* out,
                         int* outLen); /**< 0..99999999 to 4 bytes; 0 or -1 */
QL_API uint64_t Str_BcdtoUint64(const unsigned char* bcd, int len); /**< value of packed BCD */
QL_API int Str_AscToHex(const char* text, int len,
                        unsigned char* out); /**< hex text to bytes; 0 or -1 */
QL_API int Str_AsciiToBcd(const char* text, int len, unsigned char* out,
                          int n); /**< left-padded with "0" to `n` bytes; n */
QL_API int Str_AsciiToCn(const char* text, int len, unsigned char* out,
                         int n); /**< right-padded with "F" to `n` bytes; n */
QL_API int Str_HexToAsc(const unsigned char* data, int count,
                        char* out); /**< `count` hex characters and a zero; 0 or -1 */
QL_API void Str_SplitHexToBCD(const unsigned char* data, int len,
                              char* out); /**< two upper-case hex characters a byte, no zero */
QL_API int Str_MergeBcdToHex(const char* text, int len,
                             unsigned char* out); /**< hex pairs to bytes; bytes written */
QL_API int Str_localSplitHex2Asc(unsigned char byte, unsigned char* high,
                                 unsigned char* low); /**< nibble + 0x30 each; 0 */
QL_API int Str_localMergeAsc2Hex(unsigned char* out, unsigned char high,
                                 unsigned char low); /**< the reverse; 0 */
QL_API int Str_localHexCharToNum(char c);            /**< 0..15 or -1 */
QL_API int Str_localSplitHexToBCD(
    const unsigned char* data, int len,
    char* out); /**< two lower-case hex characters a byte and a zero; 0 or -1 */
QL_API int Str_localMergeBcdToHex(const char* text, int len,
                                  unsigned char* out); /**< hex pairs to bytes; bytes or -1 */
QL_API void Str_localXor(const unsigned char* a, const unsigned char* b,
                         unsigned char* out); /**< 8 bytes */
QL_API unsigned char* Str_localFindMsgSign(const unsigned char* data, int len,
                                           unsigned char byte); /**< first position or null */
QL_API void Str_Char4ToInt(unsigned int* out,
                           const unsigned char* bytes); /**< big-endian, 4 bytes */
QL_API int Str_DesNumtoHex(unsigned int value, unsigned char* out,
                           int n); /**< the low `n` bytes, big-endian; 0 */
QL_API int Str_GetDataDeleteChar(const unsigned char* data, int len,
                                 unsigned char byte); /**< length without the trailing run */
QL_API char* Str_strsTrim(char* text); /**< removes every blank, CR, tab and LF in place */
QL_API int Str_GetSplitData(const char* text, const char* separator,
                            char* out); /**< the part before the separator, no zero; 0 or -2 */
QL_API char* Str_FindTagApp(
    const char* tag, int tagLen,
    const char* text); /**< record of tag, three digits of length, value; or null */
QL_API int Str_GetTagValueApp(const char* tag, int tagLen, const char* text, int ignored, char* out,
                              int* outLen); /**< the record's value; 0 or -1 */
/** @} */

QL_END_DECLS

#endif
