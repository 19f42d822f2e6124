#include "tests/reader/service_fixture.h"

#include <algorithm>
#include <filesystem>

void Service::SetUp() {
  NEEDS_PRIVATE_ROOT();
  std::filesystem::copy_file(PLAIN_DECODER, kDecoderFile);
  photo_path = TemporaryFolder() + "/photo.bmp";
}

void Service::PutCard(const std::string& id, const std::function<void(Bytes*)>& change) {
  PutCard(simulator::MakeCard(id, true), change);
}

void Service::PutCard(const simulator::Card& card, const std::function<void(Bytes*)>& change) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  for (const bool fingers : {false, true}) {
    Bytes native = simulator::NativeData(card, fingers);
    if (change) change(&native);
    reader.On(fingers ? kFingerCommand : kReadCommand, WithCheckByte(native));
  }
}

void Service::RemoveDecoder() { std::filesystem::remove(kDecoderFile); }

void ExpectInOrder(const Lines& expected, const Lines& lines) {
  auto from = lines.begin();
  for (const std::string& line : expected) {
    const auto found = std::find(from, lines.end(), line);
    if (found == lines.end()) {
      ADD_FAILURE() << "not there, or not in this order: \"" << line << '"';
      return;
    }
    from = found + 1;
  }
}
