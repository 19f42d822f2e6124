// Identity-card commands on the open device: one frame out, one reply in, and the sequence of
// search, select and read with its retries, time limit and cancellation.
#include <atomic>
#include <cstring>

#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "reader/card_frames.h"
#include "reader/native_data.h"
#include "support/clock.h"
#include "support/log.h"

namespace {

// Flags of the engine. Another thread may set each of them while a read runs.
std::atomic<int> s_bCancel;  // 1: stop the read. Set by CancelIdRead; cleared by GetIDCardInfo,
                             // SearchCard and SelectIDCard as they begin.
std::atomic<int> g_CancleSdtFlag;  // 1: a read over SDT ends at a failed search. Set with the flag
                                   // above; cleared by the read that it ends.
std::atomic<int> s_bSearchCardD;   // 1: search reports a card unasked. Set by tFuncSearchIdDirect.
std::atomic<int> s_bSelectCardD;   // 1: no search, no select. Set with it.
std::atomic<int> s_bReadOneInstr;  // not 0: one-command reads. Set by tFuncReadOneInstr.

constexpr std::uint32_t kSdtConnection = 3;
constexpr int kSearchSeconds = 3;  // for the answer to a search, and to the select behind it
constexpr int kReadSeconds = 5;    // for the answer to a read
constexpr int kPause = 200;        // one second: GeneralSleep divides by 200
constexpr int kPauseMilliseconds = 1000;
// A port that is gone fails at once, and a failed search is repeated without a pause: a pass takes
// at least this long, in milliseconds.
constexpr int kQuickFailure = 10;

// What came back: a cleared buffer, so that bytes behind the answer compare as zero.
template <std::size_t kRoom>
struct Answer {
  std::array<std::uint8_t, kRoom> bytes{};
  int count = 0;  // bytes received, 0, or a negative code

  std::span<const std::uint8_t> Received() const {
    return std::span(bytes).first(count > 0 ? static_cast<std::size_t>(count) : 0);
  }
};
using StatusAnswer = Answer<128>;
using CardAnswer = Answer<4086>;

template <std::size_t kRoom>
int Exchange(const CommandFrame& command, Answer<kRoom>* answer) {
  constexpr std::uint32_t kLength = std::tuple_size_v<CommandFrame>;
  answer->count =
      Dev_Zel_IdSendAndReciveData(0, command.data(), kLength, answer->bytes.data(), kRoom);
  return answer->count;
}

// What a select is answered with.
struct SelectReply {
  std::array<std::uint8_t, kSelected.size()> bytes;
  std::size_t size;
  int result;
  char logged[24];
};

template <std::size_t kSize>
constexpr auto Padded(const std::array<std::uint8_t, kSize>& bytes) {
  std::array<std::uint8_t, kSelected.size()> padded{};
  std::copy(bytes.begin(), bytes.end(), padded.begin());
  return padded;
}

// Bytes that lead the answer, result, word logged.
constexpr SelectReply kSelectReplies[] = {
    {kSelected,          kSelected.size(),  RET_PUB_SUCCESS,        "have Id Card"          },
    {Padded(kNoCard),    kNoCard.size(),    RET_BUSI_ID_NO_CARD,    "RET_BUSI_ID_NO_CARD"   },
    {Padded(kIcPowerOn), kIcPowerOn.size(), RET_BUSI_ID_IC_POWERON, "RET_BUSI_ID_IC_POWERON"},
};
constexpr SelectReply kOtherSelectReply = {{}, 0, RET_PUB_READ_ERROR, "RET_PUB_READ_ERROR"};

const SelectReply& FindSelectReply(std::span<const std::uint8_t> received) {
  for (const SelectReply& reply : kSelectReplies) {
    if (StartsWith(received, std::span(reply.bytes).first(reply.size))) return reply;
  }
  return kOtherSelectReply;
}

int ExchangeSelect(StatusAnswer* answer) {
  const int got = Exchange(kSelect, answer);
  LOG_CARD_RESULT(got <= 0, "COMM_Zel_SendAndReciveData nRet = %d", got);
  if (got > 0) DPrintDataHexToFile("Search card ", answer->bytes.data(), got);
  return got;
}

// Lines that only one of the two read commands logs.
enum class ReadLog { kBrief, kFull };

// Takes a received read reply over. Returns 0, -55 or -2002.
int AcceptReadReply(std::span<const std::uint8_t> received, ReadLog log, unsigned char* pData,
                    int* pLen) {
  if (received.size() < kReadFailed.size()) {
    LOG_CARD(" Read Len too Short");
    return RET_PUB_READ_ERROR;
  }
  const int length = static_cast<int>(received.size());
  if (!IsReadReplyLength(length)) {
    LOG_CARD("Read Len err");
    return RET_PUB_READ_ERROR;
  }
  const unsigned last = received.back();
  if (log == ReadLog::kFull) LOG_CARD(" Read Check Value = %02x", last);
  const auto covered = received.subspan(kFrameHead, received.size() - kFrameHead - 1);
  if (Str_GetDataLRC(covered.data(), static_cast<int>(covered.size())) != last) {
    if (log == ReadLog::kFull) LOG_CARD("CRC Check Error");
    return RET_PUB_READ_ERROR;
  }
  // The test of the length turns these two away when they come alone, as they do.
  if (StartsWith(received, kReadFailed)) {
    LOG_CARD("Read Card return read Fail data");
    return RET_PUB_READ_ERROR;
  }
  if (StartsWith(received, kUnsupported)) {
    LOG_CARD(" Read Card return unsupport data");
    return RET_BUSI_ID_UNSUPPORT;
  }
  std::memcpy(pData, received.data(), received.size());
  *pLen = length;
  return RET_PUB_SUCCESS;
}

int ReadCard(const CommandFrame& command, ReadLog log, unsigned char* pData, int* pLen) {
  if (pLen != nullptr) *pLen = 0;
  if (pData == nullptr || pLen == nullptr) return RET_PUB_INVAL_PARAM;

  COMM_Zel_ChageReadTimeOut(kReadSeconds);
  CardAnswer answer;
  const int got = Exchange(command, &answer);
  if (log == ReadLog::kFull) LOG_CARD_RESULT(got <= 0, "nRet %d", got);
  if (got <= 0) return got;
  return AcceptReadReply(answer.Received(), log, pData, pLen);
}

// A silent USB reader gives 0 and no bytes, which the commands return as it is. To the sequence
// that is a failed try: what was kept of the card before stays.
int ResultOfTry(int result, const int* pLen) {
  return result == RET_PUB_SUCCESS && *pLen == 0 ? RET_PUB_READ_ERROR : result;
}

// Time of one read since its start. The limit is decided on the monotonic clock, the ticks that
// are logged are wall-clock.
class ReadTime {
 public:
  explicit ReadTime(std::int64_t limit)
      : limit_(limit), start_tick_(GetTickCountStartTime()), started_(MonotonicMilliseconds()) {}
  bool IsOver() const { return MonotonicMilliseconds() - started_ > limit_; }
  int StartTick() const { return static_cast<int>(start_tick_); }
  int TicksUntil(long end_tick) const { return static_cast<int>(end_tick - start_tick_); }

 private:
  std::int64_t limit_;  // milliseconds
  long start_tick_;
  std::int64_t started_;
};

// The pause between commands. A signal ends a sleep early and would make a read hurry the reader;
// a cancel that has come leaves nothing to wait for.
void Pause() {
  if (s_bCancel != 0) return;
  const std::int64_t started = MonotonicMilliseconds();
  GeneralSleep(kPause);
  NapRestOfSlice(started, kPauseMilliseconds, kPauseMilliseconds);
}

// Whether a cancel was asked for; `*result`, the last result, then becomes -57.
bool Cancelled(int* result) {
  const int cancel = s_bCancel;
  if (cancel == 1) *result = RET_PUB_CANCEL;
  return cancel != 0;
}

// Searches and selects. Returns whether a read is to be tried; `*result` is the last result.
bool FindCard(int limit, int* result) {
  const bool sdt = Dev_Zel_IdCard_GetConnectType() == kSdtConnection;
  *result = SearchCard(limit);
  LOG_CARD_RESULT(*result < 0, "searchcard exit %d", *result);
  if (*result != RET_PUB_SUCCESS) {
    if (!sdt) return false;
    int asked = 1;
    if (g_CancleSdtFlag.compare_exchange_strong(asked, 0)) return false;
  }
  *result = SelectIDCard();
  // A cancel in the pause behind the select found no exchange to end.
  if (s_bCancel != 0) return false;
  // On purpose: over SDT a failure does not stop the read.
  return *result == RET_PUB_SUCCESS || sdt;
}

// Searches, selects and reads until a card was read or none was found. Returns whether the whole
// read ends with `*result`; otherwise cancel and one-command mode have a say in it yet.
bool ReadStepByStep(const ReadTime& time, int limit, int bFinger, unsigned char* pData, int* pLen,
                    int* result) {
  while (s_bReadOneInstr == 0) {
    if (s_bSelectCardD != 1 && !FindCard(limit, result)) return false;

    *result = ReadIDCard(bFinger, pData, pLen);
    LOG_CARD_RESULT(*result < 0, "ReadIDCard nRet = %d ", *result);
    *result = ResultOfTry(*result, pLen);
    if (*result == RET_PUB_SUCCESS) return false;
    if (*result == RET_BUSI_ID_UNSUPPORT) return true;

    LOG_CARD("****** sEndTime - sStartTime = %d ", time.TicksUntil(GetTickCountEndTime()));
    if (time.IsOver()) {
      LOG_CARD(" Read RET_PUB_TIMEOUT");
      *result = RET_PUB_TIMEOUT;
      return true;
    }
    Pause();
    if (Cancelled(result)) return true;
  }
  return false;
}

// Reads with the one command that does it all until a card was read. Returns the last result.
int ReadAtOnce(const ReadTime& time, unsigned char* pData, int* pLen) {
  int result = RET_PUB_SUCCESS;
  do {
    result = ResultOfTry(ReadIDCardOneCmd(pData, pLen), pLen);
    if (result == RET_PUB_SUCCESS) return result;

    const long end_tick = GetTickCountEndTime();
    LOG_CARD(" **** sEndTime = %d ", static_cast<int>(end_tick));
    LOG_CARD("****** sEndTime - sStartTime = %d ", time.TicksUntil(end_tick));
    if (time.IsOver()) {
      LOG_CARD(" Search RET_PUB_TIMEOUT");
      return RET_PUB_TIMEOUT;
    }
    Pause();
    if (Cancelled(&result)) return result;
  } while (s_bReadOneInstr != 0);
  return result;
}

}  // namespace

int CheckDevice() {
  LOG_CARD("[%s] Start ", __func__);
  // On purpose: one zero byte goes out behind the frame.
  std::array<std::uint8_t, kCheckDevice.size() + 1> command{};
  std::copy(kCheckDevice.begin(), kCheckDevice.end(), command.begin());
  StatusAnswer answer;
  answer.count = COMM_Zel_SendAndReciveData(1, 0, 0, command.data(), command.size(),
                                            answer.bytes.data(), answer.bytes.size());
  if (answer.count <= 0) return answer.count;

  std::array<std::uint8_t, sizeof answer.bytes> expected{};
  std::copy(kReady.begin(), kReady.end(), expected.begin());
  if (!StartsWith(expected, answer.Received())) return RET_BUSI_ID_DEVICE_CHECK_ERR;
  return answer.count;
}

int SearchCard(int nTimeOut) {
  LOG_CARD("[%s] Start nTimeOut = %d ", __func__, nTimeOut);
  const ReadTime time(nTimeOut);
  LOG_CARD(" **** sStartTime = %d ", time.StartTick());
  COMM_Zel_ChageReadTimeOut(kSearchSeconds);
  s_bCancel = 0;

  for (;;) {
    if (s_bSearchCardD == 1) {
      LOG_CARD("s_bSearchCardD  True");
      return RET_PUB_SUCCESS;
    }
    const std::int64_t pass_started = MonotonicMilliseconds();
    StatusAnswer answer;
    const int got = Exchange(kSearch, &answer);
    LOG_CARD_RESULT(got <= 0, "COMM_Zel_SendAndReciveData nRet = %d", got);
    if (got > 0) {
      DPrintDataHexToFile("SearchCard : szRes=", answer.bytes.data(), got);
      if (s_bSearchCardD == 1) {
        LOG_CARD("auto cancel ?");
        return RET_PUB_SUCCESS;
      }
      const long end_tick = GetTickCountEndTime();
      LOG_CARD(" **** sEndTime = %d ", static_cast<int>(end_tick));
      LOG_CARD("****** sEndTime - sStartTime = %d ", time.TicksUntil(end_tick));
      if (StartsWith(answer.Received(), kFound)) return RET_PUB_SUCCESS;
      if (time.IsOver()) break;
      Pause();
      LOG_CARD("search time1");
    } else {
      if (time.IsOver()) break;
      NapRestOfSlice(pass_started, kQuickFailure, kQuickFailure);
    }
    if (s_bCancel != 0) return RET_PUB_CANCEL;
  }
  LOG_CARD(" Search RET_PUB_TIMEOUT");
  return RET_PUB_TIMEOUT;
}

int SearchCardOneTime(int nTimeOut) {
  LOG_CARD("[%s] Start nTimeOut = %d ", __func__, nTimeOut);
  COMM_Zel_ChageReadTimeOut(nTimeOut);
  StatusAnswer answer;
  const int got = Exchange(kSearch, &answer);
  if (got > 0) {
    LOG_CARD("SearchCard : nRes=%d, nCRes=%d", got, static_cast<int>(kFound.size()));
    DPrintDataHexToFile("SearchCard : szRes=", answer.bytes.data(), got);
  }
  if (StartsWith(answer.Received(), kFound)) return RET_PUB_SUCCESS;
  LOG_CARD("search time1");
  return got;  // On purpose: for another answer its length, a positive number.
}

int SelectIDCard() {
  LOG_CARD("[%s] Start ", __func__);
  s_bCancel = 0;
  StatusAnswer answer;
  const int got = ExchangeSelect(&answer);
  if (got <= 0) return got;
  if (s_bSelectCardD == 1) return RET_PUB_SUCCESS;  // On purpose: whatever the reply says.

  const SelectReply& reply = FindSelectReply(answer.Received());
  LOG_CARD("***[%s] ", reply.logged);
  if (reply.result == RET_PUB_SUCCESS) Pause();
  return reply.result;
}

int SelectIDCardOneTime() {
  LOG_CARD("[%s] Start ", __func__);
  StatusAnswer answer;
  const int got = ExchangeSelect(&answer);
  if (got <= 0) return got;

  const SelectReply& reply = FindSelectReply(answer.Received());
  if (reply.result != RET_PUB_SUCCESS) LOG_CARD("***[%s] ", reply.logged);
  return reply.result;
}

int ReadIDCard(int bFinger, unsigned char* pData, int* pLen) {
  LOG_CARD("[%s] Start", __func__);
  return ReadCard(bFinger != 0 ? kReadWithFingers : kRead, ReadLog::kFull, pData, pLen);
}

int ReadIDCardOneCmd(unsigned char* pData, int* pLen) {
  LOG_CARD("[%s] Start", __func__);
  return ReadCard(kReadAtOnce, ReadLog::kBrief, pData, pLen);
}

int GetIDCardInfo(int nTimeOut, int bFinger, unsigned char* pData, int* pLen) {
  const std::int64_t limit = std::int64_t{nTimeOut} * 1000;
  const ReadTime time(limit);
  s_bCancel = 0;
  LOG_CARD("[%s] Start ", __func__);
  if (pLen != nullptr) *pLen = 0;
  if (nTimeOut < 1 || nTimeOut > 120) return RET_PUB_INVAL_PARAM;
  if (pData == nullptr || pLen == nullptr) return RET_PUB_INVAL_PARAM;

  int result = RET_PUB_READ_ERROR;
  if (Cancelled(&result)) return result;
  if (ReadStepByStep(time, static_cast<int>(limit), bFinger, pData, pLen, &result)) return result;
  if (Cancelled(&result)) return result;
  if (s_bReadOneInstr == 0) return result;
  return ReadAtOnce(time, pData, pLen);
}

int CancelIdRead() {
  if (s_bCancel.exchange(1) != 0) {
    // Asked for already, perhaps between a command and the wait for its answer, where the line
    // forgets it: a wait that runs now ends.
    COMM_Dev_CancelRead();
    return RET_PUB_SUCCESS;
  }
  g_CancleSdtFlag = 1;
  Dev_Zel_IdCardCancel();
  return RET_PUB_SUCCESS;
}

int tFuncSearchIdDirect(int bFlag) {
  LOG_CARD("[%s] Start ", __func__);
  s_bSearchCardD = bFlag;
  s_bSelectCardD = bFlag;
  LOG_CARD("[ s_bSearchCardD = %02x]  ", static_cast<unsigned>(bFlag));
  return RET_PUB_SUCCESS;
}

int tFuncReadOneInstr(int bFlag) {
  LOG_CARD("[%s] Start ", __func__);
  s_bReadOneInstr = bFlag;
  LOG_CARD("[ s_bReadOneInstr = %02x]  ", static_cast<unsigned>(bFlag));
  return RET_PUB_SUCCESS;
}
