// qlid read --watch over many cards and pulled plugs: every card is told once, and the process does
// not grow. QL_ENDURANCE_CARDS and QL_ENDURANCE_UNPLUGS in the environment set other numbers.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "simulator/environment.h"
#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"
#include "tests/testing/valgrind.h"

namespace {

namespace fs = std::filesystem;

int Number(const char* name, int otherwise) {
  const char* text = std::getenv(name);
  return text ? std::atoi(text) : otherwise;
}

// A folder under /dev, since a serial device is named by such a path.
class DeviceFolder {
 public:
  DeviceFolder() {
    std::string name = "/dev/shm/quillonid-XXXXXX";
    if (mkdtemp(name.data())) path_ = name;
  }
  DeviceFolder(const DeviceFolder&) = delete;
  DeviceFolder& operator=(const DeviceFolder&) = delete;
  ~DeviceFolder() { fs::remove_all(path_); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// A reader behind one name, pulled and plugged in again.
class PluggedReader {
 public:
  explicit PluggedReader(std::string name) : name_(std::move(name)) { PlugIn(); }
  PluggedReader(const PluggedReader&) = delete;
  PluggedReader& operator=(const PluggedReader&) = delete;

  void PlugIn() {
    reader_.emplace();
    fs::create_symlink(reader_->path(), name_);
  }
  void Pull() {
    fs::remove(name_);
    reader_.reset();
  }
  simulator::TtyReader& operator*() { return *reader_; }

 private:
  std::string name_;
  std::optional<simulator::TtyReader> reader_;
};

simulator::Card NumberedCard(int number) {
  static const char* const kIds[] = {"resident", "foreigner", "permit"};
  simulator::Specimen person = *simulator::FindSpecimen(kIds[number % 3]);
  // Twelve digits that no other card has, for every kind.
  std::ostringstream digits;
  digits << "9999" << 10'000'000 + number;
  person.text["cardId"] = digits.str();
  return simulator::MakeCard(person);
}

std::string NumberOf(const simulator::Card& card) { return card.person.text.at("cardId"); }

struct Usage {
  std::size_t descriptors;
  std::size_t threads;
  long kilobytes;
};

Usage UsageOf(pid_t pid) {
  const fs::path process = "/proc/" + std::to_string(pid);
  const auto entries = [&](const char* folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(process / folder), fs::directory_iterator()));
  };
  Usage usage = {entries("fd"), entries("task"), 0};
  std::ifstream status(process / "status");
  for (std::string word; status >> word;) {
    if (word == "VmRSS:") status >> usage.kilobytes;
  }
  return usage;
}

constexpr int kWarm = 50;  // cards until the process has its size

// What may be open at one moment of a read and not at another.
constexpr std::size_t kOpenInARead = 4;
constexpr long kKilobytesToSpare = 4096;
#ifdef __SANITIZE_ADDRESS__
constexpr bool kMemoryIsMeasured = false;  // Freed memory is held back, as under valgrind.
#else
constexpr bool kMemoryIsMeasured = MEASURE_MEMORY;  // Not that of an emulator.
#endif

}  // namespace

TEST(QlidWatch, TellsEveryCardOnceAndDoesNotGrow) {
  const int cards = Number("QL_ENDURANCE_CARDS", CARDS);
  const int unplugs = Number("QL_ENDURANCE_UNPLUGS", UNPLUGS);
  const DeviceFolder folder;
  ASSERT_NE("", folder.path());
  const std::string device = folder.path() + "/reader";
  PluggedReader reader(device);
  Program watch(
      Qlid({"read", "--watch", "--json", "--pause", "1", "--timeout", "20", "--device", device}),
      {"LD_PRELOAD=" SKIP_SLEEPS,
       "ASAN_OPTIONS=" + simulator::Extended("ASAN_OPTIONS", "verify_asan_link_order=0")});
  Usage warm = {};
  std::size_t pulled = 0;

  for (int i = 0; i < cards; ++i) {
    const simulator::Card card = NumberedCard(i);
    if (i > 0 && unplugs > 0 && i % (cards / unplugs) == 0) {
      reader.Pull();
      ASSERT_TRUE(watch.WaitFor("reader unplugged", ++pulled)) << watch.err();
      reader.PlugIn();
    }
    (*reader).PutCard(card);
    ASSERT_TRUE(watch.WaitFor(NumberOf(card))) << i << '\n' << watch.err();
    if (i == kWarm) warm = UsageOf(watch.pid());
  }
  const Usage last = UsageOf(watch.pid());
  watch.Signal(SIGINT);
  const Output output = watch.Finish();

  EXPECT_EQ(0, output.exit);
  std::istringstream lines(output.out);
  std::set<std::string> told;
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const Json document = Parse(line);
    ASSERT_NE(nullptr, document) << line;
    if (Member(document.get(), "ok") == "true") {
      told.insert(Member(Child(document, "card"), "IDNumber"));
    } else {
      EXPECT_EQ("unplugged", Member(Child(document, "error"), "reason")) << line;
      --count;
    }
  }
  EXPECT_EQ(static_cast<std::size_t>(cards), told.size());
  EXPECT_EQ(cards, count);
  std::ostringstream sum;
  sum << "stopped after " << cards << " cards, ";
  EXPECT_TRUE(Contains(output.err, sum.str())) << output.err;
  if (cards <= kWarm) return;
  EXPECT_LE(last.descriptors, warm.descriptors + kOpenInARead);
  EXPECT_LE(last.threads, warm.threads + 1);
  if (kMemoryIsMeasured && !UnderValgrind()) {
    EXPECT_LT(last.kilobytes, warm.kilobytes + kKilobytesToSpare);
  }
  RecordProperty("kilobytes_at_the_end", static_cast<int>(last.kilobytes));
}
