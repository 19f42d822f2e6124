// Fingerprint templates: three lengths from the card say where they lie and how long they are. The
// input's first six bytes are those lengths, the rest is spread over the buffer.
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/templates_model.h"
#include "quillonid/carddata.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Bytes lengths = input.Take(6);
  const Bytes pattern = input.Rest();
  Bytes native(templates::kNativeSize);
  for (std::size_t i = 0; i < native.size(); ++i) {
    native[i] = pattern.empty() ? static_cast<std::uint8_t>(i % 251) : pattern[i % pattern.size()];
  }
  std::copy(lengths.begin(), lengths.end(), native.begin() + 10);
  const Exact<unsigned char> block(native);
  Guarded first(templates::kTextSize), second(templates::kTextSize);

  tFuncGetFpTemplate(block.get(), first.text(), second.text());

  const std::string first_text = templates::TextOf(native, 0);
  const std::string second_text = templates::TextOf(native, 1);
  FUZZ_CHECK(first.Text() == first_text && first.UntouchedFrom(first_text.size() + 1));
  FUZZ_CHECK(second.Text() == second_text && second.UntouchedFrom(second_text.size() + 1));

  GuardedRecord<PERSONINFO_GAT_FP> permit;
  GetGATFpTemplate(block.get(), permit.get());
  FUZZ_CHECK(permit->fingerData1 == first_text && permit->fingerData2 == second_text);
  FUZZ_CHECK(permit.bytes().First(sizeof(PERSONINFO_GAT)) ==
             Bytes(sizeof(PERSONINFO_GAT), kUntouched));
  return 0;
}
