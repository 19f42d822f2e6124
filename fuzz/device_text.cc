// Device texts: what they name, against a model, and never a byte outside the description's fields.
#include "link/device_text.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"

namespace {

constexpr std::uint32_t kConnectBefore = 77;

std::string UpperAscii(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  }
  return text;
}

bool Begins(const std::string& text, const char* start) { return text.rfind(start, 0) == 0; }

std::uint32_t Number(const std::string& text) {
  const long value = std::strtol(text.c_str(), nullptr, 10);
  const long kept = value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : value;
  return static_cast<std::uint32_t>(static_cast<int>(kept));
}

template <std::size_t kSize>
void SetField(char (&field)[kSize], const std::string& text) {
  std::memset(field, 0, kSize);
  std::memcpy(field, text.data(), text.size());
}

struct Named {
  int result;
  QL_TRANSPORT_DESCRIPTION description;
  std::uint32_t connect_type = kConnectBefore;
};

// What opening has to know of `text`; `before` is the description as it was.
Named Name(const DeviceText& given, const QL_TRANSPORT_DESCRIPTION& before) {
  const std::string text = given.device, upper = UpperAscii(text);
  Named named = {0, before};
  QL_TRANSPORT_DESCRIPTION& to = named.description;
  if (upper == "HID" || text == "1001") {
    to.nKind = QL_KIND_USB;
    named.connect_type = 0;
  } else if (upper == "SDT") {
    to.nKind = QL_KIND_SDT;
    named.connect_type = 3;
  } else if (upper == "PCSC") {
    to.nKind = QL_KIND_PCSC;
    named.connect_type = 2;
  } else if (Begins(upper, "AUX")) {
    to.nKind = QL_KIND_AUX;
    to.nAuxNumber = Number(text.substr(3));
    to.nAuxParam = static_cast<std::uint32_t>(given.aux_param);
    to.nAuxCloseFlag = 1;
    return named;
  } else if (Begins(upper, "BLUETOOTH") && text.size() == 9 + 1 + 17) {
    to.nKind = QL_KIND_BLUETOOTH;
    SetField(to.szBluetooth, text.substr(10));
  } else if (Begins(text, "/dev")) {
    if (text.size() > 255) {
      named.result = -50;
    } else {
      to.nKind = QL_KIND_SERIAL;
      SetField(to.szPath, text);
      to.nBaud = static_cast<std::uint32_t>(given.first_baud);
    }
  } else if (Begins(text, "COM")) {
    if (given.baud != 9600 && given.baud != 115200) {
      named.result = -2;
    } else {
      to.nKind = QL_KIND_SERIAL;
      to.nPort = Number(text.substr(3));
      SetField(to.szPath, "");
      to.nBaud = static_cast<std::uint32_t>(given.first_baud);
    }
  } else {
    named.result = -2;
    return named;
  }
  to.nAuxNumber = 0;  // it does not outlive its text
  return named;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  constexpr int kBauds[] = {9600, 115200, 19200, 0, -1};
  const int baud = kBauds[input.Between(0, 4)];
  const int first_baud = kBauds[input.Between(0, 4)];
  const int aux_param = input.Between(-128, 127);
  const Exact<char> device(input.RestAsText());
  const DeviceText text = {device.get(), baud, first_baud, aux_param};
  GuardedRecord<QL_TRANSPORT_DESCRIPTION> description(0x5A);
  QL_TRANSPORT_DESCRIPTION before;
  std::memcpy(&before, description.get(), sizeof before);
  std::uint32_t connect_type = kConnectBefore;

  const int result = ReadDeviceText(text, description.get(), &connect_type);

  const Named expected = Name(text, before);
  FUZZ_CHECK(result == expected.result);
  FUZZ_CHECK(connect_type == expected.connect_type);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&expected.description);
  FUZZ_CHECK(std::equal(bytes, bytes + sizeof before, description.bytes().bytes()));
  return 0;
}
