// The card module behind USB: the same cards, answers and named faults as on a tty.
#ifndef QUILLONID_SIMULATOR_USB_CARD_READER_H
#define QUILLONID_SIMULATOR_USB_CARD_READER_H

#include "simulator/card_module.h"
#include "simulator/usb/device.h"

namespace simulator {

// From here on the module answers what the host sends to the device. A module that hangs up pulls
// the plug. Both must live until the host has closed the device.
void ServeCards(UsbDevice& device, CardModule& module);

}  // namespace simulator

#endif
