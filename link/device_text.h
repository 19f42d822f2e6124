// What a device string names: "HID", "/dev/ttyS0" and the like.
#ifndef QUILLONID_LINK_DEVICE_TEXT_H
#define QUILLONID_LINK_DEVICE_TEXT_H

#include <cstdint>

#include "quillonid/transport.h"

struct DeviceText {
  const char* device;
  int baud;        // of a "COM" port: 9600 or 115200
  int first_baud;  // at which a serial reader is reached first
  int aux_param;
};

// Fills the fields of `description` that the string speaks of, and `connect_type` where its keyword
// has one. Returns 0, RET_PUB_INVAL_PARAM for a string or baud rate that is not understood, or
// RET_PUB_DEVICE_ERROR for a path that does not fit; after a failure the kind is the one before.
int ReadDeviceText(const DeviceText& text, QL_TRANSPORT_DESCRIPTION* description,
                   std::uint32_t* connect_type);

#endif
