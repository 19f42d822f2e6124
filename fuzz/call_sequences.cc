// Exported calls in any order, on a scripted line and a scripted libusb, with cancels while they
// wait: whatever came before, each call keeps its bounds and its buffers, and at the end nothing is
// held.
#include <cstring>
#include <optional>

#include "fuzz/allowed.h"
#include "fuzz/check.h"
#include "fuzz/data_calls.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/scripted_card.h"
#include "fuzz/scripted_tty.h"
#include "fuzz/scripted_usb.h"
#include "fuzz/session.h"
#include "fuzz/virtual_clock.h"
#include "quillonid/carddata.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "quillonid/transport.h"

namespace {

constexpr int kMostCalls = 12;
constexpr int kLongest = 5;  // seconds of any limit
constexpr std::size_t kReplySize = 4096;
constexpr int kStatusRoom = 128;  // of an answer to anything but a read

const char* DeviceOf(Input& input) {
  static constexpr const char* kDevices[] = {kScriptedTty, "HID", kScriptedTty, "hid", "COM1",
                                             "AUX1",       "SDT", "PCSC",       "",    nullptr};
  return kDevices[input.Byte() % std::size(kDevices)];
}

void ReadCard(Input& input) {
  session::Reading reading = {};
  reading.device = DeviceOf(input);
  reading.function = input.Between(0, session::kReaders - 1);
  reading.limit = input.Between(-1, kLongest);
  reading.baud = input.Flag() ? 9600 : 115200;
  session::TakeFlags(&input, &reading);  // A sequence is logged or not as a whole.
  FUZZ_CHECK(session::IsPublished(session::Read(reading)));
}

void ChangeSetting(Input& input) {
  const int value = input.Between(0, 2);
  switch (input.Byte() % 5) {
    case 0:
      APP_ID_SetSearchDirect(value);
      break;
    case 1:
      APP_ID_SetOneInstrReadInfo(value);
      break;
    case 2:
      QL_APP_Id_RaiseBaundFlag(value);
      break;
    case 3:
      APP_ID_IDCardAddPhotoDataToJsonFlag(value);
      break;
    default:
      COMM_Hid_SetLinuxHidClearZero(static_cast<std::uint32_t>(value));
      break;
  }
}

void AddUsbId(Input& input) {
  const int index = input.Between(-3, 12);
  const bool fits = index >= 0 && index <= 9;
  if (input.Flag()) {
    const int product = static_cast<int>(input.Word());
    FUZZ_CHECK(APP_ID_AddHID(index, product, 0x0403) == (fits ? 0 : -2));
    return;
  }
  const Exact<char> product(input.Text(6)), vendor(input.Text(6));
  const int result = Linux_QL_ID_AddHID(index, product.get(), vendor.get());
  FUZZ_CHECK(result == -2 || (result == 0 && fits));
}

void TakeNativeData(Input& input) {
  Guarded out(static_cast<std::size_t>(input.Between(0, 3000)));
  const int count = APP_ID_GetIdNativeData(out.bytes(), static_cast<int>(out.size()));
  FUZZ_CHECK(count == 0 || count == 1295 || count == 1297 || count == 2321);
  FUZZ_CHECK(out.UntouchedFrom(static_cast<std::size_t>(count)));
}

void TakeMessage(Input& input) {
  Guarded out(QL_MESSAGE_SIZE);
  FUZZ_CHECK(APP_ID_IDGetErrCodeMessage(input.Between(-200, 55), out.text()) == out.text());
  FUZZ_CHECK(out.Text().size() <= 16 && out.UntouchedFrom(out.Text().size() + 1));
}

void CardCommand(Input& input) {
  Guarded reply(kReplySize);
  int length = 77;
  const int limit = input.Between(-1, kLongest);
  int result = 0;
  switch (input.Byte() % 8) {
    case 0:
      result = CheckDevice();
      FUZZ_CHECK(allowed::Exchange(result, kStatusRoom) || result == -6);
      return;
    case 1:
      FUZZ_CHECK(allowed::OneOf(SearchCard(limit * 1000), {0, -56, -57}));
      return;
    case 2:
      FUZZ_CHECK(allowed::Exchange(SearchCardOneTime(limit), kStatusRoom));
      return;
    case 3:
      FUZZ_CHECK(allowed::Select(SelectIDCard()));
      return;
    case 4:
      FUZZ_CHECK(allowed::Select(SelectIDCardOneTime()));
      return;
    case 5:
      result = ReadIDCard(input.Between(-1, 2), reply.bytes(), &length);
      FUZZ_CHECK(allowed::ReadCard(result));
      break;
    case 6:
      result = ReadIDCardOneCmd(reply.bytes(), &length);
      FUZZ_CHECK(allowed::ReadCard(result));
      break;
    default:
      result = GetIDCardInfo(limit, input.Between(0, 1), reply.bytes(), &length);
      FUZZ_CHECK(allowed::WholeRead(result));
      break;
  }
  FUZZ_CHECK(length == 0 || length == 1295 || length == 1297 || length == 2321);
  FUZZ_CHECK(result == 0 || result == -57 || length == 0);
  FUZZ_CHECK(reply.UntouchedFrom(static_cast<std::size_t>(length)));
}

void ReaderExchange(Input& input) {
  const bool raw = input.Flag();
  const std::uint8_t head = raw ? 0 : 2, end = raw ? 0 : 3;
  const Bytes message = input.Take(input.Byte() * std::size_t{5});
  const Exact<unsigned char> sent(message);
  const int size = static_cast<int>(message.size());
  Guarded reply(static_cast<std::size_t>(input.Between(0, 4096)));
  const int room = static_cast<int>(reply.size());
  int count = 0;
  switch (input.Byte() % 8) {
    case 0:
      count = COMM_Zel_SendAndReciveData(input.Flag(), head, end, sent.get(), size, reply.bytes(),
                                         room);
      break;
    case 1:
      count = COMM_Zel_ReadDataFromReader(input.Flag(), head, end, reply.bytes(), room);
      break;
    case 2:
      FUZZ_CHECK(allowed::OneOf(COMM_Zel_WriteDataToReader(head, end, sent.get(), size), {0, -1}));
      break;
    case 3:
      count = Dev_Zel_IdSendAndReciveData(input.Byte() % 3, sent.get(),
                                          static_cast<std::uint32_t>(size), reply.bytes(),
                                          static_cast<std::uint32_t>(room));
      break;
    case 4:
      count = Dev_Zel_IdReciveData(reply.bytes(), room);
      break;
    case 5:
      count = ICC_ZELPADCHECKCARD(input.Between(0, 3));
      FUZZ_CHECK(allowed::Packets(count, 2));
      return;
    case 6:
      FUZZ_CHECK(allowed::OneOf(COMM_Id_WriteDataToCardReader(sent.get(), size), {0, -1}));
      count = COMM_Id_ReadDataFromCardReader(reply.bytes(), room);
      break;
    default:
      FUZZ_CHECK(allowed::OneOf(Set_ZelBp("K"), {0, -54}));
      FUZZ_CHECK(allowed::OneOf(COMM_Zel_ReaderCmd(sent.get(), size), {0, -1}));
      break;
  }
  FUZZ_CHECK(allowed::Packets(count, room));
}

void TransportCall(Input& input) {
  const Bytes message = input.Take(input.Byte() * std::size_t{5});
  const Exact<unsigned char> sent(message);
  const int size = static_cast<int>(message.size());
  Guarded reply(static_cast<std::size_t>(input.Between(0, 4096)));
  const int room = static_cast<int>(reply.size());
  const int limit = input.Between(-1, kLongest);
  const QL_END_CONDITION end = input.Flag() ? IdEndCondition : nullptr;
  int count = 0;
  switch (input.Byte() % 10) {
    case 0:
      count = COMM_Com_ReadLinux(reply.bytes(), static_cast<std::uint32_t>(room), limit, end);
      break;
    case 1:
      FUZZ_CHECK(COMM_Com_WriteLinux(sent.get(), size) <= size);
      break;
    case 2:
      count =
          COMM_Hid_ReadLinuxUsbLibHid(reply.bytes(), room, static_cast<std::uint32_t>(limit), end);
      break;
    case 3:
      FUZZ_CHECK(
          allowed::OneOf(COMM_Hid_WriteLinuxUsbLibHid(sent.get(), static_cast<std::uint32_t>(size)),
                         {size, -50, -54}));
      break;
    case 4:
      count = COMM_Dev_ReadDataFromTransPort(reply.bytes(), room);
      break;
    case 5:
      count = ReadBlock(reply.bytes(), room);
      break;
    case 6:
      count = ReadUnBlock(reply.bytes(), room);
      break;
    case 7:
      FUZZ_CHECK(WriteBlock(sent.get(), size) <= size);
      break;
    case 8:
      FUZZ_CHECK(WriteUnBlock(sent.get(), size) <= size);
      break;
    default:
      ClearReceiveBuffer();
      ResetAux();
      break;
  }
  FUZZ_CHECK(count > 0 ? count <= room : allowed::NothingRead(count));
}

void Call(Input& input) {
  switch (input.Byte() % 17) {
    case 0:
    case 1:
    case 2:
    case 3:
      ReadCard(input);
      break;
    case 4:
      ChangeSetting(input);
      break;
    case 5:
      AddUsbId(input);
      break;
    case 6:
      TakeNativeData(input);
      break;
    case 7:
      TakeMessage(input);
      break;
    case 8: {
      const char* const device = DeviceOf(input);
      const int baud = input.Flag() ? 9600 : 115200;
      const int aux_param = input.Between(0, 5);
      const int limit = input.Between(-1, kLongest);
      FUZZ_CHECK(allowed::OneOf(tFuncOpenDevice(device, "", baud, aux_param, limit), {0, -2, -50}));
      break;
    }
    case 9:
      CardCommand(input);
      break;
    case 10:
      ReaderExchange(input);
      break;
    case 11:
      TransportCall(input);
      break;
    case 12:
      data_calls::PackAndReadJson(input);
      break;
    case 13:
      data_calls::SaveImage(input);
      break;
    case 14:
      data_calls::Base64(input);
      break;
    case 15:
      data_calls::KeepNativeData(input);
      break;
    default:
      if (input.Flag()) {
        tFuncCloseDevice();
      } else {
        FUZZ_CHECK(APP_ID_CancelRead() == 0);
      }
      break;
  }
}

void Reset() {
  tFuncCloseDevice();
  COMM_Com_CloseLinux();
  COMM_Hid_CloseLinuxUsbLibHid();
  APP_ID_SetSearchDirect(0);
  APP_ID_SetOneInstrReadInfo(0);
  QL_APP_Id_RaiseBaundFlag(0);
  APP_ID_IDCardAddPhotoDataToJsonFlag(0);
  COMM_Hid_SetLinuxHidClearZero(1);
  COMM_Zel_ChageReadTimeOut(0);
  COMM_Zel_SetEndCondition(nullptr);
  tFunc_SetIdNativeData(nullptr, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::uint8_t flags = input.Byte();
  ScriptedCard card(&input, (flags & 0x01) != 0);
  scripted_tty::Plug(&input, &card);
  scripted_usb::Plug(&input, &card);
  // Limits below the exported reads are not checked: those that are kept begin short.
  COMM_Zel_ChageReadTimeOut(5);

  int waits = 0, cancel_at = 0;
  virtual_clock::Start([&] {
    if (++waits == cancel_at) APP_ID_CancelRead();
  });
  std::optional<session::Log> log(std::in_place, (flags & 0xC0) == 0xC0);
  for (int calls = 0; calls < kMostCalls && !input.Empty(); ++calls) {
    const std::int64_t time = virtual_clock::Microseconds() - scripted_tty::Stalled();
    const std::int64_t made = virtual_clock::Calls();
    waits = 0;
    cancel_at = std::max(input.Byte() - 128, 0);  // half of the calls are not cancelled
    Call(input);
    FUZZ_CHECK(session::IsWithinBounds(
        kLongest, virtual_clock::Microseconds() - scripted_tty::Stalled() - time,
        virtual_clock::Calls() - made));
    FUZZ_CHECK(scripted_tty::OpenDescriptors() <= 1);
  }
  Reset();
  log.reset();
  virtual_clock::Stop();
  FUZZ_CHECK(scripted_tty::OpenDescriptors() == 0);
  FUZZ_CHECK(scripted_usb::Held() == 0);
  scripted_tty::Unplug();
  scripted_usb::Unplug();
  return 0;
}
