#include "tools/qlid/reading.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "quillonid/carddata.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "tools/qlid/devices.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

long MillisecondsSince(Clock::time_point start) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

void FillCard(const ReadRequest& request, Card* card) {
  std::uint8_t native[QL_NATIVE_DATA_SIZE] = {};
  const int size = APP_ID_GetIdNativeData(native, sizeof native);
  card->native.assign(native, native + size);
  card->fingerprints_asked = request.fingerprints;
  const char mark = card->record.cardType[0];
  card->kind = mark == ' '   ? CardKind::kResident
               : mark == 'I' ? CardKind::kForeigner
               : mark == 'J' ? CardKind::kPermit
                             : CardKind::kUnknown;
}

int RunRead(const ReadRequest& request, PERSONINFO_COLLECT_FP* record) {
  SettleLibrary(request);
  APP_ID_SetSearchDirect(request.search_direct ? 1 : 0);
  APP_ID_SetOneInstrReadInfo(request.one_command ? 1 : 0);
  // No photo path: the text never waits for the decoder.
  if (request.fingerprints) {
    return APP_ID_ReadCollectIDCard_FP(request.device.c_str(), "", request.baud, request.timeout,
                                       nullptr, record);
  }
  PERSONINFO_COLLECT plain = {};
  const int result = APP_ID_ReadCollectIDCard(request.device.c_str(), "", request.baud,
                                              request.timeout, nullptr, &plain);
  if (result == QL_SUCCESS) tFuncConvertCollect(&plain, record);
  return result;
}

bool Open(const ReadRequest& request) {
  SettleLibrary(request);
  return tFuncOpenDevice(request.device.c_str(), "", static_cast<int>(request.baud), 0, 1) ==
         RET_PUB_SUCCESS;
}

}  // namespace

Reading ReadCard(const ReadRequest& request) {
  Reading reading;
  std::atomic<bool> done{false};
  const int ended = eventfd(0, EFD_CLOEXEC);
  const Clock::time_point start = Clock::now();
  std::thread library([&] {
    reading.result = RunRead(request, &reading.card.record);
    done = true;
    eventfd_write(ended, 1);
  });

  StatusLine status;
  NodeWatch node(request);
  bool cancelling = false;
  while (!done) {
    const int signal = WaitForSignal(cancelling ? 100 : 50, ended);
    if (AsksToStop(signal)) {
      if (cancelling) _exit(kExitCancelled);
      cancelling = true;
      status.Clear();
      std::fprintf(stderr, "%s\n",
                   Tr("cancelling (a USB read ends within 5 s; Ctrl-C again to leave at once)",
                      "正在取消（USB 读取在 5 秒内结束；再按 Ctrl-C 立即退出）"));
    }
    if (cancelling || node.IsGone()) {
      // A cancel between two commands of the read is missed: ask until the read has ended.
      APP_ID_CancelRead();
    } else if (request.countdown) {
      const long left = request.timeout - MillisecondsSince(start) / 1000;
      if (left > 0) {
        status.Show(
            Format(Tr("Put the card on the reader: %ld s", "请将卡片放在读卡器上：%ld 秒"), left));
      } else {
        status.Show(Tr("Waiting for the reader's last answer", "正在等待读卡器的最后应答"));
      }
    }
  }
  library.join();
  close(ended);
  const bool failed = reading.result != QL_SUCCESS;
  if (!cancelling && failed && node.IsGoneAfterAll(reading.result == QL_SEND_ERROR)) {
    reading.gone_node = node.node();
    reading.gone_since = node.since();
    if (reading.result == QL_CANCELLED) reading.result = QL_TIMEOUT;
  }
  reading.elapsed_ms = MillisecondsSince(start);
  reading.stopped = cancelling;
  if (reading.result == QL_SUCCESS) FillCard(request, &reading.card);
  return reading;
}

void SettleLibrary(const ReadRequest& request) {
  for (std::size_t i = 0; i < request.usb_ids.size(); ++i) {
    UsbIdText id = {};
    if (ParseUsbId(request.usb_ids[i], &id)) {
      APP_ID_AddHID(static_cast<int>(i), static_cast<int>(id.product), static_cast<int>(id.vendor));
    }
  }
  QL_APP_Id_RaiseBaundFlag(request.raise_baud ? 1 : 0);
}

bool IsAnswering() {
  // The device check reads until its answer is complete, so it needs the test that tells when that
  // is.
  COMM_Zel_SetEndCondition(IdEndCondition);
  COMM_Zel_ChageReadTimeOut(1);
  const int answered = CheckDevice();
  return answered > 0 || answered == RET_BUSI_ID_DEVICE_CHECK_ERR;
}

ReaderState AskReader(const ReadRequest& request) {
  if (!Open(request)) return ReaderState::kNotOpened;
  const bool answering = IsAnswering();
  tFuncCloseDevice();
  return answering ? ReaderState::kReady : ReaderState::kSilent;
}

ReaderLook LookAtReader(const ReadRequest& request) {
  constexpr int kSearchSeconds = 1;
  ReaderLook look;
  if (!Open(request)) return look;
  look.state = IsAnswering() ? ReaderState::kReady : ReaderState::kSilent;
  look.card =
      look.state == ReaderState::kReady && SearchCardOneTime(kSearchSeconds) == RET_PUB_SUCCESS;
  tFuncCloseDevice();
  return look;
}

}  // namespace qlid
