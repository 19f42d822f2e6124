// specimen_outputs: reads every specimen card, without and with fingerprints, and prints all that
// an application gets of it: result, JSON text, native data, photo file, and the log's lines. The
// output of two builds of the library is the same, byte for byte, whatever their architecture and
// the sign of char; ./test --arm64 compares them.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

constexpr char kPhotoFile[] = "/home/quillon/photo.bmp";

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// Lines of the time utilities, and those that tell a time, differ from run to run.
bool IsTheSameEachTime(const std::string& line) {
  for (const char* varying : {"Public:", "Time", "ReadIDCard over"}) {
    if (line.find(varying) != std::string::npos) return false;
  }
  return true;
}

void PrintRead(const simulator::Specimen& person, bool fingerprints) {
  SwitchLogging(true);
  std::filesystem::remove(kPhotoFile);
  simulator::TtyReader reader;
  reader.PutCard(simulator::MakeCard(person, fingerprints));

  std::vector<char> json(QL_JSON_SIZE);
  std::string photo = kPhotoFile;
  const int result = APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 115200, 10,
                                                  fingerprints ? 1 : 0, photo.data(), json.data());
  std::vector<unsigned char> native(QL_NATIVE_DATA_SIZE);
  native.resize(
      static_cast<std::size_t>(APP_ID_GetIdNativeData(native.data(), QL_NATIVE_DATA_SIZE)));

  std::printf("== %s %d: %d\n%s\n", person.id.c_str(), fingerprints ? 1 : 0, result, json.data());
  std::printf("native %s\n", HexText(native).c_str());
  std::printf("photo %s\n", HexText(ReadWholeFile(kPhotoFile)).c_str());
  for (const std::string& line : LogLines()) {
    if (IsTheSameEachTime(line)) std::printf("%s\n", Replaced(line, reader.path(), "TTY").c_str());
  }
}

}  // namespace

int main() {
  if (!HavePrivateRoot()) {
    std::fprintf(stderr, "specimen_outputs: needs a private root; run it with with-private-root\n");
    return 2;
  }
  stand_in_clock::SetSpeed(1);  // The pauses between commands are skipped.
  std::filesystem::copy_file(SPECIMEN_DECODER, kDecoderFile);
  for (const simulator::Specimen& person : simulator::Specimens()) {
    for (const bool fingerprints : {false, true}) PrintRead(person, fingerprints);
  }
  return 0;
}
