/* SPDX-License-Identifier: MIT */
/** @file
 *  Images and base64 text of a card that was read.
 *
 *  Arguments of the family:
 *  - `record`: a record that a read filled; it is not changed. One of another kind gives -2004
 *    (published -11): a resident record needs a card number and a nation code, the others a card
 *    number and a `cardType` of their kind
 *  - `json`: a JSON text of such a record
 *  - `path`: where the image goes: a directory, a pattern ("*.jpg" in a directory) or a file name,
 *    in a buffer of #QL_IMAGE_PATH_SIZE bytes, since the head photo's name is written back
 *  - `pLogoMsg`: a text for the image; may be null
 *  - `flag`: accepted and not used
 *
 *  Each `APP_ID_` function returns the published code for the result of the `tFunc_` service of the
 *  same name. Card images are not composed: the front side, back side and whole-card functions look
 *  at the record and draw nothing. */
#ifndef QUILLONID_IMAGES_H
#define QUILLONID_IMAGES_H

#include "quillonid/image.h"
#include "quillonid/records.h"

QL_BEGIN_DECLS

/** @name Head photo
 *  Name the file of the head photo as tFuncSaveHeadImg() does, after the card number, and write
 *  the name back to `path`. The photo itself is written by the read. A card number with "/" or
 *  "../" makes a name outside the directory; nothing is ever written to it here.
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveHeadImg(const PERSONINFO* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveHeadImg_FP(const PERSONINFO_FP* record, char* path);
/** Resident card. */
QL_API int APP_ID_SaveChinaHeadImg(const PERSONINFO_CHA* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaHeadImg_FP(const PERSONINFO_CHA_FP* record, char* path);
/** Foreigner's card. */
QL_API int APP_ID_SaveForeignHeadImg(const PERSONINFO_FOR* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveForeignHeadImg_FP(const PERSONINFO_FOR_FP* record, char* path);
/** Permit. */
QL_API int APP_ID_SaveGATHeadImg(const PERSONINFO_GAT* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveGATHeadImg_FP(const PERSONINFO_GAT_FP* record, char* path);
/** Any card. */
QL_API int APP_ID_SaveCollectHeadImg(const PERSONINFO_COLLECT* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveCollectHeadImg_FP(const PERSONINFO_COLLECT_FP* record, char* path);
/** Any card, from its JSON text. */
QL_API int APP_ID_SaveCollectInfoHeadImg(const char* json, char* path);
/** See APP_ID_SaveHeadImg(). */
QL_API int tFunc_SaveHeadImg(const PERSONINFO* record, char* path);
/** See APP_ID_SaveHeadImg_FP(). */
QL_API int tFunc_SaveHeadImg_FP(const PERSONINFO_FP* record, char* path);
/** See APP_ID_SaveChinaHeadImg(). */
QL_API int tFunc_SaveChinaHeadImg(const PERSONINFO_CHA* record, char* path);
/** See APP_ID_SaveChinaHeadImg_FP(). */
QL_API int tFunc_SaveChinaHeadImg_FP(const PERSONINFO_CHA_FP* record, char* path);
/** See APP_ID_SaveForeignHeadImg(). */
QL_API int tFunc_SaveForeignHeadImg(const PERSONINFO_FOR* record, char* path);
/** See APP_ID_SaveForeignHeadImg_FP(). */
QL_API int tFunc_SaveForeignHeadImg_FP(const PERSONINFO_FOR_FP* record, char* path);
/** See APP_ID_SaveGATHeadImg(). */
QL_API int tFunc_SaveGATHeadImg(const PERSONINFO_GAT* record, char* path);
/** See APP_ID_SaveGATHeadImg_FP(). */
QL_API int tFunc_SaveGATHeadImg_FP(const PERSONINFO_GAT_FP* record, char* path);
/** See APP_ID_SaveCollectHeadImg(). */
QL_API int tFunc_SaveCollectHeadImg(const PERSONINFO_COLLECT* record, char* path);
/** See APP_ID_SaveCollectHeadImg_FP(). */
QL_API int tFunc_SaveCollectHeadImg_FP(const PERSONINFO_COLLECT_FP* record, char* path);
/** See APP_ID_SaveCollectInfoHeadImg(). */
QL_API int tFunc_SaveCollectInfoHeadImg(const char* json, char* path);
/** @} */

/** @name Front side
 *  Draw nothing.
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveFrontImg(const PERSONINFO* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveFrontImg_FP(const PERSONINFO_FP* record, char* path);
/** Resident card. */
QL_API int APP_ID_SaveChinaFrontImg(const PERSONINFO_CHA* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaFrontImg_FP(const PERSONINFO_CHA_FP* record, char* path);
/** Permit; does what APP_ID_SaveGatFrontImgEx() does. */
QL_API int APP_ID_SaveGATFrontImg(const PERSONINFO_GAT* record, char* path);
/** Any card; does what APP_ID_SaveCollectFrontImgEx() does. */
QL_API int APP_ID_SaveCollectFrontImg(const PERSONINFO_COLLECT* record, char* path);
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveFrontImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                                 int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveFrontImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                    int flag);
/** Resident card. */
QL_API int APP_ID_SaveChinaFrontImgEx(const PERSONINFO_CHA* record, char* path,
                                      const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaFrontImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                         const char* pLogoMsg, int flag);
/** Foreigner's card. */
QL_API int APP_ID_SaveForeignFrontImgEx(const PERSONINFO_FOR* record, char* path,
                                        const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveForeignFrontImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                           const char* pLogoMsg, int flag);
/** Permit. */
QL_API int APP_ID_SaveGatFrontImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                    int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveGatFrontImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                       const char* pLogoMsg, int flag);
/** Any card. */
QL_API int APP_ID_SaveCollectFrontImgEx(const PERSONINFO_COLLECT* record, char* path,
                                        const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCollectFrontImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                           const char* pLogoMsg, int flag);
/** Any card, from its JSON text. */
QL_API int APP_ID_SaveCollectInfoFrontImgEx(const char* json, char* path, const char* pLogoMsg,
                                            int flag);
/** See APP_ID_SaveFrontImg(). */
QL_API int tFunc_SaveFrontImg(const PERSONINFO* record, char* path);
/** See APP_ID_SaveFrontImg_FP(). */
QL_API int tFunc_SaveFrontImg_FP(const PERSONINFO_FP* record, char* path);
/** See APP_ID_SaveChinaFrontImg(). */
QL_API int tFunc_SaveChinaFrontImg(const PERSONINFO_CHA* record, char* path);
/** See APP_ID_SaveChinaFrontImg_FP(). */
QL_API int tFunc_SaveChinaFrontImg_FP(const PERSONINFO_CHA_FP* record, char* path);
/** Permit; a record that can be packed gives -2004. */
QL_API int tFunc_SaveGATFrontImg(const PERSONINFO_GAT* record, char* path);
/** See APP_ID_SaveCollectFrontImg(). */
QL_API int tFunc_SaveCollectFrontImg(const PERSONINFO_COLLECT* record, char* path);
/** See APP_ID_SaveFrontImgEx(). */
QL_API int tFunc_SaveFrontImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                                int flag);
/** See APP_ID_SaveFrontImgEx_FP(). */
QL_API int tFunc_SaveFrontImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                   int flag);
/** See APP_ID_SaveChinaFrontImgEx(). */
QL_API int tFunc_SaveChinaFrontImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                                     int flag);
/** See APP_ID_SaveChinaFrontImgEx_FP(). */
QL_API int tFunc_SaveChinaFrontImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                        const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignFrontImgEx(). */
QL_API int tFunc_SaveForeignFrontImgEx(const PERSONINFO_FOR* record, char* path,
                                       const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignFrontImgEx_FP(). */
QL_API int tFunc_SaveForeignFrontImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** See APP_ID_SaveGatFrontImgEx(). */
QL_API int tFunc_SaveGatFrontImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                   int flag);
/** See APP_ID_SaveGatFrontImgEx_FP(). */
QL_API int tFunc_SaveGatFrontImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                      const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectFrontImgEx(). */
QL_API int tFunc_SaveCollectFrontImgEx(const PERSONINFO_COLLECT* record, char* path,
                                       const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectFrontImgEx_FP(). */
QL_API int tFunc_SaveCollectFrontImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectInfoFrontImgEx(). */
QL_API int tFunc_SaveCollectInfoFrontImgEx(const char* json, char* path, const char* pLogoMsg,
                                           int flag);
/** @} */

/** @name Back side
 *  Draw nothing.
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveBackImg(const PERSONINFO* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveBackImg_FP(const PERSONINFO_FP* record, char* path);
/** Any card; does what APP_ID_SaveCollectBackImgEx() does. */
QL_API int APP_ID_SaveCollectBackImg(const PERSONINFO_COLLECT* record, char* path);
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveBackImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                                int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveBackImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                   int flag);
/** Resident card. */
QL_API int APP_ID_SaveChinaBackImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                                     int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaBackImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                        const char* pLogoMsg, int flag);
/** Foreigner's card. */
QL_API int APP_ID_SaveForeignBackImgEx(const PERSONINFO_FOR* record, char* path,
                                       const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveForeignBackImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** Permit. */
QL_API int APP_ID_SaveGatBackImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                   int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveGatBackImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                      const char* pLogoMsg, int flag);
/** Any card. */
QL_API int APP_ID_SaveCollectBackImgEx(const PERSONINFO_COLLECT* record, char* path,
                                       const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCollectBackImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** Any card, from its JSON text. */
QL_API int APP_ID_SaveCollectInfoBackImgEx(const char* json, char* path, const char* pLogoMsg,
                                           int flag);
/** See APP_ID_SaveBackImg(). */
QL_API int tFunc_SaveBackImg(const PERSONINFO* record, char* path);
/** See APP_ID_SaveBackImg_FP(). */
QL_API int tFunc_SaveBackImg_FP(const PERSONINFO_FP* record, char* path);
/** See APP_ID_SaveCollectBackImg(). */
QL_API int tFunc_SaveCollectBackImg(const PERSONINFO_COLLECT* record, char* path);
/** See APP_ID_SaveBackImgEx(). */
QL_API int tFunc_SaveBackImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                               int flag);
/** See APP_ID_SaveBackImgEx_FP(). */
QL_API int tFunc_SaveBackImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                  int flag);
/** See APP_ID_SaveChinaBackImgEx(). */
QL_API int tFunc_SaveChinaBackImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                                    int flag);
/** See APP_ID_SaveChinaBackImgEx_FP(). */
QL_API int tFunc_SaveChinaBackImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                       const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignBackImgEx(). */
QL_API int tFunc_SaveForeignBackImgEx(const PERSONINFO_FOR* record, char* path,
                                      const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignBackImgEx_FP(). */
QL_API int tFunc_SaveForeignBackImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                         const char* pLogoMsg, int flag);
/** See APP_ID_SaveGatBackImgEx(). */
QL_API int tFunc_SaveGatBackImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                  int flag);
/** See APP_ID_SaveGatBackImgEx_FP(). */
QL_API int tFunc_SaveGatBackImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                     const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectBackImgEx(). */
QL_API int tFunc_SaveCollectBackImgEx(const PERSONINFO_COLLECT* record, char* path,
                                      const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectBackImgEx_FP(). */
QL_API int tFunc_SaveCollectBackImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                         const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectInfoBackImgEx(). */
QL_API int tFunc_SaveCollectInfoBackImgEx(const char* json, char* path, const char* pLogoMsg,
                                          int flag);
/** @} */

/** @name Whole card
 *  Draw nothing. A record that cannot be packed gives the packer's own result.
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveCardImg(const PERSONINFO* record, char* path, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCardImg_FP(const PERSONINFO_FP* record, char* path, int flag);
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveCardImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                                int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCardImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                   int flag);
/** Resident card. */
QL_API int APP_ID_SaveChinaCardImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                                     int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaCardImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                        const char* pLogoMsg, int flag);
/** Foreigner's card. */
QL_API int APP_ID_SaveForeignCardImgEx(const PERSONINFO_FOR* record, char* path,
                                       const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveForeignCardImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** Permit. */
QL_API int APP_ID_SaveGatCardImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                   int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveGatCardImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                      const char* pLogoMsg, int flag);
/** Any card. */
QL_API int APP_ID_SaveCollectCardImgEx(const PERSONINFO_COLLECT* record, char* path,
                                       const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCollectCardImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                          const char* pLogoMsg, int flag);
/** Any card, from its JSON text. */
QL_API int APP_ID_SaveCollectInfoCardImgEx(const char* json, char* path, const char* pLogoMsg,
                                           int flag);
/** See APP_ID_SaveCardImg(). */
QL_API int tFunc_SaveCardImg(const PERSONINFO* record, char* path, int flag);
/** See APP_ID_SaveCardImg_FP(). */
QL_API int tFunc_SaveCardImg_FP(const PERSONINFO_FP* record, char* path, int flag);
/** See APP_ID_SaveCardImgEx(). */
QL_API int tFunc_SaveCardImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg,
                               int flag);
/** See APP_ID_SaveCardImgEx_FP(). */
QL_API int tFunc_SaveCardImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                                  int flag);
/** See APP_ID_SaveChinaCardImgEx(). */
QL_API int tFunc_SaveChinaCardImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                                    int flag);
/** See APP_ID_SaveChinaCardImgEx_FP(). */
QL_API int tFunc_SaveChinaCardImgEx_FP(const PERSONINFO_CHA_FP* record, char* path,
                                       const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignCardImgEx(). */
QL_API int tFunc_SaveForeignCardImgEx(const PERSONINFO_FOR* record, char* path,
                                      const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignCardImgEx_FP(). */
QL_API int tFunc_SaveForeignCardImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                         const char* pLogoMsg, int flag);
/** See APP_ID_SaveGatCardImgEx(). */
QL_API int tFunc_SaveGatCardImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                                  int flag);
/** See APP_ID_SaveGatCardImgEx_FP(). */
QL_API int tFunc_SaveGatCardImgEx_FP(const PERSONINFO_GAT_FP* record, char* path,
                                     const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectCardImgEx(). */
QL_API int tFunc_SaveCollectCardImgEx(const PERSONINFO_COLLECT* record, char* path,
                                      const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectCardImgEx_FP(). */
QL_API int tFunc_SaveCollectCardImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                         const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectInfoCardImgEx(). */
QL_API int tFunc_SaveCollectInfoCardImgEx(const char* json, char* path, const char* pLogoMsg,
                                          int flag);
/** @} */

/** @name Image by type
 *  The services above by a number, `nImgType`: 0 head photo, 1 front side, 2 back side, 3 whole
 *  card. Any other number is an invalid argument (-2, published -13).
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveImg(int nImgType, int flag, const PERSONINFO* record, char* path);
/** The same, record with templates. */
QL_API int APP_ID_SaveImg_FP(int nImgType, int flag, const PERSONINFO_FP* record, char* path);
/** Resident or foreigner's card. */
QL_API int APP_ID_SaveImgEx(int nImgType, const PERSONINFO* record, char* path,
                            const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveImgEx_FP(int nImgType, const PERSONINFO_FP* record, char* path,
                               const char* pLogoMsg, int flag);
/** Resident card. */
QL_API int APP_ID_SaveChinaImgEx(int nImgType, const PERSONINFO_CHA* record, char* path,
                                 const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveChinaImgEx_FP(int nImgType, const PERSONINFO_CHA_FP* record, char* path,
                                    const char* pLogoMsg, int flag);
/** Foreigner's card. */
QL_API int APP_ID_SaveForeignImgEx(int nImgType, const PERSONINFO_FOR* record, char* path,
                                   const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveForeignImgEx_FP(int nImgType, const PERSONINFO_FOR_FP* record, char* path,
                                      const char* pLogoMsg, int flag);
/** Permit. */
QL_API int APP_ID_SaveGatImgEx(int nImgType, const PERSONINFO_GAT* record, char* path,
                               const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveGatImgEx_FP(int nImgType, const PERSONINFO_GAT_FP* record, char* path,
                                  const char* pLogoMsg, int flag);
/** Any card. */
QL_API int APP_ID_SaveCollectImg(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                                 const char* pLogoMsg, int flag);
/** The same. */
QL_API int APP_ID_SaveCollectImgEx(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                                   const char* pLogoMsg, int flag);
/** The same, record with templates. */
QL_API int APP_ID_SaveCollectImgEx_FP(int nImgType, const PERSONINFO_COLLECT_FP* record, char* path,
                                      const char* pLogoMsg, int flag);
/** Any card, from its JSON text. */
QL_API int APP_ID_SaveCollectInfoImgEx(int nImgType, const char* json, char* path,
                                       const char* pLogoMsg, int flag);
/** See APP_ID_SaveImg(). */
QL_API int tFunc_SaveImg(int nImgType, int flag, const PERSONINFO* record, char* path);
/** See APP_ID_SaveImg_FP(). */
QL_API int tFunc_SaveImg_FP(int nImgType, int flag, const PERSONINFO_FP* record, char* path);
/** See APP_ID_SaveImgEx(). */
QL_API int tFunc_SaveImgEx(int nImgType, const PERSONINFO* record, char* path, const char* pLogoMsg,
                           int flag);
/** See APP_ID_SaveImgEx_FP(). */
QL_API int tFunc_SaveImgEx_FP(int nImgType, const PERSONINFO_FP* record, char* path,
                              const char* pLogoMsg, int flag);
/** See APP_ID_SaveChinaImgEx(). */
QL_API int tFunc_SaveChinaImgEx(int nImgType, const PERSONINFO_CHA* record, char* path,
                                const char* pLogoMsg, int flag);
/** See APP_ID_SaveChinaImgEx_FP(). */
QL_API int tFunc_SaveChinaImgEx_FP(int nImgType, const PERSONINFO_CHA_FP* record, char* path,
                                   const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignImgEx(). */
QL_API int tFunc_SaveForeignImgEx(int nImgType, const PERSONINFO_FOR* record, char* path,
                                  const char* pLogoMsg, int flag);
/** See APP_ID_SaveForeignImgEx_FP(). */
QL_API int tFunc_SaveForeignImgEx_FP(int nImgType, const PERSONINFO_FOR_FP* record, char* path,
                                     const char* pLogoMsg, int flag);
/** See APP_ID_SaveGatImgEx(). */
QL_API int tFunc_SaveGatImgEx(int nImgType, const PERSONINFO_GAT* record, char* path,
                              const char* pLogoMsg, int flag);
/** See APP_ID_SaveGatImgEx_FP(). */
QL_API int tFunc_SaveGatImgEx_FP(int nImgType, const PERSONINFO_GAT_FP* record, char* path,
                                 const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectImg(). */
QL_API int tFunc_SaveCollectImg(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                                const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectImgEx(). */
QL_API int tFunc_SaveCollectImgEx(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                                  const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectImgEx_FP(). */
QL_API int tFunc_SaveCollectImgEx_FP(int nImgType, const PERSONINFO_COLLECT_FP* record, char* path,
                                     const char* pLogoMsg, int flag);
/** See APP_ID_SaveCollectInfoImgEx(). */
QL_API int tFunc_SaveCollectInfoImgEx(int nImgType, const char* json, char* path,
                                      const char* pLogoMsg, int flag);
/** @} */

/** @name Base64 text
 *  Text of the image `nImgType`. No image file has a name here, so that they end in -2005
 *  (published -100) for a record of the right kind and leave `out` alone. `out` should nevertheless
 *  hold the base64 text of a BMP file and its zero, 51,817 bytes, zero-filled; `capacity` is not
 *  looked at.
 *  @{ */
/** Resident or foreigner's card. */
QL_API int APP_ID_GetImgBase64(int nImgType, const PERSONINFO* record, char* out, int capacity);
/** The same, record with templates. */
QL_API int APP_ID_GetImgBase64_FP(int nImgType, const PERSONINFO_FP* record, char* out,
                                  int capacity);
/** Permit. */
QL_API int APP_ID_GetGATImgBase64(int nImgType, const PERSONINFO_GAT* record, char* out,
                                  int capacity);
/** Any card, from its JSON text. */
QL_API int APP_ID_GetImgCollectInfoBase64(int nImgType, const char* json, char* out, int capacity);
/** Any card; also takes a record with templates. */
QL_API int APP_ID_GetImgCollectBase64(int nImgType, const PERSONINFO_COLLECT* record, char* out,
                                      int capacity);
/** See APP_ID_GetImgBase64(). */
QL_API int tFunc_GetImgBase64(int nImgType, const PERSONINFO* record, char* out, int capacity);
/** See APP_ID_GetImgBase64_FP(). */
QL_API int tFunc_GetImgBase64_FP(int nImgType, const PERSONINFO_FP* record, char* out,
                                 int capacity);
/** See APP_ID_GetGATImgBase64(). */
QL_API int tFunc_GetGATImgBase64(int nImgType, const PERSONINFO_GAT* record, char* out,
                                 int capacity);
/** See APP_ID_GetImgCollectInfoBase64(). */
QL_API int tFunc_GetImgCollectInfoBase64(int nImgType, const char* json, char* out, int capacity);
/** See APP_ID_GetImgCollectBase64(). */
QL_API int tFunc_GetImgCollectBase64(int nImgType, const PERSONINFO_COLLECT* record, char* out,
                                     int capacity);
/** @} */

/** @name Composers
 *  Called with the JSON text of a record. They draw nothing and return 0.
 *  @{ */
/** Front side. */
QL_API int tFuncSaveFontImg(const char* json, const char* path, const char* pLogoMsg, int flag);
/** Back side. */
QL_API int tFuncSavaBackImage(const char* json, const char* path, const char* pLogoMsg, int flag);
/** Whole card. */
QL_API int tFuncSaveImg(const char* json, const char* path, const char* pLogoMsg, int flag);
/** @} */

QL_END_DECLS

#endif
