// The caller's device text, taken apart into a transport description.
#ifndef QUILLONID_LINK_DEVICE_TEXT_H
#define QUILLONID_LINK_DEVICE_TEXT_H

#include "quillonid/transport.h"

// How a text changes the connection type that is reported upward.
inline constexpr int kKeepConnectType = -1;

struct DeviceText {
  int result;        // 0, -2 (not understood) or -50 (a path that is too long)
  int connect_type;  // or kKeepConnectType
};

// Fills the fields that the text decides. `first_baud` is the speed to open a serial port at,
// `baud` what the caller asked for.
DeviceText ParseDeviceText(const char* device, int baud, int first_baud, int aux_param,
                           QL_TRANSPORT_DESCRIPTION* description);

#endif
