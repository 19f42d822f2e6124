// Many reads, good and bad, in one process: nothing stays behind.
#include <gtest/gtest.h>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/held.h"
#include "tests/testing/private_root.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

TEST(ManyReads, LeaveDescriptorsAndThreadsAsTheyWere) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  simulator::TtyReader reader;
  std::string photo = TemporaryFolder() + "/photo.bmp";
  const char* const faults[] = {
      "", "ic-power-on", "photo-refused", "photo-length", "bad-check-once", "unknown-kind"};
  const int results[] = {0, -100, -7, -100, 0, -100};
  std::ptrdiff_t descriptors = 0;
  std::ptrdiff_t threads = 0;

  for (std::size_t i = 0; i < 400; ++i) {
    const auto& specimen = simulator::Specimens()[i % simulator::Specimens().size()];
    const bool templates = i % 3 == 0;
    const simulator::Card card = MakeCard(specimen, templates);
    reader.PutCard(card);
    const std::size_t fault = i % std::size(faults);
    reader.module().ClearFaults();
    if (fault != 0) reader.SetFault(*simulator::ParseFault(faults[fault]));
    PERSONINFO_COLLECT_FP record = {};

    ASSERT_EQ(results[fault], APP_ID_ReadCollectIDCard_FP(reader.path().c_str(), "", 9600, 10,
                                                          photo.data(), &record))
        << specimen.id << " " << faults[fault];

    if (results[fault] == 0) {
      ASSERT_EQ(RecordTexts(card, Members<PERSONINFO_COLLECT_FP>(), true, true),
                TextsOf(&record, Members<PERSONINFO_COLLECT_FP>()));
    }
    if (i == 20) {
      descriptors = OpenDescriptors();
      threads = Threads();
    }
  }
  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ(threads, Threads());
}

}  // namespace
}  // namespace whole
