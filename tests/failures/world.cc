#include "tests/failures/world.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/failures/library_file.h"
#include "tests/usb/fake_libusb.h"

namespace failures {
namespace {

constexpr std::size_t kMostCalls = 300'000;  // of one run
constexpr std::int64_t kCallLength = 1'000;  // ns

bool s_running;

[[noreturn]] void ReportEndless(const World& world) {
  std::fprintf(stderr, "%s: no end after %zu calls and %.1f s of the library's clock\n",
               world.what.c_str(), world.calls.size(),
               static_cast<double>(world.nanoseconds) / 1e9);
  std::abort();
}

bool Fails(const World& world, const Import& import) {
  const Plan& plan = world.plan;
  if (world.calls.size() == plan.position) return true;
  if (!plan.lasting || world.failing != &import) return false;
  return plan.way != kInterrupted || world.failed < kStorm;
}

const Import& CjsonMalloc() {
  static const Import& row = *FindImport("malloc");
  return row;
}

void* CountedMalloc(std::size_t size) {
  if (s_running && NextWay(CjsonMalloc(), false) != kNone) return nullptr;
  void* const block = std::malloc(size);
  if (s_running) TheWorld().blocks.insert(block);
  return block;
}

void CountedFree(void* block) {
  if (s_running && block != nullptr && TheWorld().blocks.erase(block) == 0) {
    TheWorld().misuse.emplace_back("cJSON frees what it does not hold");
  }
  std::free(block);
}

}  // namespace

World& TheWorld() {
  static World world;
  return world;
}

bool SameSettings(const termios& one, const termios& other) {
  return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag &&
         one.c_cflag == other.c_cflag && one.c_lflag == other.c_lflag &&
         std::equal(std::begin(one.c_cc), std::end(one.c_cc), std::begin(other.c_cc));
}

bool IsRunning() { return s_running; }

void InstallStandIns() {
  for (const Slot& slot : ImportSlots()) {
    const Import* const row = FindImport(slot.symbol);
    if (row != nullptr && row->stand_in != nullptr) *slot.place = row->stand_in;
  }
  cJSON_Hooks hooks = {CountedMalloc, CountedFree};
  cJSON_InitHooks(&hooks);
}

void BeginRun(const Plan& plan) {
  World& world = TheWorld();
  world.plan = plan;
  world.failing = nullptr;
  world.failed = 0;
  world.failed_beyond_log = false;
  world.calls.clear();
  world.arrived.clear();
  world.taken = 0;
  world.nanoseconds = 0;
  world.tty_was_open = false;
  world.restoring_refused = false;
  world.module.Reset();
  fake_libusb::Now().calls.clear();
  fake_libusb::Now().written.clear();
  s_running = true;
}

void EndRun() { s_running = false; }

Way NextWay(const Import& import, bool logging, unsigned possible) {
  World& world = TheWorld();
  if (world.calls.size() >= kMostCalls) ReportEndless(world);
  const unsigned ways = import.ways & possible;
  world.calls.push_back({&import, logging, ways});
  world.nanoseconds += kCallLength;
  if (world.plan.position == 0 || !Fails(world, import)) return kNone;
  if ((ways & world.plan.way) == 0) return kNone;
  world.failing = &import;
  ++world.failed;
  world.failed_beyond_log |= !logging;
  return world.plan.way;
}

void Pass(double seconds) { TheWorld().nanoseconds += static_cast<std::int64_t>(seconds * 1e9); }

}  // namespace failures
