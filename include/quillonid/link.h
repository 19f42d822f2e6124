/* SPDX-License-Identifier: MIT */
/** @file
 *  Reader link: packets, exchange, device opening, string and BCD helpers. */
#ifndef QUILLONID_LINK_H
#define QUILLONID_LINK_H

#include <stdint.h>

#include "quillonid/transport.h"

QL_BEGIN_DECLS

/** @name Reader packets
 *  Between head and end byte every byte travels as two characters, nibble + 0x30 ("0" to "?"), so
 *  that neither can occur inside.
 *  @{ */

/** Builds a request frame: head, length, payload, exclusive-or of the payload, end.
 *  @param data payload of `n` bytes; only the low 16 bits of `n` are sent as its length
 *  @param out  must hold 2 n + 8 bytes
 *  @return 2 n + 8, or 0 (nothing written) without output or payload */
QL_API uint32_t Str_ZEL_MakePacket(uint8_t head, uint8_t end, const unsigned char* data, uint32_t n,
                                   unsigned char* out);

/** Takes a response frame apart: head, length, status, payload, exclusive-or of status and payload,
 *  end. Bytes before the head and behind the end are ignored. The length, which counts status and
 *  payload, is taken as sent and not compared with what came; what is missing reads as zeros.
 *  @param out     must hold 1,020 bytes; takes the payload
 *  @param out_len takes the payload's length, 0 to 1,020
 *  @return 0, or -4 for a malformed frame, a body of more than 1,024 characters or a length below
 * 2, with the outputs and the kept status as they were; see COMM_Zel_GetRecStatus() */
QL_API int Str_ZEL_ParsePacket(uint8_t head, uint8_t end, const unsigned char* packet, uint32_t len,
                               unsigned char* out, uint32_t* out_len);
/** @} */

/** @name Reader exchange
 *  One reader at a time. Head and end byte of (0, 0) mean raw: the bytes travel as they are.
 *  @{ */

/** Opens the reader that `description` names. Returns 0 or the transport's code. */
QL_API int COMM_Zel_OpenReader(QL_TRANSPORT_DESCRIPTION* description);

/** Closes the reader. Returns the transport's result. */
QL_API int COMM_Zel_CloseReader(void);

/** Writes a message of at most 508 bytes framed, or 1,024 raw; a longer raw one is cut. Returns 0,
 *  or -1 when not all of it was written. */
QL_API int COMM_Zel_WriteDataToReader(uint8_t head, uint8_t end, const unsigned char* data,
                                      int len);

/** Reads a message, clearing the reception status first.
 *  @param use_end_byte non-zero: the message is complete at the byte `end`, unless that is 0. The
 *                      test stays installed until another end condition replaces it.
 *  @param buffer       takes the payload, or the raw bytes, cut to `max`
 *  @return the bytes in `buffer`; 0 without buffer or `max`, or for an empty payload; -4 for a
 *          malformed frame; or the transport's 0 or code */
QL_API int COMM_Zel_ReadDataFromReader(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                       unsigned char* buffer, int max);

/** Writes `command` and, given a buffer and a `max` other than 0, reads the answer. Returns -54
 * when the command was not written, 0 when no answer was asked for, or the read's result. */
QL_API int COMM_Zel_SendAndReciveData(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                      const unsigned char* command, int len,
                                      unsigned char* response, int max);

/** Writes `len` bytes raw. Returns 0, or -1 when not all were written. */
QL_API int COMM_Zel_ReaderCmd(const unsigned char* data, int len);

/** Status word of the last framed response; 0 since the last read or exchange began. */
QL_API uint32_t COMM_Zel_GetRecStatus(void);

/** Sets the status word and returns it. */
QL_API uint32_t COMM_Zel_SetRecStatus(uint32_t status);

/** 1: USB reads drop the zeros at the end of each transfer. Returns 0. */
QL_API int COMM_Zel_SetHidClearZero(uint32_t flag);

/** Installs the test that tells when a reply is complete; null: none. Returns 0. */
QL_API int COMM_Zel_SetEndCondition(QL_END_CONDITION end_condition);

/** Sets the seconds that the next reads may take together. Returns 0. */
QL_API int COMM_Zel_ChageReadTimeOut(int seconds);

/** Ends a running read, from any thread. Returns the transport's result. */
QL_API int COMM_Zel_Cancel(void);

/** End condition: 0 when the last of `count` bytes is the end byte of the read, else -1. */
QL_API int ChangeEndCondition(const unsigned char* buffer, int count);

/** Asks the reader which card it holds.
 *  @return 0 contact card or identity card, 1 contactless card, 2 magnetic stripe, -1 unknown, or a
 *          negative code of the exchange */
QL_API int ICC_ZELPADCHECKCARD(int kind);
/** @} */

/** @name Device opening
 *  @{ */

/** Opens a reader.
 *  @param device    "HID" or "1001": a USB reader, the known ones first, then those that were
 * added;
 *                   "/dev/...": a serial device, of at most 255 bytes. Also understood, but not
 *                   served: "COM" and a number (at 9600 or 115200), "AUX" and a number, "SDT",
 *                   "PCSC", "BLUETOOTH", one separator and an address of 17 characters. Only "/dev"
 *                   and "COM" depend on the letter case.
 *  @param ext_no    extension number; accepted and not used
 *  @param baud      serial speed in bit/s
 *  @param aux_param terminal family of an "AUX" device
 *  @param timeout_s seconds that the reads may take together
 *  @return 0; -50 when it cannot be opened, or for no device; -2 for a text or speed that is not
 *          understood */
QL_API int tFuncOpenDevice(const char* device, const char* ext_no, int baud, int aux_param,
                           int timeout_s);

/** Closes the reader, sending it back to its own speed when that had been raised. Returns the
 *  close's result. */
QL_API int tFuncCloseDevice(void);

/** Sends an identity-card command of at most 1,024 bytes and reads its answer, until that is whole.
 *  @param mode     1: the end condition stays as it is; anything else: IdEndCondition()
 *  @param response takes the answer, cut to `max` (at most 4,096 bytes come)
 *  @return the bytes of the answer, 0, or a negative code */
QL_API int Dev_Zel_IdSendAndReciveData(uint32_t mode, const unsigned char* command, uint32_t len,
                                       unsigned char* response, uint32_t max);

/** Reads one more answer, without a command. Returns its bytes, 0, or a negative code. */
QL_API int Dev_Zel_IdReciveData(unsigned char* buffer, int max);

/** Ends a running read, from any thread. Returns the transport's result. */
QL_API int Dev_Zel_IdCardCancel(void);

/** 0 after "HID", 2 after "PCSC", 3 after "SDT", whether it opened or not; every other device
 * leaves what was. */
QL_API uint32_t Dev_Zel_IdCard_GetConnectType(void);

/** Registers a USB id at `index` 0 to 9. The ids from 0 to `index` are tried from then on, those
 * that were never set as zeros. Returns 0, or -2 for another index. */
QL_API int Dev_Zel_Id_AddHid(uint32_t index, uint64_t product_id, uint64_t vendor_id);

/** Non-zero: serial readers are reached at 9600 bit/s, then told to go on at the caller's speed.
 *  Returns 0. */
QL_API int Dev_Zel_Id_RaiseBaundFlag(int flag);

/** Accepts any extension number. Returns 0. */
QL_API int SetExtNo(const char* ext_no);

/** Selects a port of an extension box: a text that begins with "A", "B", "C" or "K"; any other
 * sends nothing. Returns 0, or -54 when the command was not written. */
QL_API int Set_ZelBp(const char* letter);

/** End condition: 0 when the bytes hold an identity-card answer with all the bytes that it
 * announces (two bytes, big-endian, behind five of preamble), else -1. */
QL_API int IdEndCondition(const unsigned char* buffer, int count);

/** Does nothing and returns 0. */
QL_API int COMM_Id_InitCardReaderParam(QL_TRANSPORT_DESCRIPTION* description);

/** Opens the card reader. Returns 0, the transport's code, or -50 for a slot other than 0. */
QL_API int COMM_Id_OpenCardReader(QL_TRANSPORT_DESCRIPTION* description);

/** Closes the card reader. Returns the transport's result. */
QL_API int COMM_Id_CloseCardReader(void);

/** Writes at most 508 bytes framed by 0x01 and 0x04. Returns 0 or -1. */
QL_API int COMM_Id_WriteDataToCardReader(const unsigned char* data, int len);

/** Reads a message framed by 0x01 and 0x04; see COMM_Zel_ReadDataFromReader(). */
QL_API int COMM_Id_ReadDataFromCardReader(unsigned char* buffer, int max);

/** Probes the open reader with a write of no bytes, which a serial port refuses, and opens it anew.
 *  Returns 0, 1 when the probe failed, or -1 when it could not be opened again. */
QL_API int COMM_Id_CardReaderSynBps(QL_TRANSPORT_DESCRIPTION* description);

/** Tells the reader a speed: 115200, 38400, 19200 or 9600 bit/s, or 0 for its own; for any other
 *  nothing is sent. Returns the bytes written, or the transport's code. */
QL_API int COMM_Id_SetBaud(int baud);

/** Does nothing and returns 0. */
QL_API int COMM_Id_CardReaderResetSynBps(void);

/** See COMM_Zel_GetRecStatus(). */
QL_API uint32_t COMM_Id_CardReaderGetRecStatus(void);

/** See COMM_Zel_Cancel(). */
QL_API int COMM_Id_CancelRead(void);
/** @} */

/** @name String and BCD helpers
 *  Outputs are the caller's and must hold what is said: nothing checks that. Null pointers and
 *  negative lengths do nothing and give the function's failure value, or 0.
 *  @{ */

/** Splits each byte into two characters, nibble + 0x30: 0xAB becomes 0x3A 0x3B. `out` holds 2 `len`
 *  bytes. */
QL_API void Str_ZelModeSplitData(const unsigned char* in, int len, unsigned char* out);

/** The reverse, by the low nibbles alone. An odd `len` does nothing. `out` holds `len` / 2 bytes.
 */
QL_API void Str_ZelModeMergeData(const unsigned char* in, int len, unsigned char* out);

/** Exclusive-or of `len` bytes, 0 to 255. */
QL_API int Str_CalcLrc(const unsigned char* data, int len);

/** The same. */
QL_API unsigned char Str_GetDataLRC(const unsigned char* data, int len);

/** Copies the bytes strictly between the first `head` and the first `end` behind it; `out` holds up
 *  to `len` - 2. Returns their number, or -1 when there are none. */
QL_API int Str_GetPacketBody(uint8_t head, uint8_t end, const unsigned char* buffer, int len,
                             unsigned char* out);

/** Packs 0 to 99 into one BCD byte. Returns 0, or -1 out of range. */
QL_API int Str_ByteToBcd(int value, unsigned char* out);

/** Packs 0 to 99999999 into 4 BCD bytes and stores 4 in `outLen`. The second and third byte stay as
 *  they were when value / 10000 or value / 100 is above 99. Returns 0, or -1 out of range. */
QL_API int Str_IntTo4Bcd(int value, unsigned char* out, int* outLen);

/** Value of `len` packed BCD bytes, high nibble first; a nibble above 9 counts as it is. */
QL_API uint64_t Str_BcdtoUint64(const unsigned char* bcd, int len);

/** Packs `len` hex characters two to a byte into `out` of (`len` + 1) / 2 bytes; an odd last one
 * fills the high nibble. Other characters have a value too, by the range their code is in. Returns
 * 0, or -1 for null. */
QL_API int Str_AscToHex(const char* text, int len, unsigned char* out);

/** Packs the first 2 n of `len` hex characters, with "0" on the left where there are fewer, into
 * `n` bytes. Returns `n`. */
QL_API int Str_AsciiToBcd(const char* text, int len, unsigned char* out, int n);

/** Packs the first 2 n of `len` hex characters, with "F" on the right where there are fewer, into
 * `n` bytes. Returns `n`. */
QL_API int Str_AsciiToCn(const char* text, int len, unsigned char* out, int n);

/** Writes `count` upper-case hex characters, two a byte, and a zero: `count` + 1 bytes. Returns 0,
 * or -1 for null. */
QL_API int Str_HexToAsc(const unsigned char* data, int count, char* out);

/** Writes two upper-case hex characters a byte, without a zero. */
QL_API void Str_SplitHexToBCD(const unsigned char* data, int len, char* out);

/** Merges pairs of hex characters into bytes; an odd `len` does nothing, a character that is no
 * digit counts as all ones. Returns the bytes written. */
QL_API int Str_MergeBcdToHex(const char* text, int len, unsigned char* out);

/** Writes the nibbles of a byte, each + 0x30. Returns 0. */
QL_API int Str_localSplitHex2Asc(unsigned char byte, unsigned char* high, unsigned char* low);

/** Writes 16 times the low nibble of `high`, plus `low` - 0x30. Returns 0. */
QL_API int Str_localMergeAsc2Hex(unsigned char* out, unsigned char high, unsigned char low);

/** Value of a hex character of either case, or -1. */
QL_API int Str_localHexCharToNum(char c);

/** Writes two lower-case hex characters a byte and a zero. Returns 0, or -1 for null. */
QL_API int Str_localSplitHexToBCD(const unsigned char* data, int len, char* out);

/** Merges pairs of hex characters into bytes; an odd last one is left out, a character that is no
 *  digit counts as all ones. Returns the bytes written, or -1 for null or a single character. */
QL_API int Str_localMergeBcdToHex(const char* text, int len, unsigned char* out);

/** Writes the exclusive-or of two blocks of 8 bytes. */
QL_API void Str_localXor(const unsigned char* a, const unsigned char* b, unsigned char* out);

/** First position of `byte`, or null. */
QL_API unsigned char* Str_localFindMsgSign(const unsigned char* data, int len, unsigned char byte);

/** Value of 4 bytes, big-endian. */
QL_API void Str_Char4ToInt(unsigned int* out, const unsigned char* bytes);

/** Writes the low `n` bytes of `value`, big-endian; those above the fourth are 0. Returns 0. */
QL_API int Str_DesNumtoHex(unsigned int value, unsigned char* out, int n);

/** Length without the trailing run of `byte`. */
QL_API int Str_GetDataDeleteChar(const unsigned char* data, int len, unsigned char byte);

/** Removes every blank, CR, tab and LF, wherever it stands, in place. Returns the text. */
QL_API char* Str_strsTrim(char* text);

/** Copies the part of `text` before the first `separator`, without a zero. Returns 0, or -2 when
 *  there is no separator. */
QL_API int Str_GetSplitData(const char* text, const char* separator, char* out);

/** Finds the record `tag` in a text of records: a tag letter, three decimal digits of length, the
 *  value. The search ends at a record of 129 or more, or of more than the text has. Returns where
 *  the record begins, or null. */
QL_API char* Str_FindTagApp(const char* tag, int tagLen, const char* text);

/** Copies the value of a record, without a zero, as far as the text has it.
 *  @param out    must hold up to 999 bytes
 *  @param outLen takes the bytes copied
 *  @return 0, or -1 when there is no such record */
QL_API int Str_GetTagValueApp(const char* tag, int tagLen, const char* text, int ignored, char* out,
                              int* outLen);
/** @} */

QL_END_DECLS

#endif
