// The program that takes a card over: run once per card by the shell, the card's JSON on its
// standard input.
#ifndef QUILLONID_TOOLS_QLID_CARD_PROGRAM_H
#define QUILLONID_TOOLS_QLID_CARD_PROGRAM_H

#include <optional>
#include <string>

#include "tools/qlid/report.h"

namespace qlid {

// Where the program's own standard output goes.
enum class ProgramOutput { kToStandardOutput, kToStandardError };

// Runs `command` with `input` to read, in a process group of its own. It is ended after `seconds`,
// and when this program is told to stop. Nothing of `input` is in its arguments or environment, and
// it need not read it. An empty result is success.
std::optional<Report> RunForCard(const std::string& command, const std::string& input, int seconds,
                                 ProgramOutput output);

}  // namespace qlid

#endif
