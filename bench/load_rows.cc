// What it costs to load the library, and the figures of the file that decide it.
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "bench/table.h"

namespace bench {
namespace {

constexpr char kLibrary[] = BENCH_LIBRARY;
constexpr char kEmptyLibrary[] = BENCH_EMPTY_LIBRARY;
constexpr char kProbe[] = BENCH_LOAD_PROBE;

// The output of a shell command.
std::string OutputOf(const std::string& command) {
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("popen");
  std::string output;
  for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  if (pclose(pipe) != 0) throw std::runtime_error(command);
  return output;
}

struct LoadTimes {
  double first, again;  // seconds
};

// Loads a library in a process of its own.
LoadTimes Load(const char* library) {
  LoadTimes times = {};
  const std::string output = OutputOf(std::string("exec '") + kProbe + "' '" + library + "'");
  if (std::sscanf(output.c_str(), "%lf %lf", &times.first, &times.again) != 2) {
    throw std::runtime_error("load-probe: " + output);
  }
  return {times.first / 1e9, times.again / 1e9};
}

void AddLoad(Table& table, const char* id, const char* title, double LoadTimes::*which) {
  constexpr int kProcesses = 10;  // in one repetition
  const auto loaded = [] { return "loaded"; };
  table.NewRow(id, title, {1.50, 1.10})
      .AddTimed(
          Role::kLibrary, "library", kProcesses, [=] { return Load(kLibrary).*which; }, loaded)
      .AddTimed(
          Role::kPeer, "empty library", kProcesses, [=] { return Load(kEmptyLibrary).*which; },
          loaded);
}

double CountIn(const std::string& command) { return std::atof(OutputOf(command).c_str()); }

}  // namespace

void AddLoadRows(Table& table) {
  AddLoad(table, "load-first", "dlopen and dlclose, first", &LoadTimes::first);
  AddLoad(table, "load-again", "dlopen and dlclose, again", &LoadTimes::again);

  const std::string file = std::string(" '") + kLibrary + "'";
  const std::string dynamic = "LC_ALL=C readelf --wide --dynamic" + file;
  table.AddCount("relocations", "",
                 CountIn("LC_ALL=C readelf --wide --relocs" + file + " | grep -c R_"), {200, 110});
  const double size = CountIn(dynamic + " | sed -n 's/.*(INIT_ARRAYSZ) *//p'");
  table.AddCount("dynamic initialisers", "", size / sizeof(void*), {1, 1});
  table.AddCount("needed libraries", "", CountIn(dynamic + " | grep -c NEEDED"), {5, 3});
  const double stripped = CountIn("stripped=$(mktemp) && strip --strip-unneeded -o $stripped" +
                                  file + " && stat -c %s $stripped && rm $stripped");
  table.AddCount("stripped size", " kB", stripped / 1000, {400, 300});
}

}  // namespace bench
