// A whole read over a scripted libusb and a virtual clock: the result is a published one, the time
// is bounded, everything is given back to libusb, fields are texts.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/scripted_card.h"
#include "fuzz/scripted_usb.h"
#include "fuzz/session.h"
#include "fuzz/virtual_clock.h"
#include "quillonid/quillonid.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  session::Reading reading = {};
  reading.device = "HID";
  reading.function = input.Between(0, session::kReaders - 1);
  reading.limit = input.Between(0, 20);
  reading.baud = 115200;
  reading.fingerprints = input.Flag();
  const int modes = input.Byte() % 4;
  const int cancel_at = input.Byte();  // the wait at which a cancel comes; 0: none
  ScriptedCard card(&input, session::WithFingerprints(reading));
  scripted_usb::Plug(&input, &card);
  APP_ID_SetSearchDirect(modes & 1);
  APP_ID_SetOneInstrReadInfo(modes >> 1);

  std::int64_t waits = 0;
  virtual_clock::Start([&] {
    if (++waits == cancel_at) APP_ID_CancelRead();
  });
  const int result = session::Read(reading);
  virtual_clock::Stop();

  FUZZ_CHECK(session::IsPublished(result));
  FUZZ_CHECK(session::IsWithinBounds(reading.limit, virtual_clock::Microseconds(),
                                     virtual_clock::Calls()));
  FUZZ_CHECK(scripted_usb::Held() == 0);
  if (reading.limit < 1) FUZZ_CHECK(result != 0);
  const bool cancelled = cancel_at != 0 && waits >= cancel_at;
  if (reading.limit >= 1 && !cancelled && card.Flawless() && scripted_usb::Flawless() &&
      reading.function >= 9 && card.HasKnownKind()) {
    FUZZ_CHECK(result == 0);
  }
  scripted_usb::Unplug();
  APP_ID_SetSearchDirect(0);
  APP_ID_SetOneInstrReadInfo(0);
  return 0;
}
