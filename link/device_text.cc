#include "link/device_text.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "quillonid/results.h"
#include "support/log.h"

namespace {

// What follows the keyword.
enum class Rest : std::uint8_t { kNothing, kNumber, kAddress, kPath, kPort };

constexpr int kKeep = -1;
constexpr std::size_t kAddressSize = 17;

struct Keyword {
  char text[10];
  bool any_case;
  Rest rest;
  std::uint8_t kind;
  int connect_type;  // reported upward; kKeep leaves the one before
  char logged[16];
};

// In the order in which they are tried.
constexpr Keyword kKeywords[] = {
    {"HID",       true,  Rest::kNothing, QL_KIND_USB,       0,     "USE HID"       },
    {"1001",      true,  Rest::kNothing, QL_KIND_USB,       0,     "USE HID"       },
    {"SDT",       true,  Rest::kNothing, QL_KIND_SDT,       3,     "USE SDT"       },
    {"PCSC",      true,  Rest::kNothing, QL_KIND_PCSC,      2,     "USE PCSC"      },
    {"AUX",       true,  Rest::kNumber,  QL_KIND_AUX,       kKeep, "USE AUX"       },
    {"BLUETOOTH", true,  Rest::kAddress, QL_KIND_BLUETOOTH, kKeep, " USE BLUETOOTH"},
    {"/dev",      false, Rest::kPath,    QL_KIND_SERIAL,    kKeep, " USE DEV"      },
    {"COM",       false, Rest::kPort,    QL_KIND_SERIAL,    kKeep, ""              },
};

// ASCII alone, so that no locale changes what a keyword is.
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool StartsWith(std::string_view text, const Keyword& keyword) {
  const std::string_view start = keyword.text;
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(), [&](char expected, char c) {
           return expected == (keyword.any_case ? Upper(c) : c);
         });
}

bool Matches(std::string_view text, const Keyword& keyword) {
  if (!StartsWith(text, keyword)) return false;
  const std::size_t rest = text.size() - std::string_view(keyword.text).size();
  switch (keyword.rest) {
    case Rest::kNothing:
      return rest == 0;
    case Rest::kAddress:
      return rest == 1 + kAddressSize;  // one separator
    default:
      return true;
  }
}

// Decimal number at the start of a text, kept in the range of int.
std::uint32_t Number(const char* text) {
  const long number = std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX);
  return static_cast<std::uint32_t>(number);
}

void SetText(char* field, std::size_t size, std::string_view text) {
  std::memset(field, 0, size);
  std::copy(text.begin(), text.end(), field);
}

// Fills in what follows the keyword.
int ReadRest(const DeviceText& text, const Keyword& keyword,
             QL_TRANSPORT_DESCRIPTION* description) {
  const char* rest = text.device + std::strlen(keyword.text);
  switch (keyword.rest) {
    case Rest::kNothing:
      break;
    case Rest::kNumber:
      description->nAuxNumber = Number(rest);
      description->nAuxParam = static_cast<std::uint32_t>(text.aux_param);
      description->nAuxCloseFlag = 1;
      break;
    case Rest::kAddress:
      SetText(description->szBluetooth, sizeof description->szBluetooth, rest + 1);
      break;
    case Rest::kPath:
      // Never opened cut short: it could name another device.
      if (std::strlen(text.device) >= sizeof description->szPath) return RET_PUB_DEVICE_ERROR;
      SetText(description->szPath, sizeof description->szPath, text.device);
      description->nBaud = static_cast<std::uint32_t>(text.first_baud);
      LOG_DEVICE("szTermPath ======= %s ", description->szPath);
      break;
    case Rest::kPort:
      if (text.baud != 9600 && text.baud != 115200) return RET_PUB_INVAL_PARAM;
      description->nPort = Number(rest);
      // On purpose: without a path the open fails.
      SetText(description->szPath, sizeof description->szPath, "");
      description->nBaud = static_cast<std::uint32_t>(text.first_baud);
      LOG_DEVICE("szTermPath =    ** %s ***  ", description->szPath);
      break;
  }
  return RET_PUB_SUCCESS;
}

}  // namespace

int ReadDeviceText(const DeviceText& text, QL_TRANSPORT_DESCRIPTION* description,
                   std::uint32_t* connect_type) {
  const std::string_view device = text.device;
  const auto keyword =
      std::find_if(std::begin(kKeywords), std::end(kKeywords),
                   [device](const Keyword& candidate) { return Matches(device, candidate); });
  if (keyword == std::end(kKeywords)) return RET_PUB_INVAL_PARAM;

  if (keyword->logged[0] != '\0') LOG_DEVICE("%s", keyword->logged);
  // The number of an auxiliary port must not outlive its string: with it, a serial port would be
  // the terminal on standard output.
  description->nAuxNumber = 0;
  const int result = ReadRest(text, *keyword, description);
  if (result != RET_PUB_SUCCESS) return result;
  description->nKind = keyword->kind;
  if (keyword->connect_type != kKeep) {
    *connect_type = static_cast<std::uint32_t>(keyword->connect_type);
  }
  return RET_PUB_SUCCESS;
}
