// One line on the machine that a table was made on.
#ifndef QUILLONID_BENCH_MACHINE_H
#define QUILLONID_BENCH_MACHINE_H

#include <string>

namespace bench {

std::string Machine();

}  // namespace bench

#endif
