// soak READS: whole reads over a pseudo-terminal, all kinds of cards, functions and faults mixed.
// Fails when a read gives another result than it should, or when the process gains a descriptor, a
// thread, a child or more than 256 KiB of resident memory after the first 1,000 reads. Run in a
// private root; the library's pauses are skipped.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "quillonid/quillonid.h"
#include "simulator/card.h"
#include "tests/soak/reader_process.h"
#include "tests/testing/held.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

namespace fs = std::filesystem;

constexpr long kWarmUp = 1000;         // reads
constexpr long kAllowedGrowth = 256;   // KiB
constexpr long kSlowFaultEvery = 197;  // reads
constexpr long kLoggedEvery = 53;      // reads
constexpr long kFingersEvery = 5;      // reads
constexpr double kSlowFaultSpeed = 50;
constexpr int kBaud = 9600;
constexpr int kLimit = 10;  // seconds

struct Held {
  long descriptors = 0;
  long threads = 0;
  long children = 0;
  long resident = 0;  // KiB
};

long Children() {
  long count = 0;
  for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
    std::ifstream list(thread.path() / "children");
    for (std::string child; list >> child;) ++count;
  }
  return count;
}

// Without it the bound would always hold.
long ResidentKib() {
  std::ifstream file("/proc/self/smaps_rollup");
  for (std::string word; file >> word;) {
    long kib = 0;
    if (word == "Rss:" && file >> kib && kib > 0) return kib;
  }
  std::fprintf(stderr, "soak: /proc/self/smaps_rollup does not tell the resident memory\n");
  std::exit(2);
}

Held NowHeld() { return {OpenDescriptors(), Threads(), Children(), ResidentKib()}; }

void Print(const char* when, const Held& held) {
  std::printf("%-16s %ld descriptors, %ld threads, %ld child processes, %ld KiB resident\n", when,
              held.descriptors, held.threads, held.children, held.resident);
  std::fflush(stdout);
}

// Functions that read. Each returns the published result.

std::string s_photo;  // path of the photo's file

template <typename Record, int (*kRead)(const char*, const char*, long, long, char*, Record*)>
int ReadInto(const char* device) {
  Record record = {};
  return kRead(device, "", kBaud, kLimit, s_photo.data(), &record);
}

int ReadJson(const char* device) {
  static char text[8192];
  return APP_ID_ReadCollectIDCardInfo(device, "", kBaud, kLimit, 1, s_photo.data(), text);
}

struct Function {
  int (*read)(const char* device);
  bool kinds[3];  // cards it reads: simulator::Kind's resident, foreigner, permit
};

constexpr Function kFunctions[] = {
    {ReadInto<PERSONINFO_COLLECT,   APP_ID_ReadCollectIDCard>,      {true, true, true}  },
    {ReadInto<PERSONINFO_CHA,       APP_ID_ReadChinaIDCard>,        {true, false, false}},
    {ReadInto<PERSONINFO_FOR_FP,    APP_ID_ReadForeignerIDCard_FP>, {false, true, false}},
    {ReadInto<PERSONINFO_GAT,       APP_ID_ReadGATIDCard>,          {false, false, true}},
    {ReadInto<PERSONINFO,           APP_ID_ReadIDCard>,             {true, true, false} },
    {ReadJson,                      {true, true, true}            },
    {ReadInto<PERSONINFO_COLLECT_FP, APP_ID_ReadCollectIDCard_FP>,             {true, true, true}                    },
};

constexpr int kCardTypeError = -11;

struct FaultResult {
  const char* fault;
  int result;
};

// Faults of which the library notices at once.
constexpr FaultResult kQuickFaults[] = {
    {"",               0   },
    {"bad-check-once", 0   },
    {"",               0   },
    {"photo-refused",  -7  },
    {"",               0   },
    {"no-card",        -5  },
    {"",               0   },
    {"select-no-card", -10 },
    {"ic-power-on",    -100},
    {"",               0   },
    {"bad-check",      -5  },
    {"read-failed",    -5  },
    {"length=1296",    -5  },
};

// Those that end by time.
constexpr FaultResult kSlowFaults[] = {
    {"silent",      -5},
    {"cut=700",     -5},
    {"hang-up=0",   -5},
    {"garbage=100", -5},
    {"hang-up=700", -5},
};

struct Read {
  const Function* function;
  const simulator::Specimen* specimen;
  bool fingerprints;
  FaultResult fault;
  bool slow;
};

// Every kind, function and fault comes together with every other: their counts have no common
// divisor.
Read ReadNumber(long i) {
  const auto at = [i](const auto& table) -> const auto& {
    return table[static_cast<std::size_t>(i) % std::size(table)];
  };
  Read read = {&at(kFunctions), &at(simulator::Specimens()), i % kFingersEvery == 0,
               at(kQuickFaults), false};
  if (i % kSlowFaultEvery == 0) {
    read.fault =
        kSlowFaults[static_cast<std::size_t>(i / kSlowFaultEvery) % std::size(kSlowFaults)];
    read.slow = true;
  }
  return read;
}

int Expected(const Read& read) {
  const bool card_is_read = read.fault.result == 0 || read.fault.result == -7;
  const auto kind = static_cast<std::size_t>(read.specimen->kind);
  return card_is_read && !read.function->kinds[kind] ? kCardTypeError : read.fault.result;
}

void Soak(ReaderProcess& reader, long reads) {
  Held before;
  for (long i = 0; i < reads; ++i) {
    const Read read = ReadNumber(i);
    if (i % kLoggedEvery == 0) SwitchLogging(true);
    const std::string device =
        reader.Prepare(read.specimen->id, read.fingerprints, read.fault.fault);
    stand_in_clock::SetSpeed(read.slow ? kSlowFaultSpeed : 1);

    const int result = read.function->read(device.c_str());

    if (result != Expected(read)) {
      std::printf("read %ld, function %ld, %s, fault \"%s\": %d instead of %d\n", i,
                  static_cast<long>(read.function - kFunctions), read.specimen->id.c_str(),
                  read.fault.fault, result, Expected(read));
      std::exit(1);
    }
    if (i % kLoggedEvery == 0) SwitchLogging(false);
    if (i + 1 == kWarmUp) {
      before = NowHeld();
      Print("after 1,000:", before);
    }
  }
  const Held after = NowHeld();
  Print("at the end:", after);
  const bool gained = after.descriptors != before.descriptors || after.threads != before.threads ||
                      after.children != before.children ||
                      after.resident > before.resident + kAllowedGrowth;
  if (gained) {
    std::printf("something was gained\n");
    std::exit(1);
  }
  std::printf("%ld reads: nothing gained\n", reads);
}

}  // namespace

int main(int argc, char** argv) {
  const long reads = argc > 1 ? std::atol(argv[1]) : 10'000;
  if (!HavePrivateRoot() || reads <= kWarmUp) {
    std::fprintf(stderr, "soak: to be run by with-private-root, with more than 1,000 reads\n");
    return 2;
  }
  std::signal(SIGHUP, SIG_IGN);  // of a line that hangs up
  ReaderProcess reader;
  fs::copy_file(QL_SPECIMEN_DECODER, kDecoderFile);
  s_photo = TemporaryFolder() + "/photo.bmp";
  Soak(reader, reads);
  return 0;
}
