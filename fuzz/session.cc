#include "fuzz/session.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "carddata/layout.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/work_file.h"
#include "quillonid/carddata.h"
#include "quillonid/quillonid.h"

namespace {

template <typename Record>
using Reader = int (*)(const char*, const char*, long, long, char*, Record*);

// Into a record of 0xEE bytes. After success every field is a text; after a failure a field is one
// or as it was.
template <typename Record, std::size_t kCount>
int ReadRecord(const session::Reading& reading, Reader<Record> read,
               const Field (&fields)[kCount]) {
  GuardedRecord<Record> record;
  std::string path = reading.with_photo_file ? WorkFolder() + "head.bmp" : "";
  path.resize(1024);
  const int result =
      read(reading.device, "", reading.baud, reading.limit, path.data(), record.get());
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
  char folder[1024] = "";
  const int fingerprints = reading.fingerprints ? 1 : 0;
  const int result =
      reading.function == session::kCollectJson
          ? APP_ID_ReadCollectIDCardInfo(reading.device, "", reading.baud, reading.limit,
                                         fingerprints, folder, out.text())
          : Linux_QL_ID_ReadCollectCardInfo(reading.device, reading.baud, reading.limit,
                                            fingerprints, folder, out.text());
  const std::string json = out.Text();
  FUZZ_CHECK(result != 0 || (json.front() == '{' && json.back() == '}'));
  return result;
}

}  // namespace

namespace session {

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

bool IsWithinBounds(int limit, std::int64_t taken, std::int64_t calls) {
  constexpr std::int64_t kSecond = 1'000'000;
  // A read may search once more just before its limit, and then ends with its last exchanges.
  const std::int64_t most = (2 * std::max(limit, 0) + 15) * kSecond;
  // Nothing spins: on average a call takes half a millisecond, but for a burst of small pieces.
  return taken <= most && calls <= 30'000 + taken / 500;
}

}  // namespace session
