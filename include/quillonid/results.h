/* SPDX-License-Identifier: MIT */
/** @file
 *  Result codes. The `APP_ID_` and `Linux_QL_ID_` functions return published codes; the functions
 *  below them return internal ones. 0 is success; a positive number is a count. */
#ifndef QUILLONID_RESULTS_H
#define QUILLONID_RESULTS_H

#include "quillonid/export.h"

QL_BEGIN_DECLS

/** Published codes: the only negative results an application sees from the read, image and cancel
 *  functions. There is no -6. */
enum QL_RESULT {
  QL_SUCCESS = 0,        /**< done */
  QL_DEVICE_ERROR = -1,  /**< the reader cannot be opened, written or read */
  QL_RECEIVE_ERROR = -2, /**< the reader's answer was missing or malformed */
  QL_SEND_ERROR = -3,    /**< sending to the reader failed */
  QL_CHECK_ERROR = -4,   /**< a reader packet failed its check value or framing */
  QL_TIMEOUT = -5,       /**< the time limit ran out: no card, or a reader that does not answer */
  QL_PHOTO_DECODE_ERROR = -7, /**< text read, photo not decoded or its file not written */
  QL_SAVE_IMAGE_ERROR = -8,   /**< an image file could not be saved */
  QL_CANCELLED = -9,          /**< the read was cancelled */
  QL_NO_CARD = -10,           /**< the card module reports that no card is present */
  QL_CARD_TYPE_ERROR = -11,   /**< another kind of card than the function reads */
  QL_UNSUPPORTED = -12,       /**< the reader does not support identity cards */
  QL_INVALID_ARGUMENT = -13,  /**< an argument is missing or out of range */
  QL_OTHER_ERROR = -100       /**< any other failure */
};

/** Internal codes, returned by everything below the published functions. */
enum QL_INTERNAL_RESULT {
  RET_PUB_SUCCESS = 0,
  RET_PUB_INVAL_PARAM = -2,             /**< argument out of range or missing; port not open */
  RET_PUB_OPEN_ERROR = -3,              /**< serial port or USB device cannot be opened or set up */
  RET_PUB_CHECK_ERROR = -4,             /**< reader packet fails its check value or framing */
  RET_BUSI_ID_DEVICE_CHECK_ERR = -6,    /**< unexpected answer to the device check */
  RET_PUB_DEVICE_ERROR = -50,           /**< device cannot be opened, written or read */
  RET_PUB_WRITE_ERROR = -54,            /**< sending to the reader failed */
  RET_PUB_READ_ERROR = -55,             /**< receiving failed, or a malformed card-module reply */
  RET_PUB_TIMEOUT = -56,                /**< the read time ran out */
  RET_PUB_CANCEL = -57,                 /**< cancelled by the caller */
  RET_BUSI_ID_PHOTO_DECODE_ERR = -2000, /**< photo not decoded or not written */
  RET_BUSI_ID_SAVE_IMAGE_ERR = -2001,   /**< image file not saved */
  RET_BUSI_ID_UNSUPPORT = -2002,        /**< card module: data not supported */
  RET_BUSI_ID_NO_CARD = -2003,          /**< card module: no card */
  RET_BUSI_ID_CARD_TYPE_ERR = -2004, /**< another kind of card, or a record that cannot be filled */
  RET_BUSI_ID_OTHER_ERR = -2005,     /**< other failure of the image and base64 services */
  RET_BUSI_ID_IC_POWERON = -2007,    /**< card module: IC power-on status on select */
  RET_BUSI_ID_PHOTO_LEN_ERR = -2008  /**< photo of an unusable length */
};

/** Size of a message buffer in bytes. */
#define QL_MESSAGE_SIZE 128

/** Writes the published code for the internal code `nInErrCode` to `*pOut`. Codes of 0 or more pass
 *  unchanged; a code without a published counterpart becomes #QL_OTHER_ERROR. A null `pOut` is
 *  ignored. */
QL_API void TY_Id_ConvertErr(int nInErrCode, int* pOut);

/** Writes the message for a published code to `pMsg` and returns `pMsg`. Messages are Chinese, GBK
 *  (code page 936), zero-terminated, at most 17 bytes with the zero; an unknown code gives a
 *  message in UTF-8, 13 bytes with the zero. Provide #QL_MESSAGE_SIZE bytes. Null gives null. */
QL_API char* TY_IDGetErrMessage(int nInErrCode, char* pMsg);

QL_END_DECLS

#endif
