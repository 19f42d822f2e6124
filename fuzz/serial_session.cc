// A whole read over a scripted serial line and a virtual clock: the result is a published one, the
// time is bounded, the port is closed with the settings it had, fields are texts, the photo is the
// card's. A cancel that is repeated until the read returns ends it at once.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/scripted_card.h"
#include "fuzz/scripted_tty.h"
#include "fuzz/session.h"
#include "fuzz/virtual_clock.h"
#include "quillonid/quillonid.h"

namespace {

constexpr std::int64_t kNever = -1;
constexpr std::int64_t kCancelled = 1'300'000;  // microseconds: a pause, and a slice of a read

void SetModes(int modes) {
  APP_ID_SetSearchDirect(modes & 1);
  APP_ID_SetOneInstrReadInfo(modes >> 1 & 1);
  QL_APP_Id_RaiseBaundFlag(modes >> 2 & 1);
  APP_ID_IDCardAddPhotoDataToJsonFlag(modes >> 3 & 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  session::Reading reading = {};
  reading.device = kScriptedTty;
  reading.function = input.Between(0, session::kReaders - 1);
  reading.limit = input.Between(0, 20);
  reading.baud = input.Flag() ? 9600 : 115200;
  const bool logs = session::TakeFlags(&input, &reading);
  const int modes = input.Byte() % 16;
  const int cancel_at = input.Byte();  // the wait at which a cancel comes; 0: none
  ScriptedCard card(&input, session::WithFingerprints(reading));
  scripted_tty::Plug(&input, &card);
  SetModes(modes);

  std::int64_t waits = 0, cancelled = kNever, stalled = 0;
  virtual_clock::Start([&] {
    if (cancel_at == 0 || ++waits < cancel_at) return;
    if (cancelled == kNever) {
      cancelled = virtual_clock::Microseconds();
      stalled = scripted_tty::Stalled();
    }
    APP_ID_CancelRead();
  });
  int result = 0;
  {
    const session::Log log(logs);
    result = session::Read(reading);
  }
  const std::int64_t end = virtual_clock::Microseconds();
  virtual_clock::Stop();

  FUZZ_CHECK(session::IsPublished(result));
  FUZZ_CHECK(session::IsWithinBounds(reading.limit, end - scripted_tty::Stalled(),
                                     virtual_clock::Calls()));
  FUZZ_CHECK(scripted_tty::OpenDescriptors() == 0);
  if (cancelled != kNever) {
    FUZZ_CHECK(end - cancelled <= kCancelled + scripted_tty::Stalled() - stalled);
    // A good answer to the one command stands; at a raised rate the close waits, too.
    const bool may_end_before = (modes & 6) != 0 || !scripted_tty::Flawless();
    FUZZ_CHECK(may_end_before || session::IsOfCancelledRead(result));
  } else if (reading.limit < 1) {
    FUZZ_CHECK(result != 0);
  } else if (card.Flawless() && scripted_tty::Flawless() && card.HasKnownKind()) {
    FUZZ_CHECK(session::IsOfGoodRead(reading, card.Kind(), result));
  }
  scripted_tty::Unplug();
  SetModes(0);
  return 0;
}
