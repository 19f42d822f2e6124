#include "link/device_text.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "link/str.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

constexpr std::size_t kBluetoothText = 27;     // word, one separator, address
constexpr std::size_t kBluetoothAddress = 10;  // where the address begins

// A text that is one whole word.
struct Keyword {
  char word[8];
  std::uint32_t kind;
  int connect_type;
  char logged[12];
};
constexpr Keyword kKeywords[] = {
    {"HID",  QL_KIND_USB,  0, "USE HID" },
    {"1001", QL_KIND_USB,  0, "USE HID" },
    {"SDT",  QL_KIND_SDT,  3, "USE SDT" },
    {"PCSC", QL_KIND_PCSC, 2, "USE PCSC"},
};

// Decimal number at the start of a text, kept in the range of int.
int Number(const char* text) {
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

void ParseAux(const char* device, int aux_param, QL_TRANSPORT_DESCRIPTION* description) {
  LOG_DEVICE("USE AUX");
  description->nKind = QL_KIND_AUX;
  description->nAuxNumber = static_cast<std::uint32_t>(Number(device + 3));
  description->nAuxParam = static_cast<std::uint32_t>(aux_param);
  description->nAuxCloseFlag = 1;
}

void ParseBluetooth(const char* device, QL_TRANSPORT_DESCRIPTION* description) {
  LOG_DEVICE(" USE BLUETOOTH");
  description->nKind = QL_KIND_BLUETOOTH;
  std::memset(description->szBluetooth, 0, sizeof description->szBluetooth);
  std::memcpy(description->szBluetooth, device + kBluetoothAddress,
              kBluetoothText - kBluetoothAddress);
}

int ParsePath(const char* device, int first_baud, QL_TRANSPORT_DESCRIPTION* description) {
  const std::size_t length = std::strlen(device);
  if (length >= sizeof description->szPath)
    return RET_PUB_DEVICE_ERROR;  // Never open a path that was cut.
  LOG_DEVICE(" USE DEV");
  description->nKind = QL_KIND_SERIAL;
  description->nBaud = static_cast<std::uint32_t>(first_baud);
  std::memset(description->szPath, 0, sizeof description->szPath);
  std::memcpy(description->szPath, device, length);
  LOG_DEVICE("szTermPath ======= %s ", description->szPath);
  return RET_PUB_SUCCESS;
}

// A number names no device here: the path stays empty, and the opening fails.
int ParseCom(const char* device, int baud, int first_baud, QL_TRANSPORT_DESCRIPTION* description) {
  if (baud != 9600 && baud != 115200) return RET_PUB_INVAL_PARAM;
  description->nKind = QL_KIND_SERIAL;
  description->nPort = static_cast<std::uint32_t>(Number(device + 3));
  description->nBaud = static_cast<std::uint32_t>(first_baud);
  std::memset(description->szPath, 0, sizeof description->szPath);
  LOG_DEVICE("szTermPath =    ** %s ***  ", description->szPath);
  return RET_PUB_SUCCESS;
}

}  // namespace

DeviceText ParseDeviceText(const char* device, int baud, int first_baud, int aux_param,
                           QL_TRANSPORT_DESCRIPTION* description) {
  // A number left over from an "AUX" text must not turn a serial port into the terminal's auxiliary
  // port.
  description->nAuxNumber = 0;
  for (const Keyword& row : kKeywords) {
    if (!EqualsIgnoringCase(device, row.word)) continue;
    LOG_DEVICE("%s", row.logged);
    description->nKind = row.kind;
    return {RET_PUB_SUCCESS, row.connect_type};
  }
  int result = RET_PUB_SUCCESS;
  if (StartsIgnoringCase(device, "AUX")) {
    ParseAux(device, aux_param, description);
  } else if (std::strlen(device) == kBluetoothText && StartsIgnoringCase(device, "BLUETOOTH")) {
    ParseBluetooth(device, description);
  } else if (std::strncmp(device, "/dev", 4) == 0) {
    result = ParsePath(device, first_baud, description);
  } else if (std::strncmp(device, "COM", 3) == 0) {
    result = ParseCom(device, baud, first_baud, description);
  } else {
    result = RET_PUB_INVAL_PARAM;
  }
  return {result, kKeepConnectType};
}
