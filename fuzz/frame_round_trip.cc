// A packet made by the library is the model's, and an answer of any payload survives being taken
// apart, whatever stands before and behind it.
#include "fuzz/check.h"
#include "fuzz/frames.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/link.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  // Bytes of the line's characters, 0x30 to 0x3F, cannot be head or end.
  const auto head = static_cast<std::uint8_t>(input.Byte() % 0x30);
  const auto end = static_cast<std::uint8_t>(input.Byte() % 0x30);
  Bytes before = input.Take(input.Byte() % 8);
  before.erase(std::remove(before.begin(), before.end(), head), before.end());
  const Bytes behind = input.Take(input.Byte() % 8);
  const unsigned status = input.Byte() * 256U + input.Byte();
  const Bytes payload = input.Rest();

  const Exact<unsigned char> sent(payload);
  const std::size_t frame_size = 2 * payload.size() + 8;
  Guarded frame(frame_size);
  const auto count = static_cast<std::uint32_t>(payload.size());
  FUZZ_CHECK(Str_ZEL_MakePacket(head, end, sent.get(), count, frame.bytes()) == frame_size);
  FUZZ_CHECK(frame.First(frame_size) == frames::Make(head, end, payload));

  // An answer: the same frame with a status before the payload. 507 bytes are the most that fit.
  Bytes content = {static_cast<std::uint8_t>(status >> 8),
                   static_cast<std::uint8_t>(status & 0xFF)};
  content.insert(content.end(), payload.begin(), payload.end());
  content.resize(std::min<std::size_t>(content.size(), 509));
  Bytes answer = before;
  const Bytes framed = frames::Make(head, end, content);
  answer.insert(answer.end(), framed.begin(), framed.end());
  answer.insert(answer.end(), behind.begin(), behind.end());

  const Exact<unsigned char> received(answer);
  Guarded out(frames::kLongestPayload);
  std::uint32_t length = 0;
  FUZZ_CHECK(Str_ZEL_ParsePacket(head, end, received.get(),
                                 static_cast<std::uint32_t>(answer.size()), out.bytes(),
                                 &length) == 0);
  FUZZ_CHECK(out.First(length) == Bytes(content.begin() + 2, content.end()));
  FUZZ_CHECK(COMM_Zel_GetRecStatus() == status);
  return 0;
}
