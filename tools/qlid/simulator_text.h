// What the simulator says, in the chosen language.
#ifndef QUILLONID_TOOLS_QLID_SIMULATOR_TEXT_H
#define QUILLONID_TOOLS_QLID_SIMULATOR_TEXT_H

#include <optional>
#include <string>

#include "simulator/card.h"
#include "simulator/faults.h"

namespace qlid {

std::string About(const simulator::Specimen& person);
std::string About(const simulator::FaultRow& fault);

// The table of faults, a line for each.
std::string FaultHelp();

// The fault of this name, with or without a value; none with what is wrong in `problem`.
std::optional<simulator::Fault> FindFault(const std::string& name, std::string* problem);

// What a request or an answer means.
std::string TrafficText(const std::string& meaning);

// What is wrong with a recording.
std::string RecordingProblem(const std::string& problem);

}  // namespace qlid

#endif
