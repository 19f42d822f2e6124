#include "tools/qlid/specimen_reader.h"

#include <unistd.h>

#include <array>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr char kDecoderName[] = "libquillonid-specimen-decoder.so";

std::string FolderOfThisProgram() {
  std::array<char, 4096> path = {};
  const ssize_t size = readlink("/proc/self/exe", path.data(), path.size() - 1);
  if (size <= 0) return "";
  const std::string program(path.data(), static_cast<std::size_t>(size));
  return program.substr(0, program.find_last_of('/'));
}

}  // namespace

bool FindCard(const std::string& name, bool fingerprints, simulator::Card* card,
              std::string* problem) {
  const simulator::Specimen* person = simulator::FindSpecimen(name == "gat" ? "permit" : name);
  if (person) {
    *card = simulator::MakeCard(*person, fingerprints);
    return true;
  }
  *problem = Format(Tr("there is no specimen card \"%s\"", "没有样本卡 \"%s\""), name.c_str());
  return false;
}

std::string SpecimenDecoder() {
  const std::string folder = FolderOfThisProgram();
  for (const char* place : {QLID_DECODER_FOLDER, "/../../simulator/specimen_decoder"}) {
    const std::string path = folder + place + "/" + kDecoderName;
    if (access(path.c_str(), R_OK) == 0) return path.substr(1);
  }
  return "";
}

}  // namespace qlid
