// A scripted reader with a specimen card, a photo decoder and a place for the photo.
#ifndef QUILLONID_TESTS_READER_SERVICE_FIXTURE_H
#define QUILLONID_TESTS_READER_SERVICE_FIXTURE_H

#include <gtest/gtest.h>

#include "quillonid/reader.h"
#include "simulator/card.h"
#include "tests/reader/log_area.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

using Lines = std::vector<std::string>;

inline constexpr std::size_t kBmpSize = 38862;  // 102 x 126 pixels

class Service : public testing::Test {
 public:
  void SetUp() override;

  // Puts a specimen card on the reader; `change` may spoil its native data first.
  void PutCard(const std::string& id, const std::function<void(Bytes*)>& change = {});
  void PutCard(const simulator::Card& card, const std::function<void(Bytes*)>& change = {});
  void RemoveDecoder();

  const char* Device() const { return reader.Path().c_str(); }
  char* PhotoPath() { return photo_path.data(); }
  // Size of the photo file, 0 when there is none.
  std::size_t PhotoSize() const { return ReadWholeFile(photo_path).size(); }

  // Calls a service that takes the common arguments.
  template <typename Record>
  int Read(int (*service)(const char*, const char*, long, long, char*, Record*), Record* record) {
    return service(Device(), "", 9600, 10, PhotoPath(), record);
  }
  // Calls a kind reader.
  template <typename Record>
  int Read(int (*reader_function)(const char*, const char*, long, long, int, char*, Record*),
           int finger, Record* record) {
    return reader_function(Device(), "", 9600, 10, finger, PhotoPath(), record);
  }

  ScriptedReader reader;
  std::string photo_path;
};

// Whether a record is zero in every byte, padding included.
template <typename Record>
bool IsClear(const Record& record) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
  for (std::size_t i = 0; i < sizeof record; ++i) {
    if (bytes[i] != 0) return false;
  }
  return true;
}

// Whether `lines` holds the expected ones in this order, others between them left out of account.
void ExpectInOrder(const Lines& expected, const Lines& lines);

#endif
