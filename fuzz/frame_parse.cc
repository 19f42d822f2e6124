// Packets from the reader, taken apart as a plain model does it.
#include "fuzz/check.h"
#include "fuzz/frames.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/link.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::uint8_t head = input.Byte(), end = input.Byte();
  const Bytes packet = input.Rest();
  const Exact<unsigned char> sent(packet);
  Guarded out(frames::kLongestPayload);
  std::uint32_t length = 0x12345678;
  COMM_Zel_SetRecStatus(0x4242);

  const int result = Str_ZEL_ParsePacket(
      head, end, sent.get(), static_cast<std::uint32_t>(packet.size()), out.bytes(), &length);

  const frames::Parsed model = frames::Parse(head, end, packet);
  if (model.good) {
    FUZZ_CHECK(result == 0);
    FUZZ_CHECK(length == model.payload.size());
    FUZZ_CHECK(out.First(length) == model.payload);
    FUZZ_CHECK(out.UntouchedFrom(length));
    FUZZ_CHECK(COMM_Zel_GetRecStatus() == model.status);
  } else {
    FUZZ_CHECK(result == -4);
    FUZZ_CHECK(length == 0x12345678);
    FUZZ_CHECK(out.UntouchedFrom(0));
    FUZZ_CHECK(COMM_Zel_GetRecStatus() == 0x4242);
  }

  Guarded body(packet.size());
  const int count =
      Str_GetPacketBody(head, end, sent.get(), static_cast<int>(packet.size()), body.bytes());
  const Bytes expected = frames::Body(head, end, packet);
  FUZZ_CHECK(count == (expected.empty() ? -1 : static_cast<int>(expected.size())));
  FUZZ_CHECK(body.First(expected.size()) == expected);
  FUZZ_CHECK(body.UntouchedFrom(expected.size()));
  return 0;
}
