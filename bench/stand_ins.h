// Stand-ins for system calls of the library, so that a row can leave out what others would hide it
// behind: the pauses that readers need, and the look at the log's configuration file.
#ifndef QUILLONID_BENCH_STAND_INS_H
#define QUILLONID_BENCH_STAND_INS_H

namespace bench {

// With `out`, the configuration file does not exist, and finding that out costs no system call.
void TakeOutLogChecks(bool out);

// Looks at the absent configuration file so far.
int LogChecks();

}  // namespace bench

#endif
