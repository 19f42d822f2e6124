/* SPDX-License-Identifier: MIT */
/** @file
 *  Transports: serial port, terminal auxiliary port, USB HID through libusb-1.0, and the dispatcher
 *  that routes to the one in use. One link at a time for the whole process. */
#ifndef QUILLONID_TRANSPORT_H
#define QUILLONID_TRANSPORT_H

#include <stdint.h>

#include "quillonid/export.h"

QL_BEGIN_DECLS

/** Tells whether a reply is complete: 0 when it is, any other value when more is needed. */
typedef int (*QL_END_CONDITION)(const unsigned char* buffer, int count);

/** Connection kinds of a transport description. */
enum QL_CONNECTION_KIND {
  QL_KIND_SERIAL = 1,    /**< serial or auxiliary port */
  QL_KIND_PCSC = 2,      /**< refused */
  QL_KIND_SDT = 3,       /**< refused */
  QL_KIND_AUX = 4,       /**< refused */
  QL_KIND_BLUETOOTH = 6, /**< refused */
  QL_KIND_USB = 7        /**< USB HID through libusb */
};

/** What to open and how to read from it. */
typedef struct QL_TRANSPORT_DESCRIPTION {
  uint32_t reserved;      /**< 0 */
  uint32_t nKind;         /**< a connection kind */
  uint32_t nSlot;         /**< reader slot; must be 0 */
  uint32_t nPid;          /**< USB product id */
  uint32_t nVid;          /**< USB vendor id */
  uint32_t nPort;         /**< number behind "COM" */
  uint32_t nBaud;         /**< bit/s */
  uint32_t nAuxNumber;    /**< 1 or more: auxiliary port of the terminal, for kind 1 */
  uint32_t nAuxParam;     /**< terminal family */
  uint32_t nAuxCloseFlag; /**< non-zero: switch the terminal around the session */
  char szPath[256];       /**< device path, zero-terminated */
  char szBluetooth[128];  /**< Bluetooth address, zero-terminated */
  int32_t nTimeOut;       /**< read time in seconds */
  QL_END_CONDITION pEnd;  /**< end condition or null */
} QL_TRANSPORT_DESCRIPTION;

/** What the dispatcher keeps of the open transport. */
typedef struct QL_SAVED_PARAMETERS {
  int32_t nTimeOut;       /**< seconds left for reads */
  QL_END_CONDITION pEnd;  /**< end condition or null */
  uint32_t nKind;         /**< connection kind */
  uint32_t nAuxCloseFlag; /**< as in the description */
  int32_t nAuxSelector;   /**< 1 or more: auxiliary port */
} QL_SAVED_PARAMETERS;

/** @name Serial port: raw, 8 data bits, no parity, 1 stop bit
 *  @{ */

/** Opens `path` at `baud` bit/s; a rate that is not listed becomes 9600. An open port is closed
 *  first. Returns 0, -3 (cannot be opened) or -1 (its settings cannot be read or applied); after a
 *  failure no port is open. */
QL_API int COMM_Com_OpenLinux(const char* path, int baud);
/** Sends `len` bytes. Returns the bytes written; -2 without a port, data or length. */
QL_API int COMM_Com_WriteLinux(const unsigned char* data, int len);
/** Reads until `wanted` bytes, the end condition, the time limit (whole seconds) or a cancel.
 * Returns the bytes read, -2 (no port, no buffer), -55 (read failed), -56 (time) or -57
 * (cancelled). */
QL_API int COMM_Com_ReadLinux(unsigned char* buffer, uint32_t wanted, int timeout_s,
                              QL_END_CONDITION end_condition);
/** Ends a running read within 0.1 s; may be called from another thread. Returns 0, or -57 when the
 *  descriptor is 0. */
QL_API int COMM_Com_CancelLinuxRead(void);
/** Restores the line settings and closes. Returns 0. */
QL_API int COMM_Com_CloseLinux(void);
/** Discards input that has arrived. */
QL_API void ClearReceiveBuffer(void);
QL_API int ReadBlock(unsigned char* buffer, int len);        /**< one read(); its result */
QL_API int WriteBlock(const unsigned char* buffer, int len); /**< one write(); its result */
QL_API int ReadUnBlock(unsigned char* buffer, int len);      /**< one read() within 1 s, else 0 */
QL_API int WriteUnBlock(const unsigned char* buffer,
                        int len); /**< one write() within 1 s, else 0 */
/** Sends `len` bytes. Returns the bytes written; -2 without a port, data or length. */
QL_API int QL_SendDataToTransPort(const unsigned char* data, int len);
/** Uses `fd` as the open port. Returns 0. */
QL_API int SetAuxFd(int fd);
/** Restores the line settings of the open port. Returns 0. */
QL_API int ResetAux(void);
/** @} */

/** @name Terminal auxiliary port: the terminal on standard output passes bytes on
 *  @{ */

/** Opens the terminal on standard output as a serial port and its auxiliary port behind it. Returns
 *  0, the serial port's code, or -1 when the opening sequence was refused. */
QL_API int COMM_Com_OpenLinuxAux(uint32_t family, uint32_t aux_number, uint32_t baud,
                                 uint32_t mode_flag);
/** Sends the family's opening sequence. Returns 0, or -2 for `aux_number` below 1. */
QL_API int COMM_Com_OpenAuxPort(uint32_t family, uint32_t aux_number, uint32_t baud,
                                uint32_t mode_flag);
/** Writes the opening sequence of family 1 with its zero to `out` (64 bytes). Returns 0. */
QL_API int Star_GetOpenAuxCmd(uint32_t aux_number, uint32_t baud, char* out);
/** Sends prefix, data and suffix. Returns the data's result; -2 without data or length. */
QL_API int COMM_Com_WriteLinuxAux(const unsigned char* data, int len);
/** As COMM_Com_ReadLinux(). */
QL_API int COMM_Com_ReadLinuxAux(unsigned char* buffer, uint32_t wanted, int timeout_s,
                                 QL_END_CONDITION end_condition);
/** Closes auxiliary port and serial port. Returns 0. */
QL_API int COMM_Com_CloseLinuxAux(uint32_t mode_flag);
/** Sends the family's closing sequence. Returns 0. */
QL_API int COMM_Com_CloseAuxPort(uint32_t mode_flag);
/** @} */

/** @name USB HID: interface 0, endpoints 0x01 and 0x81
 *  @{ */

/** Opens the first device with these ids; an open device stays, whatever its ids. Returns 0, -50
 * (no such device) or -3 (it cannot be opened or claimed). */
QL_API int COMM_Hid_OpenLinuxUsbLibHid(uint32_t vendor_id, uint32_t product_id);
/** Sends `len` bytes. Returns `len`, -50 (not open) or -54 (transfer failed). */
QL_API int COMM_Hid_WriteLinuxUsbLibHid(const unsigned char* data, uint32_t len);
/** Reads until `wanted` bytes, the end condition or the time limit (seconds; a negative one ends
 *  after the first pass). Returns the length up to the last non-zero byte, 0 on time-out, -50. */
QL_API int COMM_Hid_ReadLinuxUsbLibHid(unsigned char* buffer, int wanted, uint32_t timeout_s,
                                       QL_END_CONDITION end_condition);
/** Releases and closes the device. Returns 0. */
QL_API int COMM_Hid_CloseLinuxUsbLibHid(void);
/** Does nothing and returns -57: a USB read cannot be cancelled. */
QL_API int COMM_Hid_CancelLinuxUsbLibHid(void);
/** 1: trailing zero bytes of every transfer are dropped (as at start). */
QL_API void COMM_Hid_SetLinuxHidClearZero(uint32_t flag);
/** @} */

/** @name Dispatcher
 *  Each returns its transport's result, or -1 for a kind without one.
 *  @{ */
QL_API int COMM_Dev_OpenTransPort(
    QL_TRANSPORT_DESCRIPTION* description); /**< opens and keeps the read settings */
QL_API int COMM_Dev_WriteDataToTransPort(const unsigned char* data,
                                         int len); /**< bytes written, or a negative code */
QL_API int COMM_Dev_ReadDataFromTransPort(
    unsigned char* buffer,
    int max); /**< bytes read, or a negative code; takes its seconds off the kept time */
QL_API int COMM_Dev_CloseTransPort(void);           /**< closes; the kind stays kept */
QL_API int COMM_Dev_CancelRead(void);               /**< ends a running serial read */
QL_API int COMM_Dev_ChangeReadTimeOut(int seconds); /**< sets the seconds left for reads; 0 */
QL_API int COMM_Dev_ChangeEndCondition(
    QL_END_CONDITION end_condition);                /**< sets the end condition; 0 */
QL_API int COMM_Dev_SetHidClearZero(uint32_t flag); /**< sets the USB trailing-zero flag; 0 */
QL_API int COMM_Dev_ChangeTermParam(
    QL_TRANSPORT_DESCRIPTION* description); /**< keeps the read settings without opening; 0 */
QL_API int COMM_Dev_UseComm(int x);         /**< returns its argument */
QL_API int COMM_Dev_Linux_OpenTransPort(
    QL_TRANSPORT_DESCRIPTION* description); /**< see COMM_Dev_OpenTransPort() */
QL_API int COMM_Dev_Linux_WriteDataToTransPort(const unsigned char* data,
                                               int len); /**< see COMM_Dev_WriteDataToTransPort() */
QL_API int COMM_Dev_Linux_ReadDataFromTransPort(
    unsigned char* buffer, int max);                   /**< see COMM_Dev_ReadDataFromTransPort() */
QL_API int COMM_Dev_Linux_CloseTransPort(void);        /**< see COMM_Dev_CloseTransPort() */
QL_API int COMM_Dev_Linux_CancelLinuxRead(void);       /**< see COMM_Dev_CancelRead() */
QL_API int COMM_Dev_Linux_ChangeReadTime(int seconds); /**< see COMM_Dev_ChangeReadTimeOut() */
QL_API int COMM_Dev_Linux_ChangeEndCondition(
    QL_END_CONDITION end_condition); /**< see COMM_Dev_ChangeEndCondition() */
QL_API int COMM_Dev_Linux_SetLinuxHidClearZero(
    uint32_t flag); /**< see COMM_Dev_SetHidClearZero() */
QL_API int COMM_Dev_Linux_ChangeTermParam(
    QL_TRANSPORT_DESCRIPTION* description); /**< see COMM_Dev_ChangeTermParam() */
/** Overwrites what the dispatcher keeps. Returns 0. */
QL_API int SetBackUpParam(const QL_SAVED_PARAMETERS* parameters);
/** @} */

QL_END_DECLS

#endif
