// The simulated reader as the tool uses it.
#ifndef QUILLONID_TOOLS_QLID_SPECIMEN_READER_H
#define QUILLONID_TOOLS_QLID_SPECIMEN_READER_H

#include <string>

#include "simulator/tty_reader.h"

namespace qlid {

// The specimen card that --card and --person name: an id, "gat" for "permit". False with the known
// ids in `problem`.
bool FindCard(const std::string& name, bool fingerprints, simulator::Card* card,
              std::string* problem);

// Path of the decoder for specimen photos without its leading "/": beside the installed library, or
// in the build folder. Empty when there is none.
std::string SpecimenDecoder();

}  // namespace qlid

#endif
