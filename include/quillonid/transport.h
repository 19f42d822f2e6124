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

/** Opens `path` at `baud` bit/s and discards what had arrived; an open port is closed first.
 *  Listed rates: 300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400; any other
 *  becomes 9600. The path is opened for reading and writing, without O_NOCTTY: a service that
 *  leads its session and has no controlling terminal gets this one, and SIGHUP when the line goes
 *  away; let it hold another terminal or ignore SIGHUP. A tty that waits for a carrier keeps the
 *  open waiting. Returns 0, -3 (cannot be opened) or -1 (its settings cannot be read or applied);
 *  after a failure no port is open. */
QL_API int COMM_Com_OpenLinux(const char* path, int baud);
/** As QL_SendDataToTransPort(). */
QL_API int COMM_Com_WriteLinux(const unsigned char* data, int len);
/** Reads until `wanted` bytes, the end condition, the time limit or a cancel.
 *  @param buffer        room for `wanted` bytes
 *  @param wanted        at most 2147483647; 0 returns 0 at once
 *  @param timeout_s     whole seconds; the read ends between `timeout_s` and one second more. A
 *                       negative limit counts as 1
 *  @param end_condition null, or asked at least every 0.1 s, also when no byte has come yet
 *  @return the bytes read, -2 (no port, no buffer, `wanted` too large), -55 (read failed),
 *          -56 (time) or -57 (cancelled); bytes that came before are in the buffer */
QL_API int COMM_Com_ReadLinux(unsigned char* buffer, uint32_t wanted, int timeout_s,
                              QL_END_CONDITION end_condition);
/** Ends a running read, or a write that waits for the line, within 0.1 s; may be called from
 *  another thread. Without one it has no effect. Returns 0, or -57 when the port's descriptor is
 *  0: such a port cannot be cancelled. */
QL_API int COMM_Com_CancelLinuxRead(void);
/** Waits until the output has left, restores the line settings and closes. Output that is stuck for
 *  5 s, or leaves slower than at 300 bit/s, is discarded. Returns 0. */
QL_API int COMM_Com_CloseLinux(void);
/** Discards input that has arrived. */
QL_API void ClearReceiveBuffer(void);
/** One read() of up to `len` bytes; waits 0.1 s at most. Returns its result, or -2 without a
 *  port, a buffer or a length of 0 or more. */
QL_API int ReadBlock(unsigned char* buffer, int len);
/** One write(). Returns its result, or -2 as ReadBlock(). */
QL_API int WriteBlock(const unsigned char* buffer, int len);
/** ReadBlock() as soon as something has arrived; 0 when nothing does within 1 s. */
QL_API int ReadUnBlock(unsigned char* buffer, int len);
/** WriteBlock() as soon as the line takes bytes; when it does not within 1 s, pending output is
 *  discarded and the result is 0. */
QL_API int WriteUnBlock(const unsigned char* buffer, int len);
/** Sends `len` bytes. A line that takes no byte for over 5 s, or fewer in all than 300 bit/s would
 *  carry, a failure and a cancel end it early.
 *  Returns the bytes written; -2 without a port, data or a length above 0. */
QL_API int QL_SendDataToTransPort(const unsigned char* data, int len);
/** Makes `fd` the open port, -2 none. A port that was open is forgotten, not closed; from now on
 *  COMM_Com_CloseLinux() closes `fd`, without changing its line settings. Returns 0. */
QL_API int SetAuxFd(int fd);
/** Restores the line settings that COMM_Com_OpenLinux() found; the port stays open. Returns 0. */
QL_API int ResetAux(void);
/** @} */

/** @name Terminal auxiliary port: the terminal on standard output passes bytes on
 *  `family` is the terminal family, 1 to 5; any other value counts as 1. `aux_number` is the port,
 *  1 to 4; a higher one counts as the family's first. `mode_flag`: non-zero locks the keyboard
 *  of the terminal (KAM of ECMA-48) around the session. Call these functions in the foreground:
 *  the kernel stops a background process (SIGTTOU) that changes its terminal's line settings.
 *  @{ */

/** Opens the terminal on standard output as a serial port at `baud`, and its auxiliary port behind
 *  it. Returns 0; the serial port's code, -3 also when standard output is no terminal; or -1 for
 *  `aux_number` 0. */
QL_API int COMM_Com_OpenLinuxAux(uint32_t family, uint32_t aux_number, uint32_t baud,
                                 uint32_t mode_flag);
/** Sends the family's opening sequence on the open port and keeps what wraps the writes. Whether
 *  the bytes got through is not checked. Returns 0, or -2 for `aux_number` 0. */
QL_API int COMM_Com_OpenAuxPort(uint32_t family, uint32_t aux_number, uint32_t baud,
                                uint32_t mode_flag);
/** Writes the opening sequence of family 1 with its zero to `out`, a buffer of 64 bytes. Returns 0,
 *  or -2 for null. */
QL_API int Star_GetOpenAuxCmd(uint32_t aux_number, uint32_t baud, char* out);
/** Sends prefix, data and suffix. Returns the result of the data's write; -2 without data or a
 *  length above 0. */
QL_API int COMM_Com_WriteLinuxAux(const unsigned char* data, int len);
/** As COMM_Com_ReadLinux(). */
QL_API int COMM_Com_ReadLinuxAux(unsigned char* buffer, uint32_t wanted, int timeout_s,
                                 QL_END_CONDITION end_condition);
/** Closes the auxiliary port and the serial port. Returns 0. */
QL_API int COMM_Com_CloseLinuxAux(uint32_t mode_flag);
/** Sends the family's closing sequence. Returns 0. */
QL_API int COMM_Com_CloseAuxPort(uint32_t mode_flag);
/** @} */

/** @name USB HID: interface 0, endpoints 0x01 (out) and 0x81 (in)
 *  Bytes travel as they are, without report ids. One device at a time.
 *  @{ */

/** Opens the first device with these ids, resets it and takes interface 0 from the kernel's driver,
 *  which does not come back before the device is plugged in again. While a device is open, returns
 *  0 and keeps it, whatever the ids. Returns 0, -50 (no such device) or -3 (it cannot be opened or
 *  claimed, as when the reset makes it leave the bus and come back as a new device); after a
 *  failure nothing is open. */
QL_API int COMM_Hid_OpenLinuxUsbLibHid(uint32_t vendor_id, uint32_t product_id);
/** Sends `len` bytes in at most 5 transfers of at most 1 s each. Returns `len`, -50 (not open) or
 *  -54 (a transfer failed, or bytes are left after the fifth). */
QL_API int COMM_Hid_WriteLinuxUsbLibHid(const unsigned char* data, uint32_t len);
/** Reads in transfers of at most 1,024 bytes and 200 ms until `wanted` bytes are there, the end
 *  condition is met or the time limit has passed. `buffer` holds `wanted` bytes; what a transfer
 *  brings beyond them is lost. `timeout_s` is compared as a signed number of whole seconds; a
 *  negative one ends the read after its first transfer. Returns the length up to the last non-zero
 *  byte, 0 on time-out or when all bytes are zero, or -50 (not open). */
QL_API int COMM_Hid_ReadLinuxUsbLibHid(unsigned char* buffer, int wanted, uint32_t timeout_s,
                                       QL_END_CONDITION end_condition);
/** Releases interface 0 and closes the device. Returns 0, also when none is open. */
QL_API int COMM_Hid_CloseLinuxUsbLibHid(void);
/** Does nothing and returns -57: a USB read cannot be cancelled. */
QL_API int COMM_Hid_CancelLinuxUsbLibHid(void);
/** 1: trailing zero bytes of every transfer are dropped (as at start); any other value keeps them
 *  until the end of the read. */
QL_API void COMM_Hid_SetLinuxHidClearZero(uint32_t flag);
/** @} */

/** @name Dispatcher
 *  Each function returns its transport's result, -1 for a connection kind without a transport, -2
 *  for a null description. The functions with Linux in their name do the same without a log line.
 *  @{ */

/** Opens the transport of `description` and keeps its read settings. An open transport of the other
 *  kind is closed first. */
QL_API int COMM_Dev_OpenTransPort(QL_TRANSPORT_DESCRIPTION* description);
/** Sends `len` bytes. Returns the bytes written, or a negative code. */
QL_API int COMM_Dev_WriteDataToTransPort(const unsigned char* data, int len);
/** Reads up to `max` bytes with the kept end condition and the kept time, and takes the whole
 *  seconds it used off that time. Returns the bytes read, or a negative code. */
QL_API int COMM_Dev_ReadDataFromTransPort(unsigned char* buffer, int max);
/** Closes; what is kept stays kept. */
QL_API int COMM_Dev_CloseTransPort(void);
/** Ends a running serial read; may be called from another thread. */
QL_API int COMM_Dev_CancelRead(void);
/** Sets the seconds left for reads. Returns 0. */
QL_API int COMM_Dev_ChangeReadTimeOut(int seconds);
/** Sets the end condition; null for none. Returns 0. */
QL_API int COMM_Dev_ChangeEndCondition(QL_END_CONDITION end_condition);
/** COMM_Hid_SetLinuxHidClearZero(). Returns 0. */
QL_API int COMM_Dev_SetHidClearZero(uint32_t flag);
/** Keeps read time, end condition, kind and auxiliary close flag without opening. Returns 0. */
QL_API int COMM_Dev_ChangeTermParam(QL_TRANSPORT_DESCRIPTION* description);
/** Returns its argument. */
QL_API int COMM_Dev_UseComm(int x);

/** See COMM_Dev_OpenTransPort(). */
QL_API int COMM_Dev_Linux_OpenTransPort(QL_TRANSPORT_DESCRIPTION* description);
/** See COMM_Dev_WriteDataToTransPort(). */
QL_API int COMM_Dev_Linux_WriteDataToTransPort(const unsigned char* data, int len);
/** See COMM_Dev_ReadDataFromTransPort(). */
QL_API int COMM_Dev_Linux_ReadDataFromTransPort(unsigned char* buffer, int max);
/** See COMM_Dev_CloseTransPort(). */
QL_API int COMM_Dev_Linux_CloseTransPort(void);
/** See COMM_Dev_CancelRead(). */
QL_API int COMM_Dev_Linux_CancelLinuxRead(void);
/** See COMM_Dev_ChangeReadTimeOut(). */
QL_API int COMM_Dev_Linux_ChangeReadTime(int seconds);
/** See COMM_Dev_ChangeEndCondition(). */
QL_API int COMM_Dev_Linux_ChangeEndCondition(QL_END_CONDITION end_condition);
/** See COMM_Dev_SetHidClearZero(). */
QL_API int COMM_Dev_Linux_SetLinuxHidClearZero(uint32_t flag);
/** See COMM_Dev_ChangeTermParam(). */
QL_API int COMM_Dev_Linux_ChangeTermParam(QL_TRANSPORT_DESCRIPTION* description);

/** Overwrites everything that the dispatcher keeps. Returns 0, or -2 for null. */
QL_API int SetBackUpParam(const QL_SAVED_PARAMETERS* parameters);
/** @} */

QL_END_DECLS

#endif
