// Terminal auxiliary port: the terminal on standard output is told by escape sequences to pass
// bytes on to the reader behind it. Reading, writing and the descriptor are the serial port's.
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "link/str.h"
#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "support/log.h"
#include "transport/serial.h"

namespace {

#define ESC "\x1B"

// The open auxiliary port. Replaced as a whole by COMM_Com_OpenAuxPort; a close keeps it.
constinit struct {
  std::uint32_t family;     // 1 to 5; anything else works as 1
  std::string_view prefix;  // sent before every write
  std::string_view suffix;  // sent after it
} g_AuxOp = {};

// Sequences of a terminal family that take no numbers.
struct Family {
  char opening_end[20];  // follows the opening sequence's first part
  char prefix[8];
  char suffix[8];
  char closing[16];
};
constexpr Family kFamilies[] = {
    {ESC "[/54l" ESC "[/53h" ESC "[/50h", ESC "[/51h", ESC "[/51l", ESC "[/51l" ESC "[/50l"},
    {"",                                  "",          "",          ESC "[<"               },
    {"",                                  ESC "[/|",   "|",         ESC "[/M"              },
    {ESC "[/54l" ESC "[/53h" ESC "[/50h", ESC "[/51h", ESC "[/51l", ESC "[/51l" ESC "[/50l"},
    {ESC "!b",                            "",          "",          ESC "!P"               },
};

constexpr char kEnterMode[] = ESC "[2h";
constexpr char kLeaveMode[] = ESC "[2l";

const Family& Sequences(std::uint32_t family) {
  return kFamilies[family >= 1 && family <= std::size(kFamilies) ? family - 1 : 0];
}

// Rate, baud code of families 1 and 4, data code of family 3. The first row also serves a rate that
// is not listed. On purpose: the last data code is a rate.
struct AuxRate {
  std::uint32_t baud;
  int baud_code;
  int data_code;
};
constexpr AuxRate kRates[] = {
    {9600,   0,  8   },
    {4800,   1,  7   },
    {2400,   2,  6   },
    {1200,   3,  5   },
    {600,    5,  4   },
    {300,    6,  3   },
    {19200,  10, 9   },
    {38400,  11, 8   },
    {115200, 12, 8   },
    {230400, 8,  9600},
};

const AuxRate& Rate(std::uint32_t baud) {
  const AuxRate* found = std::find_if(std::begin(kRates), std::end(kRates),
                                      [baud](const AuxRate& rate) { return rate.baud == baud; });
  return found != std::end(kRates) ? *found : kRates[0];
}

// What a family calls its ports 1 to 4; the last entry serves any other number.
struct Port {
  char letter;     // families 1 and 4
  int zero_based;  // family 2
  int number;      // family 3
  int code;        // family 5
};
constexpr Port kPorts[] = {
    {'Y', 0, 1, 45},
    {'Z', 1, 2, 54},
    {'X', 2, 3, 60},
    {'V', 3, 4, 45},
    {'Y', 0, 1, 45},
};

const Port& PortNames(std::uint32_t aux_number) {
  constexpr std::uint32_t kOther = std::size(kPorts) - 1;
  return kPorts[aux_number >= 1 && aux_number <= kOther ? aux_number - 1 : kOther];
}

constexpr std::size_t kOpeningSize = 64;  // the longest sequence takes 30 with its zero

void MakeOpening(std::uint32_t family, std::uint32_t aux_number, std::uint32_t baud, char* out) {
  const Port& port = PortNames(aux_number);
  const AuxRate& rate = Rate(baud);
  const char* end = Sequences(family).opening_end;
  switch (family) {
    case 2:
      std::snprintf(out, kOpeningSize, ESC "[%d>%s", port.zero_based, end);
      break;
    case 3:
      std::snprintf(out, kOpeningSize, ESC "[/%d;%d;%d;%d;%d;%dM%s", port.number, 1, rate.data_code,
                    3, 1, 0, end);
      break;
    case 5:
      std::snprintf(out, kOpeningSize, ESC "!%d;1m%s", port.code, end);
      break;
    default:
      std::snprintf(out, kOpeningSize, ESC "!%d;%d;%d;%d%c%s", rate.baud_code, 0, 0, 0, port.letter,
                    end);
      break;
  }
}

// Nothing is sent for an empty text. A sequence that does not get through is not noticed: the
// reader's silence tells.
void Send(std::string_view text) {
  QL_SendDataToTransPort(reinterpret_cast<const unsigned char*>(text.data()),
                         static_cast<int>(text.size()));
}

}  // namespace

QL_API int Star_GetOpenAuxCmd(std::uint32_t aux_number, std::uint32_t baud, char* out) {
  if (!out) return RET_PUB_INVAL_PARAM;
  MakeOpening(1, aux_number, baud, out);
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Com_OpenAuxPort(std::uint32_t family, std::uint32_t aux_number, std::uint32_t baud,
                                std::uint32_t mode_flag) {
  LOG_DEVICE("[%s ] Start ", __func__);
  if (aux_number < 1) return RET_PUB_INVAL_PARAM;
  LOG_DEVICE(" g_AuxFd = %d ", SerialDescriptor());

  const Family& sequences = Sequences(family);
  g_AuxOp = {family, sequences.prefix, sequences.suffix};
  char opening[kOpeningSize] = {};
  MakeOpening(family, aux_number, baud, opening);

  if (mode_flag) {
    LOG_DEVICE(" send ESC [2h ");
    Send(kEnterMode);
  }
  Send(opening);
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Com_CloseAuxPort(std::uint32_t mode_flag) {
  LOG_DEVICE("[%s ] Start ", __func__);
  LOG_DEVICE(" g_AuxFd = %d ", SerialDescriptor());
  Send(Sequences(g_AuxOp.family).closing);
  if (mode_flag) {
    LOG_DEVICE(" send ESC [2l ");
    Send(kLeaveMode);
  }
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Com_OpenLinuxAux(std::uint32_t family, std::uint32_t aux_number, std::uint32_t baud,
                                 std::uint32_t mode_flag) {
  LOG_DEVICE("[%s ] Start ", __func__);
  char name[PATH_MAX];
  if (ttyname_r(STDOUT_FILENO, name, sizeof name) != 0) {
    COMM_Com_CloseLinux();  // A failed open leaves no port open.
    return RET_PUB_OPEN_ERROR;
  }
  Str_strsTrim(name);
  LOG_DEVICE("LinuxOpenPort szTtyName =%s\r\n", name);

  const int opened = COMM_Com_OpenLinux(name, static_cast<int>(baud));
  if (opened != RET_PUB_SUCCESS) return opened;
  if (COMM_Com_OpenAuxPort(family, aux_number, baud, mode_flag) != RET_PUB_SUCCESS) {
    COMM_Com_CloseLinux();
    return -1;
  }
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Com_WriteLinuxAux(const unsigned char* data, int len) {
  if (!data || len <= 0) return RET_PUB_INVAL_PARAM;
  Send(g_AuxOp.prefix);
  const int sent = COMM_Com_WriteLinux(data, len);
  Send(g_AuxOp.suffix);
  return sent;
}

QL_API int COMM_Com_ReadLinuxAux(unsigned char* buffer, std::uint32_t wanted, int timeout_s,
                                 QL_END_CONDITION end_condition) {
  return COMM_Com_ReadLinux(buffer, wanted, timeout_s, end_condition);
}

QL_API int COMM_Com_CloseLinuxAux(std::uint32_t mode_flag) {
  if (SerialDescriptor() < 0) return RET_PUB_SUCCESS;
  COMM_Com_CloseAuxPort(mode_flag);
  COMM_Com_CloseLinux();
  return RET_PUB_SUCCESS;
}
