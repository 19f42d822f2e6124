// Reader packets and the nibble text they travel in.
#include "quillonid/link.h"
#include "quillonid/support.h"
#include "tests/models/model.h"

namespace {

constexpr std::size_t kLargestPayload = 508;  // of a frame buffer of 1,024 bytes
constexpr int kLargestBody = 1024;            // characters

void Split(unsigned byte, unsigned char* out) {
  out[0] = static_cast<unsigned char>(byte / 16 + 0x30);
  out[1] = static_cast<unsigned char>(byte % 16 + 0x30);
}

unsigned char Merge(unsigned a, unsigned b) {
  return static_cast<unsigned char>((a << 4 | (b & 0x0F)) & 0xFF);
}

unsigned char XorOf(const unsigned char* data, int from, int to) {
  unsigned char check = 0;
  for (int i = from; i < to; ++i) check ^= data[i];
  return check;
}

std::uint32_t ModelPacket(unsigned char head, unsigned char end, const unsigned char* data,
                          std::uint32_t n, unsigned char* out) {
  out[0] = head;
  Split(n >> 8 & 0xFF, out + 1);
  Split(n & 0xFF, out + 3);
  for (std::uint32_t i = 0; i < n; ++i) Split(data[i], out + 5 + std::size_t{2} * i);
  Split(XorOf(data, 0, static_cast<int>(n)), out + 5 + std::size_t{2} * n);
  out[7 + std::size_t{2} * n] = end;
  return 2 * n + 8;
}

int ModelBody(unsigned char head, unsigned char end, const unsigned char* data, int len,
              unsigned char* out) {
  int start = 0;
  while (start < len && data[start] != head) ++start;
  if (start >= len - 2) return -1;
  int stop = start + 1;
  while (stop < len && data[stop] != end) ++stop;
  if (stop == len || stop == start + 1) return -1;
  for (int i = start + 1; i < stop; ++i) out[i - start - 1] = data[i];
  return stop - start - 1;
}

struct Parsed {
  int result = -4;
  std::uint32_t status = 0;
};

Parsed ModelParse(unsigned char head, unsigned char end, const unsigned char* packet, int len,
                  unsigned char* out, std::uint32_t* out_len) {
  static std::array<unsigned char, 8192> body;
  std::array<unsigned char, 4096> merged = {};
  const int characters = ModelBody(head, end, packet, len, body.data());
  if (characters < 2 || characters % 2 != 0) return {};
  const int size = characters / 2;
  for (int i = 0; i < size; ++i) {
    const auto at = static_cast<std::size_t>(i);
    merged[at] = Merge(body[2 * at], body[2 * at + 1]);
  }
  if (XorOf(merged.data(), 2, size - 1) != merged[static_cast<std::size_t>(size) - 1]) return {};
  const unsigned length = merged[0] * 256U + merged[1];
  for (unsigned i = 0; i < length - 2; ++i) out[i] = merged[4 + i];
  *out_len = length - 2;
  return {0, merged[2] * 256U + merged[3]};
}

// Bytes around and inside a frame, of which some are what a frame should not hold.
std::string NearlyAFrame(Random& random, unsigned char head, unsigned char end) {
  const int size = random.OneIn(4) ? random.Between(0, 511) : random.Between(0, 40);
  std::string merged = random.Bytes(size);
  const int length = random.OneIn(4) ? random.Between(2, 1022) : std::max(size - 3, 2);
  if (size > 1) {
    merged[0] = static_cast<char>(length / 256);
    merged[1] = static_cast<char>(length % 256);
    merged[static_cast<std::size_t>(size) - 1] =
        static_cast<char>(XorOf(BytesOf(merged), 2, size - 1));
  }
  std::string frame = random.OneIn(3) ? random.Bytes(random.Between(0, 5)) : "";
  frame.push_back(static_cast<char>(head));
  for (const char c : merged) {
    unsigned char two[2];
    Split(static_cast<unsigned char>(c), two);
    frame.append({static_cast<char>(two[0]), static_cast<char>(two[1])});
  }
  if (random.OneIn(16)) frame.push_back('1');
  if (!random.OneIn(16)) frame.push_back(static_cast<char>(end));
  if (random.OneIn(3)) frame += random.Bytes(random.Between(0, 5));
  if (random.OneIn(8) && !frame.empty()) {
    frame[static_cast<std::size_t>(random.Between(0, SizeOf(frame) - 1))] =
        static_cast<char>(random.Byte());
  }
  return frame;
}

// The length that the body states is one that a parser without bounds can serve.
bool Fits(unsigned char head, unsigned char end, const std::string& frame) {
  static std::array<unsigned char, 8192> body;
  const int characters = ModelBody(head, end, BytesOf(frame), SizeOf(frame), body.data());
  if (characters < 2 || characters > kLargestBody) return characters < 2;
  const unsigned high = Merge(body[0], body[1]);
  const unsigned low = characters < 4 ? 0 : Merge(body[2], body[3]);
  const unsigned length = high * 256 + low;
  return length >= 2 && length <= 1022;
}

unsigned char HeadByte(Random& random) { return random.OneIn(4) ? random.Byte() : 0x02; }
unsigned char EndByte(Random& random) { return random.OneIn(4) ? random.Byte() : 0x03; }

}  // namespace

TEST(ModelOfStrZelMakePacket, IsEqual) {
  ForEachInput([](Random& random) {
    const int most = random.OneIn(8) ? int{kLargestPayload} : 60;
    const std::string payload = random.Bytes(random.Between(0, most));
    const auto n = static_cast<std::uint32_t>(payload.size());
    const unsigned char head = random.Byte();
    const unsigned char end = random.Byte();
    Outputs<1024> out(random);

    const auto library = Str_ZEL_MakePacket(head, end, BytesOf(payload), n, out.library());
    const auto model = ModelPacket(head, end, BytesOf(payload), n, out.model());

    return Equal(model, library) && out.AreEqual();
  });
}

TEST(ModelOfStrZelParsePacket, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char head = HeadByte(random);
    const unsigned char end = EndByte(random);
    const std::string frame = NearlyAFrame(random, head, end);
    if (!Fits(head, end, frame)) return true;
    Outputs<1024> out(random);
    std::uint32_t library_length = 0xAAAA;
    std::uint32_t model_length = 0xAAAA;
    COMM_Zel_SetRecStatus(0xBBBB);

    const int library =
        Str_ZEL_ParsePacket(head, end, BytesOf(frame), static_cast<std::uint32_t>(frame.size()),
                            out.library(), &library_length);
    const Parsed model =
        ModelParse(head, end, BytesOf(frame), SizeOf(frame), out.model(), &model_length);

    const std::uint32_t status = model.result == 0 ? model.status : 0xBBBB;
    return Equal(model.result, library) && Equal(model_length, library_length) &&
           Equal(status, std::uint32_t{COMM_Zel_GetRecStatus()}) && out.AreEqual();
  });
}

TEST(ModelOfStrGetPacketBody, IsEqual) {
  ForEachInput([](Random& random) {
    const unsigned char head = HeadByte(random);
    const unsigned char end = EndByte(random);
    const std::string frame =
        random.OneIn(2) ? NearlyAFrame(random, head, end)
                        : random.Text(random.Between(0, 12), std::string("\x02\x03\x30", 3));
    Outputs<2048> out(random);

    const int library = Str_GetPacketBody(head, end, BytesOf(frame), SizeOf(frame), out.library());
    const int model = ModelBody(head, end, BytesOf(frame), SizeOf(frame), out.model());

    return Equal(model, library) && out.AreEqual();
  });
}

TEST(ModelOfStrZelModeSplitData, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(0, 100));
    Outputs<200> out(random);

    Str_ZelModeSplitData(BytesOf(bytes), SizeOf(bytes), out.library());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      Split(static_cast<unsigned char>(bytes[i]), out.model() + 2 * i);
    }

    return out.AreEqual();
  });
}

TEST(ModelOfStrZelModeMergeData, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string text = random.Bytes(random.Between(0, 100));
    Outputs<50> out(random);

    Str_ZelModeMergeData(BytesOf(text), SizeOf(text), out.library());
    for (std::size_t i = 0; text.size() % 2 == 0 && i < text.size(); i += 2) {
      out.model()[i / 2] = Merge(BytesOf(text)[i], BytesOf(text)[i + 1]);
    }

    return out.AreEqual();
  });
}

TEST(ModelOfStrCalcLrc, IsEqual) {
  ForEachInput([](Random& random) {
    const std::string bytes = random.Bytes(random.Between(0, 600));
    const int model = XorOf(BytesOf(bytes), 0, SizeOf(bytes));

    return Equal(model, Str_CalcLrc(BytesOf(bytes), SizeOf(bytes))) &&
           Equal(model, int{Str_GetDataLRC(BytesOf(bytes), SizeOf(bytes))});
  });
}

TEST(ModelOfCheck, IsEqual) {
  ForEachInput([](Random& random) {
    std::string bytes = random.Bytes(random.Between(1, 100));
    if (random.OneIn(2)) {
      bytes.push_back(static_cast<char>(XorOf(BytesOf(bytes), 0, SizeOf(bytes))));
    }
    const int length = random.OneIn(8) ? random.Between(-3, 2) : SizeOf(bytes);
    const int looked_at = std::max(length, 1);
    if (looked_at > SizeOf(bytes)) return true;

    return Equal(int{XorOf(BytesOf(bytes), 0, looked_at) == 0}, Check(BytesOf(bytes), length));
  });
}
