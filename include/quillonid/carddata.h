/* SPDX-License-Identifier: MIT */
/** @file
 *  Card data: native data to records, nation and country names, conversions between records, JSON,
 *  text encodings.
 *
 *  Native data is the card module's whole read reply: 1,295 bytes, or 1,297 or 2,321 for a read
 *  with fingerprints. A read mode of 0 means without fingerprints, 1 with; any other is parsed from
 *  the start of the buffer. The parsers look at lengths inside the data, so pass a zero-filled
 *  buffer of #QL_NATIVE_DATA_SIZE bytes. */
#ifndef QUILLONID_CARDDATA_H
#define QUILLONID_CARDDATA_H

#include <stdint.h>

#include "quillonid/records.h"

QL_BEGIN_DECLS

/** Size of a native data buffer in bytes. */
#define QL_NATIVE_DATA_SIZE 4096
/** Size that holds every JSON text of this library, in bytes. */
#define QL_JSON_SIZE 8192

/** @name Native data to records
 *  @{ */

/** Card kind: 0 resident, 1 foreigner, 2 Hong Kong/Macau/Taiwan permit, -1 for an unknown mark or
 *  mode. */
QL_API int GetIdCardTypeFromNativeData(int nType, const unsigned char* native);

/** Fills a zero-filled record, whatever kind of card the data is from: fields, name of the ethnic
 *  group or country, sex in words, and in mode 1 the fingerprint templates. Texts keep the blanks
 *  that pad them on the card. Returns 0, or -2 for a null argument. */
QL_API int GetPersonChinaInfo(int nType, const unsigned char* native, PERSONINFO_CHA_FP* record);
/** @copydoc GetPersonChinaInfo */
QL_API int GetPersonForeignInfo(int nType, const unsigned char* native, PERSONINFO_FOR_FP* record);
/** @copydoc GetPersonChinaInfo */
QL_API int GetPersonGATInfo(int nType, const unsigned char* native, PERSONINFO_GAT_FP* record);
/** The same into the combined record; `bForeigner` 0 reads a resident card, else a foreigner's.
 *  Returns -1, with nothing but the templates filled, for a name of zeros. */
QL_API int GetPersonInfo(int bForeigner, int nType, const unsigned char* native,
                         PERSONINFO_FP* record);

/** Converts one field of `nLen` bytes UCS-2, of which it looks at 256, to UTF-8 in `dest` of
 *  `nDesLen` bytes, which it fills up with zeros. At most `nDesLen` - 1 bytes of text are stored,
 *  and a text that takes them all loses its trailing blanks. With `bRaw` set, the text may take all
 *  of `dest`, without a terminating zero. Returns `nLen`, or -1 when nothing was converted. */
QL_API int GetPersonParam(const unsigned char* source, char* dest, int nDesLen, int nLen, int bRaw);

/** Parses the 256-byte text block at `offset` of the native data, without names and sex. Returns 0,
 *  or -2 for a null argument. */
QL_API int IdChinaParam(const unsigned char* native, int offset, PERSONINFO_CHA_FP* record);
/** @copydoc IdChinaParam */
QL_API int IdForeignParam(const unsigned char* native, int offset, PERSONINFO_FOR_FP* record);
/** @copydoc IdChinaParam */
QL_API int IdGatParam(const unsigned char* native, int offset, PERSONINFO_GAT_FP* record);
/** A resident text block into the combined record. */
QL_API int IdParam_FP(const unsigned char* native, int offset, PERSONINFO_FP* record);
/** As IdGatParam(); with `total` above 1,297 also converts the two 512-byte pieces behind the text,
 *  as if they were text, into the template fields: of each the first 256 bytes, all that
 *  GetPersonParam() looks at. */
QL_API int IdGATParam_FP(int total, const unsigned char* native, int offset,
                         PERSONINFO_GAT_FP* record);

/** Writes "男" for a text of the number 1, "女" for any other, to `dest` of 8 bytes. Returns 0. */
QL_API int tFuncGetSex(const char* sexCode, char* dest);

/** Writes the two fingerprint templates of native data read in mode 1 as hexadecimal text, to
 *  destinations of 1,025 bytes each; empty texts when there are none. */
QL_API void tFuncGetFpTemplate(const unsigned char* native, char* first, char* second);
/** The same into a permit record. */
QL_API void GetGATFpTemplate(const unsigned char* native, PERSONINFO_GAT_FP* record);
/** @} */

/** @name Nation and country names
 *  @{ */

/** Name of an ethnic group (GB/T 3304 code 1 to 56, 97, 98) in UTF-8: as many whole characters as
 *  fit `limit` bytes with the zero; 28 bytes hold every name. Empty for other codes. */
QL_API void GetNation(int code, char* dest, int limit);

/** Name of a country by the first three letters of its code (ISO 3166-1 alpha-3, withdrawn codes
 *  included) in UTF-8, at most 48 bytes without a terminating zero: pass `dest` zero-filled. An
 *  unknown code writes nothing. */
QL_API void GetCountry(const char* code, char* dest);
/** @} */

/** @name Conversions between records
 *  Copies the text of same-named fields without its zero and without clearing the destination,
 *  which the caller passes zero-filled; an empty field leaves the destination's as it was. Returns
 *  0, or -2004 for a null argument.
 *  @{ */
QL_API int tFuncConvertChinaFp(const PERSONINFO_CHA_FP* source,
                               PERSONINFO_CHA* dest); /**< drops the templates */
QL_API int tFuncConvertChina(const PERSONINFO_CHA* source,
                             PERSONINFO_CHA_FP* dest); /**< leaves the templates */
QL_API int tFuncConvertForeignFp(const PERSONINFO_FOR_FP* source,
                                 PERSONINFO_FOR* dest); /**< drops the templates */
QL_API int tFuncConvertForeign(const PERSONINFO_FOR* source,
                               PERSONINFO_FOR_FP* dest); /**< leaves the templates */
QL_API int tFuncConvertGatFp(const PERSONINFO_GAT_FP* source,
                             PERSONINFO_GAT* dest); /**< drops the templates */
QL_API int tFuncConvertGat(const PERSONINFO_GAT* source,
                           PERSONINFO_GAT_FP* dest); /**< leaves the templates */
QL_API int tFuncConvertCollectFp(const PERSONINFO_COLLECT_FP* source,
                                 PERSONINFO_COLLECT* dest); /**< drops the templates */
QL_API int tFuncConvertCollect(const PERSONINFO_COLLECT* source,
                               PERSONINFO_COLLECT_FP* dest); /**< leaves the templates */
QL_API int tFuncConvertPerson(const PERSONINFO* source,
                              PERSONINFO_FP* dest); /**< leaves templates and `personType` */
QL_API int tFuncConvertPersonFp(const PERSONINFO_FP* source,
                                PERSONINFO* dest); /**< drops the templates, copies `personType` */

/** Copies a resident's or foreigner's record, the first that has a `name`, into the combined one
 *  and marks its `cardType`. When neither has, copies back from a combined record that has a name
 *  into the record of its mark. Either of the first two may be null. `personType` stays. Returns 0,
 *  or -1 when there is nothing to copy from or to. */
QL_API int ConverStruct(PERSONINFO_CHA_FP* china, PERSONINFO_FOR_FP* foreign,
                        PERSONINFO_FP* person);

/** Copies the first record that is not null into the collect record; a resident's gets the mark ' '
 *  in `cardType`. Returns 0. */
QL_API int tFuncConvertStruct2Collect(const PERSONINFO_CHA_FP* china,
                                      const PERSONINFO_FOR_FP* foreign,
                                      const PERSONINFO_GAT_FP* gat, PERSONINFO_COLLECT_FP* collect);
/** @} */

/** @name JSON (RFC 8259, UTF-8)
 *  A text is an object of strings, one key a line. Packers write it to a zero-filled buffer of
 *  #QL_JSON_SIZE bytes; only the collect packer writes zeros behind it. That is room for every
 *  record that a card can give, with fingerprints and photo. A record whose text is longer, because
 *  the caller filled it with characters that JSON escapes, is refused with -1 and nothing written.
 *  Without memory for the text the result is -1 and the output an empty text. After either failure
 *  a photo that was asked for is added by the next packer.
 *
 *  Readers find keys as they are spelled here, and in any other letter case that tolower() of the
 *  program's locale folds: in a Turkish one with ISO 8859-9 "idnumber" is not "IDNumber". They cut
 *  a value at its field's width.
 *  @{ */

/** Packs a resident card; "CardType" is one blank. Returns 0 or -1. */
QL_API int tFuncPackChinaJson(PERSONINFO_CHA_FP record, char* out);
/** Packs a foreigner's card. Returns 0 or -1. */
QL_API int tFuncPackForeignJson(PERSONINFO_FOR_FP record, char* out);
/** Packs a permit. Returns 0 or -1. */
QL_API int tFuncPackGATJson(PERSONINFO_GAT_FP record, char* out);
/** Packs any kind. Returns 0, or -1 also when the photo was asked for and there is none. */
QL_API int tFuncPackCollectJson(const PERSONINFO_COLLECT_FP* record, char* out);

/** Copies the text of `key` with its zero to `dest`, however long it is. Returns 0, -2 when the
 *  text is no JSON or has no such key, -2004 when the value is no string. */
QL_API int tFuncGetStringFromJson(const char* json, const char* key, char* dest);

/** Reads the text of a resident card; a key that is missing leaves its field as it was. Returns
 *  0. */
QL_API int tFuncConvertJsontoChinaStruct(const char* json, PERSONINFO_CHA_FP* record);
/** The same for a foreigner's card; `police` and `reserved` are not read. Returns 0. */
QL_API int tFuncConvertJsontoForeignStruct(const char* json, PERSONINFO_FOR_FP* record);
/** The same for a permit. Returns 0. */
QL_API int tFuncConvertJsontoGatStruct(const char* json, PERSONINFO_GAT_FP* record);
/** The same for any kind; `nationCode` comes from "NationCode". Returns 0. */
QL_API int tFuncConvertJsontoCollectStruct(const char* json, PERSONINFO_COLLECT_FP* record);

/** Reads a JSON text into the record of its "CardType", which is cleared first; the others may be
 *  null. Returns 0 resident (" "), 1 foreigner ("I"), 2 permit ("J"); -1 for another mark or a null
 *  record, or as tFuncGetStringFromJson(). */
QL_API int tFuncConvertIdInfotoStruct(const char* json, PERSONINFO_CHA* china,
                                      PERSONINFO_FOR* foreign, PERSONINFO_GAT* gat);

/** Packs every record given, others null, into `out`, one over the other; of the combined record
 *  the card that its `cardType` marks (" " or "I"). Returns 0 or the first negative result. */
QL_API int tFuncConvertIdInfoStruct(const PERSONINFO_CHA_FP* china,
                                    const PERSONINFO_FOR_FP* foreign, const PERSONINFO_GAT_FP* gat,
                                    const PERSONINFO_FP* person,
                                    const PERSONINFO_COLLECT_FP* collect, char* out);

/** Non-zero: the next packer adds the photo block of the last read under "PhotoNativeData", as
 *  upper-case hexadecimal text (zeros when there is none), the collect packer as base64. Returns
 *  0. */
QL_API int tFunc_SetAddPhotoDataToJsonFlag(int bFlag);
/** Does nothing and returns 0. */
QL_API int tFunc_SetAddNativeDataToJsonFlag(void);
/** @} */

/** @name Text encodings
 *  UCS-2 is little-endian; GBK is code page 936.
 *  @{ */

/** UCS-2 of `sourceLen` bytes to UTF-8, zero units and surrogates like any other. The limit of
 *  `destSize` - 1 bytes is tested after each character, so that two bytes more may be written:
 *  provide `destSize` + 2. Returns the code units converted; 0, and a zero in the first byte, when
 *  either size leaves nothing to do; 0, and nothing, for a null argument. */
QL_API int UnicodeToUTF8(const unsigned char* source, int sourceLen, char* dest, int destSize);

/** GBK text of at most 255 bytes to UTF-8; limits as UnicodeToUTF8(). */
QL_API void GBKToUTF8(const char* source, char* dest, int destSize);

/** GBK text of at most 255 bytes to at most `max` UCS-2 units, without a terminator; a byte that is
 *  no GBK becomes '?'. The length of a longer text counts modulo 256; `max` counts as it is. With
 *  `dest` null counts the characters. Returns the units, or -1 for a null source. */
QL_API int GbkToUcs2(uint16_t* dest, const char* source, int max);

/** Zero-terminated UCS-2 to GBK in `dest` of `destSize` bytes; a character without a GBK form
 *  becomes '?' and a zero byte. A terminating zero is written only when room runs out: pass `dest`
 *  zero-filled. With `dest` null counts. Returns the bytes, or -1 for a null source. */
QL_API int Ucs2ToGbk(char* dest, const uint16_t* source, int destSize);

/** Units before the terminating zero. */
QL_API int Ucs2Len(const uint16_t* text);

QL_API int UnicodeToAnsi(int value); /**< returns its argument */
QL_API int GbkToUnicode(int value);  /**< returns its argument */
/** @} */

QL_END_DECLS

#endif
