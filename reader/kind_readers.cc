// Kind readers: one read, the kind of the card, its fields into a record with fingerprint
// templates, its photo into a file. They differ in a few steps, which their steps structures name.
#include <cstring>

#include "quillonid/carddata.h"
#include "quillonid/image.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

enum CardKind { kResident = 0, kForeigner = 1, kPermit = 2 };

struct Request {
  const char* szDevice;
  const char* szBpNo;
  long nBaud;
  long nTimeOut;
  int bFinger;
  char* szHeadDir;
};

struct NativeData {
  unsigned char bytes[QL_NATIVE_DATA_SIZE];
};

// Clears record and native data and reads a card. Returns the result of the read, or -2 for a null
// record.
template <typename Record>
int ReadNativeData(const Request& request, Record* record, NativeData* native) {
  if (request.szHeadDir != nullptr) LOG_CARD("szHeadDir: %s", request.szHeadDir);
  if (record == nullptr) return RET_PUB_INVAL_PARAM;
  std::memset(record, 0, sizeof *record);
  std::memset(native, 0, sizeof *native);
  int length = 0;
  return tFuncReadIdNativeData(request.szDevice, request.szBpNo, request.nBaud, request.nTimeOut,
                               request.bFinger, native->bytes, &length);
}

// What most readers have in common; a reader's own steps hide the ones that differ.
struct CommonSteps {
  static constexpr bool kDecodesFirst = false;
  static void LogStart(const char* name) { LOG_CARD("[ %s ] Start ", name); }
  static void LogRead(int) {}
  static void LogKind(int) {}
  static void LogEnd(const char* name, int result) {
    LOG_CARD_RESULT(result < 0, "[%s] End bRet = %d", name, result);
  }
};

struct ChinaSteps : CommonSteps {
  // On purpose: a card of another kind leaves what it decodes to in the record.
  // cppcheck-suppress duplInheritedMember; hidden as CommonSteps says.
  static constexpr bool kDecodesFirst = true;
  static bool Accepts(int kind) { return kind == kResident; }
  static void Decode(int, int bFinger, const NativeData& native, PERSONINFO_CHA_FP* record) {
    GetPersonChinaInfo(bFinger, native.bytes, record);
  }
  static void LogEnd(const char* name, int result) {
    LOG_CARD_RESULT(result < 0, "[%s]  End bRet = %d", name, result);
  }
};

struct ForeignerSteps : CommonSteps {
  static bool Accepts(int kind) { return kind == kForeigner; }
  static void Decode(int, int bFinger, const NativeData& native, PERSONINFO_FOR_FP* record) {
    GetPersonForeignInfo(bFinger, native.bytes, record);
  }
};

struct PermitSteps : CommonSteps {
  static bool Accepts(int kind) { return kind == kPermit; }
  static void Decode(int, int bFinger, const NativeData& native, PERSONINFO_GAT_FP* record) {
    GetPersonGATInfo(bFinger, native.bytes, record);
  }
};

struct CombinedSteps : CommonSteps {
  static bool Accepts(int kind) { return kind == kResident || kind == kForeigner; }
  static void Decode(int kind, int bFinger, const NativeData& native, PERSONINFO_FP* record) {
    GetPersonInfo(kind, bFinger, native.bytes, record);
  }
  static void LogStart(const char* name) { LOG_CARD("[%s] Start ", name); }
  static void LogRead(int result) {
    LOG_CARD_RESULT(result < 0, "tFuncReadIdNativeData  nRet = %d ", result);
  }
  static void LogKind(int kind) { LOG_CARD_RESULT(kind < 0, "  nCardType = %d ", kind); }
  static void LogEnd(const char* name, int result) {
    LOG_CARD_RESULT(result < 0, "[%s] bRet = %d", name, result);
  }
};

// The photo is saved whatever a decoder says: a field that cannot be converted does not cost it.
template <typename Steps, typename Record>
int ReadKind(const char* name, const Request& request, Record* record) {
  Steps::LogStart(name);
  NativeData native;
  const int result = ReadNativeData(request, record, &native);
  Steps::LogRead(result);
  if (result != RET_PUB_SUCCESS) return result;

  if (Steps::kDecodesFirst) Steps::Decode(kResident, request.bFinger, native, record);
  const int kind = GetIdCardTypeFromNativeData(request.bFinger, native.bytes);
  Steps::LogKind(kind);
  if (!Steps::Accepts(kind)) return RET_BUSI_ID_CARD_TYPE_ERR;
  if (!Steps::kDecodesFirst) Steps::Decode(kind, request.bFinger, native, record);

  const int saved = SavePhotoImage(request.bFinger, native.bytes, request.szHeadDir);
  Steps::LogEnd(name, saved);
  return saved;
}

// Decodes into the record of the card's kind and merges that into the collect record. A kind that
// has no record fills nothing.
int Collect(int kind, int bFinger, const NativeData& native, PERSONINFO_COLLECT_FP* collect) {
  switch (kind) {
    case kResident: {
      PERSONINFO_CHA_FP china = {};
      ChinaSteps::Decode(kind, bFinger, native, &china);
      return tFuncConvertStruct2Collect(&china, nullptr, nullptr, collect);
    }
    case kForeigner: {
      PERSONINFO_FOR_FP foreign = {};
      ForeignerSteps::Decode(kind, bFinger, native, &foreign);
      return tFuncConvertStruct2Collect(nullptr, &foreign, nullptr, collect);
    }
    case kPermit: {
      PERSONINFO_GAT_FP gat = {};
      PermitSteps::Decode(kind, bFinger, native, &gat);
      return tFuncConvertStruct2Collect(nullptr, nullptr, &gat, collect);
    }
    default:
      return RET_PUB_SUCCESS;  // No mark names one as yet. GCOVR_EXCL_LINE
  }
}

}  // namespace

int tFuncReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                         int bFinger, char* szHeadDir, PERSONINFO_CHA_FP* record) {
  return ReadKind<ChinaSteps>(__func__, {szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir},
                              record);
}

int tFuncReadForeignerIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                             int bFinger, char* szHeadDir, PERSONINFO_FOR_FP* record) {
  return ReadKind<ForeignerSteps>(__func__, {szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir},
                                  record);
}

int tFuncReadGatIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                       int bFinger, char* szHeadDir, PERSONINFO_GAT_FP* record) {
  return ReadKind<PermitSteps>(__func__, {szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir},
                               record);
}

int tFuncReadIdInfo(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                    int bFinger, char* szHeadDir, PERSONINFO_FP* record) {
  return ReadKind<CombinedSteps>(__func__, {szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir},
                                 record);
}

int tFuncReadCollectIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                           int bFinger, char* szHeadDir, PERSONINFO_COLLECT_FP* record) {
  LOG_CARD("[%s]Start ", __func__);
  NativeData native;
  const Request request = {szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir};
  if (const int result = ReadNativeData(request, record, &native)) return result;
  LOG_CARD("[%s] End ", "tFuncReadIdNativeData");

  const int kind = GetIdCardTypeFromNativeData(bFinger, native.bytes);
  LOG_CARD_RESULT(kind < 0, "[GetIdCardTypeFromNativeData] nRet = %d", kind);
  LOG_CARD_RESULT(kind < 0, " ==== [GetIdCardTypeFromNativeData] nRet = %02x",
                  static_cast<unsigned>(kind));
  if (kind < 0) return -1;  // No code of its own: published as -100.

  const int result = Collect(kind, bFinger, native, record);
  for (int twice = 0; twice < 2; ++twice) {
    LOG_CARD("[%s] Collect Struct Name = %s ", __func__, record->name);
    LOG_CARD_RESULT(result < 0, "[%s]end = %d  ", __func__, result);
  }
  char head_path[1024 + 1] = {};
  if (szHeadDir != nullptr) std::strncpy(head_path, szHeadDir, sizeof head_path - 1);
  if (head_path[0] == '\0') return RET_PUB_SUCCESS;
  return SavePhotoImage(bFinger, native.bytes, head_path);
}
