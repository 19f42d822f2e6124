// What a log call has to ask of the system, and nothing else: the floor that it is measured
// against.
#ifndef QUILLONID_BENCH_FLOOR_H
#define QUILLONID_BENCH_FLOOR_H

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "bench/files.h"

namespace bench {

// A look at the configuration file where there is none.
inline void FailingOpen() { benchmark::DoNotOptimize(open(kConfiguration, O_RDONLY)); }

// A look at the configuration file.
inline void ReadConfiguration() {
  char page[4096];
  const int file = open(kConfiguration, O_RDONLY);
  benchmark::DoNotOptimize(read(file, page, sizeof page));
  close(file);
}

// A look, and a line that somebody else has put together.
inline void LogPrepared(const std::string& line) {
  ReadConfiguration();
  const int file = open(kLog, O_WRONLY | O_APPEND | O_CREAT, 0600);
  benchmark::DoNotOptimize(write(file, line.data(), line.size()));
  close(file);
}

}  // namespace bench

#endif
