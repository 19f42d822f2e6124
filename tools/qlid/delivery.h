// What becomes of a card that was read: the files asked for, then the program that takes it over,
// or standard output.
#ifndef QUILLONID_TOOLS_QLID_DELIVERY_H
#define QUILLONID_TOOLS_QLID_DELIVERY_H

#include <optional>

#include "tools/qlid/commands.h"
#include "tools/qlid/report.h"

namespace qlid {

// Delivers `outcome`, whose card was read with `options`, with its report where it has one already.
// An empty result is success.
std::optional<Report> Deliver(Outcome outcome, const ReadOptions& options);

// Refuses to put two things on standard output.
std::optional<Report> CheckReadOutput(const ReadOptions& options);

// Prints an outcome without a card. Returns the exit status.
int PrintFailure(const Outcome& outcome, const ReadOptions& options);

}  // namespace qlid

#endif
