// A whole read over a scripted libusb and a virtual clock: the result is a published one, the time
// is bounded, everything is given back to libusb, fields are texts, the photo is the card's. A
// cancel that is repeated until the read returns ends it with the wait that runs.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/scripted_card.h"
#include "fuzz/scripted_usb.h"
#include "fuzz/session.h"
#include "fuzz/virtual_clock.h"
#include "quillonid/quillonid.h"

namespace {

constexpr std::int64_t kNever = -1;
// Microseconds: no USB wait ends before its time, which is 5 s and what it takes to see that they
// are over; then a pause.
constexpr std::int64_t kCancelled = 7'500'000;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  session::Reading reading = {};
  reading.device = "HID";
  reading.function = input.Between(0, session::kReaders - 1);
  reading.limit = input.Between(0, 20);
  reading.baud = 115200;
  const bool logs = session::TakeFlags(&input, &reading);
  const int modes = input.Byte() % 4;
  const int cancel_at = input.Byte();  // the wait at which a cancel comes; 0: none
  ScriptedCard card(&input, session::WithFingerprints(reading));
  scripted_usb::Plug(&input, &card);
  APP_ID_SetSearchDirect(modes & 1);
  APP_ID_SetOneInstrReadInfo(modes >> 1);

  std::int64_t waits = 0, cancelled = kNever;
  virtual_clock::Start([&] {
    if (cancel_at == 0 || ++waits < cancel_at) return;
    if (cancelled == kNever) cancelled = virtual_clock::Microseconds();
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
  FUZZ_CHECK(session::IsWithinBounds(reading.limit, end, virtual_clock::Calls()));
  FUZZ_CHECK(scripted_usb::Held() == 0);
  if (cancelled != kNever) {
    FUZZ_CHECK(end - cancelled <= kCancelled);
    // A good answer to the one command stands.
    FUZZ_CHECK((modes & 2) != 0 || session::IsOfCancelledRead(result));
  } else if (reading.limit < 1) {
    FUZZ_CHECK(result != 0);
  } else if (card.Flawless() && scripted_usb::Flawless() && card.HasKnownKind()) {
    FUZZ_CHECK(session::IsOfGoodRead(reading, card.Kind(), result));
  }
  scripted_usb::Unplug();
  APP_ID_SetSearchDirect(0);
  APP_ID_SetOneInstrReadInfo(0);
  return 0;
}
