// The native data that is kept from one read to the next.
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "tests/models/model.h"

namespace {

int AnyLength(Random& random) {
  constexpr int kLengths[] = {1295, 1297, 2321};
  const int kept = kLengths[random.Between(0, 2)];
  if (random.OneIn(4)) return random.Between(-2, 4096);
  return random.OneIn(4) ? kept + random.Between(-2, 2) : kept;
}

}  // namespace

TEST(ModelOfIdNativeData, IsEqual) {
  std::string kept;
  ForEachInput([&kept](Random& random) {
    bool is_equal = true;
    if (random.OneIn(2)) {
      std::string bytes = random.Bytes(4096);
      const int length = AnyLength(random);
      is_equal =
          Equal(0, tFunc_SetIdNativeData(reinterpret_cast<unsigned char*>(bytes.data()), length));
      kept.clear();
      if (length == 1295 || length == 1297 || length == 2321) {
        kept = bytes.substr(0, static_cast<std::size_t>(length));
      }
    }
    const int room = AnyLength(random);
    Outputs<4096> out(random);

    const int library = random.OneIn(2) ? tFunc_GetIdNativeData(out.library(), room)
                                        : APP_ID_GetIdNativeData(out.library(), room);
    int model = 0;
    if (!kept.empty() && room >= SizeOf(kept)) {
      std::memcpy(out.model(), kept.data(), kept.size());
      model = SizeOf(kept);
    }

    return is_equal && Equal(model, library) && out.AreEqual();
  });
}
