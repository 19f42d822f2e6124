#include "fuzz/session.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "carddata/layout.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/no_configuration.h"
#include "fuzz/work_file.h"
#include "quillonid/carddata.h"
#include "quillonid/quillonid.h"

namespace {

constexpr std::size_t kPathSize = 1024;
constexpr std::size_t kBmpSize = 38862;
constexpr std::size_t kPixelsAt = 54, kRowSize = 306, kRows = 126;
constexpr char kConfigurationFile[] = "QLConfig.ini", kLogFile[] = "Alg_debug.log";
constexpr std::size_t kLongestLog = 256U << 20;

void InstallDecoder() {
  static const bool installed = [] {
    const auto decoder = ReadWorkFile(QL_FUZZ_DECODER);
    FUZZ_CHECK(decoder.has_value());
    WriteWorkFile("/libwlt.so", *decoder);
    return true;
  }();
  FUZZ_CHECK(installed);
}

// The photo of the card read last.
Bytes KeptPhoto() {
  Guarded native(4096, 0);
  const int length = APP_ID_GetIdNativeData(native.bytes(), 4096);
  FUZZ_CHECK(length == 1295 || length == 1297 || length == 2321);
  const std::size_t text = native.bytes()[10] * 256U + native.bytes()[11];
  const std::size_t at = (length == 1295 ? 14U : 16U) + text;
  FUZZ_CHECK(at + 1024 <= 4096);
  return {native.bytes() + at, native.bytes() + at + 1024};
}

// What the sessions' decoder makes of a photo, as a file: the photo over and over, the colours of
// each pixel turned round.
void CheckBmp(const Bytes& file, const Bytes& photo) {
  FUZZ_CHECK(file.size() == kBmpSize && file[0] == 'B' && file[1] == 'M');
  const std::size_t period = 3 * photo.size();
  Bytes turned(period + kRowSize);
  for (std::size_t i = 0; i < turned.size(); ++i) {
    turned[i] = photo[(i - i % 3 + 2 - i % 3) % photo.size()];
  }
  std::size_t at = kPixelsAt;
  for (std::size_t row = 0; row < kRows; ++row) {
    FUZZ_CHECK(std::memcmp(&file[at], &turned[row * kRowSize % period], kRowSize) == 0);
    FUZZ_CHECK(file[at + kRowSize] == 0x96 && file[at + kRowSize + 1] == 0x08);
    at += kRowSize + 2;
  }
}

// The path that a caller gives, empty when it wants no photo.
class PhotoPath {
 public:
  explicit PhotoPath(const session::Reading& reading)
      : path_(reading.with_photo_file ? WorkFolder() + "head.bmp" : ""), given_(kPathSize, 0) {
    std::copy(path_.begin(), path_.end(), given_.text());
  }

  char* text() { return given_.text(); }

  // After the read: nothing else than a whole file, and that after every good read.
  void Check(int result, bool one_length) {
    FUZZ_CHECK(given_.Text() == path_);
    if (path_.empty()) return;
    const auto file = ReadWorkFile(path_);
    FUZZ_CHECK(file.has_value() || result != 0);
    FUZZ_CHECK(!file || file->size() == kBmpSize);
    // Replies of 1,295 bytes may come to a read with fingerprints and the other way round: then the
    // photo lies elsewhere.
    if (result == 0 && one_length) CheckBmp(*file, KeptPhoto());
    if (file) unlink(path_.c_str());
  }

 private:
  std::string path_;
  Guarded given_;
};

// Whether the reply kept last has the length that the read asked for.
bool HasOwnLength(const session::Reading& reading) {
  Guarded native(4096, 0);
  const bool is_plain = APP_ID_GetIdNativeData(native.bytes(), 4096) == 1295;
  return is_plain != session::WithFingerprints(reading);
}

template <typename Record>
using Reader = int (*)(const char*, const char*, long, long, char*, Record*);

// Into a record of 0xEE bytes. After success every field is a text; after a failure a field is one
// or as it was.
template <typename Record, std::size_t kCount>
int ReadRecord(const session::Reading& reading, Reader<Record> read,
               const Field (&fields)[kCount]) {
  GuardedRecord<Record> record;
  PhotoPath path(reading);
  const int result =
      read(reading.device, "", reading.baud, reading.limit, path.text(), record.get());
  path.Check(result, HasOwnLength(reading));
  for (const Field& field : fields) {
    if (field.offset >= sizeof(Record)) continue;  // templates, in a record without them
    const char* const text = field.In(record.get());
    const bool is_text = strnlen(text, field.width) < field.width;
    const bool untouched = std::all_of(text, text + field.width, [](char c) {
      return static_cast<std::uint8_t>(c) == kUntouched;
    });
    FUZZ_CHECK(is_text || (result != 0 && untouched));
  }
  return result;
}

int ReadJson(const session::Reading& reading) {
  Guarded out(QL_JSON_SIZE, 0);
  PhotoPath path(reading);
  const int fingerprints = reading.fingerprints ? 1 : 0;
  const int result =
      reading.function == session::kCollectJson
          ? APP_ID_ReadCollectIDCardInfo(reading.device, "", reading.baud, reading.limit,
                                         fingerprints, path.text(), out.text())
          : Linux_QL_ID_ReadCollectCardInfo(reading.device, reading.baud, reading.limit,
                                            fingerprints, path.text(), out.text());
  path.Check(result, HasOwnLength(reading));
  const std::string json = out.Text();
  FUZZ_CHECK(result != 0 || (json.front() == '{' && json.back() == '}'));
  return result;
}

}  // namespace

namespace session {

bool TakeFlags(Input* input, Reading* reading) {
  const std::uint8_t flags = input->Byte();
  reading->fingerprints = (flags & 0x01) != 0;
  reading->with_photo_file = (flags & 0x02) != 0 && HavePrivateRoot();
  if (reading->with_photo_file) InstallDecoder();
  return (flags & 0xC0) == 0xC0;  // In one of four: it takes most of the time.
}

bool WithFingerprints(const Reading& reading) {
  constexpr int kWith[] = {1, 3, 5, 8, 11};
  if (reading.function >= kCollectJson) return reading.fingerprints;
  return std::find(std::begin(kWith), std::end(kWith), reading.function) != std::end(kWith);
}

int Read(const Reading& reading) {
  switch (reading.function) {
    case 0:
      return ReadRecord(reading, APP_ID_ReadIDCard, kPersonRecord);
    case 1:
      return ReadRecord(reading, APP_ID_ReadIDCard_FP, kPersonRecord);
    case 2:
      return ReadRecord(reading, APP_ID_ReadChinaIDCard, kChinaRecord);
    case 3:
      return ReadRecord(reading, APP_ID_ReadChinaIDCard_FP, kChinaRecord);
    case 4:
      return ReadRecord(reading, APP_ID_ReadForeignerIDCard, kForeignRecord);
    case 5:
      return ReadRecord(reading, APP_ID_ReadForeignerIDCard_FP, kForeignRecord);
    case 6:
      return ReadRecord(reading, APP_ID_ReadIDCardForeigner, kPersonRecord);
    case 7:
      return ReadRecord(reading, APP_ID_ReadGATIDCard, kGatRecord);
    case 8:
      return ReadRecord(reading, APP_ID_ReadGATIDCard_FP, kGatRecord);
    case 9:
    case 10:
      return ReadRecord(reading, APP_ID_ReadCollectIDCard, kCollectRecord);
    case 11:
      return ReadRecord(reading, APP_ID_ReadCollectIDCard_FP, kCollectRecord);
    default:
      return ReadJson(reading);
  }
}

bool IsPublished(int result) {
  constexpr int kCodes[] = {0, -1, -2, -3, -4, -5, -7, -8, -9, -10, -11, -12, -13, -100};
  return std::find(std::begin(kCodes), std::end(kCodes), result) != std::end(kCodes);
}

bool IsOfGoodRead(const Reading& reading, int kind, int result) {
  constexpr int kTakes[] = {3, 3, 1, 1, 2, 2, 2, 4, 4};  // a bit for each kind
  const int function = reading.function;
  const bool collects = function >= 9;
  if (!collects && (kTakes[function] >> kind & 1) == 0) return result == -11;
  if (!collects && !reading.with_photo_file) return result == -7;
  // A name that is empty has no place in the record of several kinds.
  const bool may_lack_name = function == 0 || function == 1 || function == 6;
  return result == 0 || (may_lack_name && result == -100);
}

bool IsOfCancelledRead(int result) {
  // A failure, a refused argument or the end of the time may come before the cancel is looked at; a
  // card may not.
  constexpr int kCodes[] = {-9, -1, -2, -3, -5, -12, -13};
  return std::find(std::begin(kCodes), std::end(kCodes), result) != std::end(kCodes);
}

Log::Log(bool on) : on_(on && HavePrivateRoot()) {
  if (!on_) return;
  const std::string flag = "[QuillonLog]\nLogFlag=1\n";
  WriteWorkFile(WorkFolder() + kConfigurationFile, {flag.begin(), flag.end()});
  configuration::Hide(false);
}

Log::~Log() {
  if (!on_) return;
  unlink((WorkFolder() + kConfigurationFile).c_str());
  configuration::Hide(true);
  const std::string path = WorkFolder() + kLogFile;
  const auto log = ReadWorkFile(path);
  FUZZ_CHECK(log && log->size() > 2 && log->size() < kLongestLog);
  FUZZ_CHECK((*log)[log->size() - 2] == '\r' && log->back() == '\n');
  unlink(path.c_str());
}

bool IsWithinBounds(int limit, std::int64_t taken, std::int64_t calls) {
  constexpr std::int64_t kSecond = 1'000'000;
  // A read may search once more just before its limit, and then ends with its last exchanges.
  const std::int64_t most = (2 * std::max(limit, 0) + 15) * kSecond;
  // Nothing spins: on average a call takes half a millisecond, but for a burst of small pieces.
  return taken <= most && calls <= 30'000 + taken / 500;
}

}  // namespace session
