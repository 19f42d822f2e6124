/* SPDX-License-Identifier: MIT */
/** @file
 *  Support functions: log and configuration, base64 and files, time. Some names are plain words
 *  (`test`, `Check`, `CopyFile`); include this header only where they are wanted. */
#ifndef QUILLONID_SUPPORT_H
#define QUILLONID_SUPPORT_H

#include "quillonid/export.h"

QL_BEGIN_DECLS

/** @name Log and configuration
 *  Lines go to "/home/quillon/Alg_debug.log" while "/home/quillon/QLConfig.ini" holds a non-zero
 *  "LogFlag" in section "QuillonLog"; the file is looked at on every call. The log holds card data
 *  in clear, is created with mode 0600 and grows without limit; the folder is never created. Lines
 *  end in CR LF and are written to a file whole, by any thread; a line that cannot be written is
 *  dropped, as is one to a pipe or socket of that name. A terminal that takes nothing for half a
 *  second, or does not take a line in 10 s, loses the rest of the line, and is not waited for again
 *  before it has taken one. errno stays as it was. Not for signal handlers.
 *  @{ */

/** Writes one line: version, blank, time of GetLogTime(), two blanks, and the message, formatted as
 *  printf does and cut at 4,095 characters. The result means nothing. */
QL_API int DPrintLogToFile(const char* fmt, ...) QL_PRINTF(1, 2);

/** Writes one line with a blank before the version, and type text (0 information, 1 error) and area
 *  name (level 1 to 11) before the message. */
QL_API int DPrintLogToFileAddType(int type, int level, const char* fmt, ...) QL_PRINTF(3, 4);

/** Writes one line with `title`, which may be null, the length and `len` bytes of `data` as
 *  upper-case hexadecimal. */
QL_API int DPrintDataHexToFile(const char* title, const void* data, int len);

/** The same with type text and area name; type 0 writes nothing. */
QL_API void DPrintDataHexToFileAddType(int type, int level, const char* title,
                                       const unsigned char* data, int len);

/** Does nothing and returns `type`. */
QL_API int DPrintTlvToFileAddType(int type, ...);

/** Writes the text of a message type to `dst` (12 bytes); an unknown type writes nothing. */
QL_API void MapDebugInfoType(int type, char* dst);

/** Writes the name of a log area to `dst` without a terminating zero (at most 8 bytes); an unknown
 *  level writes nothing. */
QL_API void MapDebugLevelType(int level, char* dst);

/** Local time as 13 digits, MMDDhhmmss and milliseconds, in a static buffer that the next call
 *  overwrites. */
QL_API char* GetLogTime(void);

/** Full path of the log file, in a static buffer that the next call overwrites. */
QL_API const char* getLogFilePath(void);

/** Sets the log file's name, relative to "/home/quillon/" and at most 512 bytes; empty or null goes
 *  back to "Alg_debug.log". A folder in the name has to exist. Returns the kept name. */
QL_API void* SetLogPath(const char* name);

/** Does nothing and returns 0: the log directory is fixed. */
QL_API int QL_DebugSetPath(const void* path);

/** Sets the text that opens every log line, at most 128 bytes; null changes nothing. Returns 0. */
QL_API int QL_DebugSetVersion(const char* version);

/** Keeps at most 256 characters of a file name that nothing reads. */
QL_API void DPritLogSetFileName(const char* name);

/** Value of `key` in `section` of the INI file `path`: what follows the first "=" in the first line
 *  that has a "=", holds `key` anywhere, stands behind the line "[section]" and begins neither with
 *  "#" nor with "//". Nothing is trimmed. Lines end in a line feed, one without is not looked at;
 *  they are cut at 1,023 characters, and a file at 1 MiB. Returns a static buffer of 1,024 bytes
 * that the next call overwrites, or `defaultValue` itself. */
QL_API char* GetIniKeyString(const char* section, const char* key, const char* defaultValue,
                             const char* path);

/** The same as a decimal number; no digits, or a null `defaultValue`, give 0. */
QL_API long GetIniKeyInt(const char* section, const char* key, const char* defaultValue,
                         const char* path);

/** The configured "LogFlag": non-zero while logging is on. */
QL_API int isWriteLog(void);

/** Does nothing and returns 0. */
QL_API int GetFullPath(void);
/** Does nothing and returns 0. */
QL_API int GetTempFilePath(void);
/** Logs its start and returns 0. */
QL_API int test(void);
/** @} */

/** @name Base64 (RFC 4648, standard alphabet, padded)
 *  @{ */

/** Encodes `inLen` bytes. Returns the number of characters written, without a terminating zero; 0
 *  for `inLen` below 1; -1 when `outSize` is below (inLen + 2) / 3 * 4. */
QL_API int Base64_EncData(const unsigned char* in, int inLen, char* out, int outSize);

/** Decodes `inLen` characters. Returns the number of bytes written, 0 for fewer than 4 characters,
 *  -1 when they do not fit. One byte more than `outSize` may be written: provide `outSize` + 1. */
QL_API int Base64_DecData(const char* in, int inLen, unsigned char* out, int outSize);

/** As Base64_EncData(), over the alphabet that IniBase64Table() sets. */
QL_API int EncryptBase64(const unsigned char* in, int inLen, char* out, int outSize);

/** As Base64_DecData(), over the alphabet that IniBase64Table() sets. */
QL_API int DecryptBase64(const char* in, int inLen, unsigned char* out, int outSize);

/** Position of `c` in the alphabet; 0 for "=", -1 for any other character. */
QL_API int GetIndexFromTable(unsigned char c);
/** Position of `c` in the writable alphabet; 0 for "=", -1 for any other character. */
QL_API int GetIndexFromBase64Table(unsigned char c);
/** Sets the writable alphabet to the standard one and returns it (64 characters, no zero); what is
 *  written there holds for the next calls. */
QL_API char* IniBase64Table(void);

/** Writes the base64 text of a regular file, with its zero, to `dst`, which must hold
 *  (size + 2) / 3 * 4 + 1 bytes, and to the log. Returns 0, -1 when the file is empty, -2 when it
 *  cannot be opened or read or is larger than 1 GiB. */
QL_API int GetBase64DataEx(const char* path, char* dst);

/** Asks for the size of a file's base64 text: with `out` null or `*outLen` too small stores it in
 *  `*outLen` and returns -2. With room enough clears `*outLen` bytes of `out`, stores the size and
 *  returns 0; it never encodes. */
QL_API int GetBase64FromFile(const char* path, char* out, int* outLen);
/** @} */

/** @name Files
 *  @{ */

/** Size of a file in bytes, or -1. */
QL_API long get_file_size(const char* path);

/** Reads a whole file, and never more than `*len` bytes. With `buf` null or `*len` below the size,
 *  stores the size in `*len` (-1: no such file) and returns -2; otherwise 0, with `*len` as it was,
 *  or -1 when the file cannot be opened. */
QL_API int ReadFileData(const char* path, unsigned char* buf, int* len);

/** Creates or replaces a file with `n` bytes. Returns 1, or 0 when not all were written; a negative
 *  `n` leaves the file alone. */
QL_API int WriteFileData(const char* path, const void* buf, int n);

/** Never writes; returns -1. */
QL_API int WriteDataToFile(void* ignored, const char* fileName, const unsigned char* data, int len);

/** Copies a file; with `overwrite` 0 an existing target stays. The source is a regular file, or a
 *  character device that ends within 1 MiB and has its bytes at hand: "/dev/null" gives an empty
 *  target. Returns 1 when copied, else 0. */
QL_API int CopyFile(const char* src, const char* dst, int overwrite);

/** 1 when `path` ends in "/" or opens as a directory, else 0. */
QL_API int PathIsDirectory(const char* path);
/** @} */

/** @name Time
 *  @{ */

/** Local time: year less 2000, month, day, hour, minute, second (2 digits each), milliseconds (3
 *  digits), with `sep` between them unless null. In a static buffer of 128 bytes; longer texts are
 *  cut. */
QL_API char* Time_GetLocalTime(const char* sep);

/** Sleeps `n` / 200 whole seconds, not at all for `n` below 200, and returns what sleep() returns:
 *  the seconds that a signal left. */
QL_API unsigned int GeneralSleep(int n);

/** Writes `count` pseudo-random bytes, which are predictable; rand() goes on undisturbed. Returns
 * 0.
 */
QL_API int GetRandom(int count, unsigned char* out);

/** Writes the local time as six digits hhmmss, no zero. Returns 0. */
QL_API int GetTransTime(char* out);
/** Writes the local date as six digits YYMMDD, no zero. Returns 0. */
QL_API int GetTransDate(char* out);

/** Checks a packed-BCD date of 3 bytes, YYMMDD; years 00 to 49 are 20xx. Returns 0 or -1. */
QL_API int time_Valid_YYMMDD(const unsigned char* bcd);

/** Milliseconds since the epoch, cut to 32 bits. */
QL_API unsigned int GetTickCount(void);
/** Takes the start time; returns it in milliseconds since the epoch. */
QL_API long GetTickCountStartTime(void);
/** Takes the end time; returns it in milliseconds since the epoch. */
QL_API long GetTickCountEndTime(void);
/** Milliseconds from the start to the end time taken last. */
QL_API long GetTickCountTimeOut(void);

/** 1 when the exclusive-or of `len` bytes is 0, else 0. The first byte is always looked at. */
QL_API int Check(const unsigned char* data, int len);
/** @} */

QL_END_DECLS

#endif
