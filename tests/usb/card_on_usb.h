// A simulated USB reader with a specimen card on it, and reads of that card.
#ifndef QUILLONID_TESTS_USB_CARD_ON_USB_H
#define QUILLONID_TESTS_USB_CARD_ON_USB_H

#include <string>
#include <utility>

#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "simulator/usb/card_reader.h"
#include "tests/usb/open_reader.h"

// As most readers are: a HID device with reports of 64 bytes.
inline simulator::UsbTraits HidTraits() { return {}; }

// Answers in packets as short as they come, so that no transfer waits for its time limit.
inline simulator::UsbTraits QuickTraits() { return {.hid = false, .padded = false}; }

class CardOnUsb {
 public:
  explicit CardOnUsb(simulator::UsbTraits traits = QuickTraits(),
                     simulator::Card card = simulator::MakeCard("resident"))
      : reader(std::move(traits)) {
    module.PutCard(std::move(card));
    simulator::ServeCards(reader, module);
  }

  simulator::CardModule module;
  SimulatedUsbReader reader;
};

struct NativeRead {
  int result;
  simulator::Bytes data;
};

inline NativeRead ReadNative(int timeout_s = 10, bool fingerprints = false) {
  simulator::Bytes data(4096);
  int length = 0;
  const int result = fingerprints
                         ? ReadIDCardInfo_FP("HID", "", 115200, 0, timeout_s, data.data(), &length)
                         : ReadIDCardInfo("HID", "", 115200, 0, timeout_s, data.data(), &length);
  data.resize(static_cast<std::size_t>(length));
  return {result, data};
}

struct JsonRead {
  int result;
  std::string text;
};

inline JsonRead ReadJson(const char* device, bool fingerprints = false) {
  char no_photo_file[] = "";
  std::string text(8192, '\0');
  const int result = APP_ID_ReadCollectIDCardInfo(device, "", 115200, 10, fingerprints ? 1 : 0,
                                                  no_photo_file, text.data());
  text.resize(text.find('\0'));
  return {result, text};
}

#endif
