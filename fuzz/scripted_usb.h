// A libusb with a scripted reader behind it; its functions stand before the real ones.
#ifndef QUILLONID_FUZZ_SCRIPTED_USB_H
#define QUILLONID_FUZZ_SCRIPTED_USB_H

#include "fuzz/input.h"
#include "fuzz/scripted_card.h"

namespace scripted_usb {

// Takes from the script whether and how opening and transfers fail.
void Plug(Input* script, ScriptedCard* card);
void Unplug();

// Contexts, device lists, open handles and claimed interfaces that were not given back.
int Held();
bool Flawless();

}  // namespace scripted_usb

#endif
