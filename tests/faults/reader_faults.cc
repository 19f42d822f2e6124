#include "tests/faults/reader_faults.h"

#include <algorithm>
#include <ostream>

#include "tests/testing/valgrind.h"

namespace faults {
namespace {

// How long a read takes that is given kTimeLimit seconds, at most.
constexpr int kOnce = 9;                       // each command once, its answer in time
constexpr int kSearches = kTimeLimit + 5;      // searches, the last one unanswered
constexpr int kAnswered = kTimeLimit + 3;      // reads again and again, always answered
constexpr int kUnanswered = kTimeLimit + 9;    // the same, the last read unanswered
constexpr int kLongest = 2 * kTimeLimit + 10;  // reads, then searches for as long again

// Old answers meet later commands.
const std::initializer_list<int> kAnyError = {-2, -3, -5};
// The select has what the search left of its time, in whole seconds: whether two are enough is a
// matter of the moment.
const std::initializer_list<int> kAnyEnd = {0, -2, -3, -5};

const ReaderFault kReaderFaults[] = {
    {"silent",           {-5},      {-5},      kSearches  },
    {"no-card",          {-5},      {-5},      kSearches  },
    {"card-after=3",     {0},       {0},       kOnce      },
    {"select-no-card",   {-10},     {-10},     kOnce      },
    {"select-unknown",   {-2},      {-2},      kOnce      },
    {"ic-power-on",      {-100},    {-100},    kOnce      },
    {"unsupported",      {-5},      {-5},      kAnswered  },
    {"unsupported-card", {-12},     kAnyError, kLongest   }, // USB takes the short answer, then the rest
    {"read-failed",      {-5},      {-5},      kAnswered  },
    {"bad-check",        {-5},      {-5},      kAnswered  },
    {"bad-check-once",   {0},       {0},       kOnce      },
    {"length=0",         {-5},      {-5},      kUnanswered},
    {"length=3",         {-5},      {-5},      kUnanswered},
    {"length=11",        {-5},      {-5},      kAnswered  },
    {"length=1294",      {-5},      {-5},      kAnswered  },
    {"length=1296",      {-5},      {-5},      kAnswered  },
    {"length=1297",      {0},       {0},       kOnce      },
    {"length=1298",      {-5},      {-5},      kAnswered  },
    {"length=2320",      {-5},      {-5},      kAnswered  },
    {"length=2321",      {0},       {0},       kOnce      },
    {"length=2322",      {-5},      {-5},      kAnswered  },
    {"length=4096",      {-5},      kAnyError, kLongest   },
    {"length=65535",     kAnyError, kAnyError, kLongest   },
    {"cut=0",            {-5},      {-5},      kUnanswered},
    {"cut=6",            {-5},      {-5},      kUnanswered},
    {"cut=700",          {-5},      {-5},      kUnanswered},
    {"cut=1294",         {-5},      {-5},      kUnanswered},
    {"cut=1295",         {0},       {0},       kOnce      },
    {"garbage=0",        {0},       {0},       kOnce      },
    {"garbage=1",        {-5},      {-5},      kSearches  },
    {"garbage=7",        {-5},      {-5},      kSearches  },
    {"garbage=100",      {-5},      {-5},      kSearches  },
    {"garbage=4095",     {-5},      {-5},      kSearches  },
    {"slow=333",         {0},       {0},       kOnce      }, // a byte every 3 ms
    {"slow=20",          {-5},      {-5},      kLongest   }, // a byte every 50 ms
    {"slow=1000",        {0},       {0},       kOnce      },
    {"slow=20000",       {0},       {0},       kOnce      },
    {"late=1",           {0},       {0},       kOnce      },
    {"late=2",           kAnyEnd,   kAnyEnd,   kLongest   },
    {"late=4",           kAnyError, kAnyError, kLongest   },
    {"hang-up=0",        {-5},      {-5},      kSearches  }, // as the search is answered,
    {"hang-up=7",        {-5},      {-5},      kSearches  },
    {"hang-up=15",       kAnyError, kAnyError, kLongest   }, // before or behind the select,
    {"hang-up=40",       {-5},      {-5},      kLongest   }, // early and late in the read,
    {"hang-up=700",      {-5},      {-5},      kLongest   },
    {"hang-up=1328",     {-5},      {-5},      kLongest   },
    {"hang-up=1329",     {0},       {0},       kOnce      }, // before the close
    {"blocked",          {-3},      {0},       kOnce      }, // a tty's line alone
    {"other-kind",       {-11},     {-11},     kOnce      },
    {"unknown-kind",     {-11},     {-11},     kOnce      },
    {"photo-length",     {-100},    {-100},    kOnce      },
    {"photo-refused",    {-7},      {-7},      kOnce      },
};

constexpr double kSlack = 2;  // real seconds
constexpr double kSlackWhereSlow = 60;

}  // namespace

double Slack(double speed) {
  return (RunsSlowly() ? kSlackWhereSlow : kSlack) * std::max(speed, 1.0);
}

void PrintTo(const ReaderFault& row, std::ostream* out) { *out << row.fault; }

std::span<const ReaderFault> ReaderFaults() { return kReaderFaults; }

bool Has(const std::vector<int>& results, int result) {
  return std::find(results.begin(), results.end(), result) != results.end();
}

}  // namespace faults
