// Sixteen bytes at a time in the compiler's vector type, each of them looked up in a table of
// sixteen by one instruction: SSSE3, Advanced SIMD. One source for both architectures.
#ifndef QUILLONID_SUPPORT_BYTE_SHUFFLE_H
#define QUILLONID_SUPPORT_BYTE_SHUFFLE_H

#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <tmmintrin.h>
#define QL_BYTE_SHUFFLE __attribute__((target("ssse3")))
#elif defined(__aarch64__)
#include <arm_neon.h>
#define QL_BYTE_SHUFFLE
#else
#define QL_BYTE_SHUFFLE
#endif

// Functions marked QL_BYTE_SHUFFLE may be called when this is true. Every AArch64 processor and
// every x86-64 processor since about 2006 (Intel) or 2011 (AMD) has the instruction.
bool HasByteShuffle();

using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Table16 = std::uint8_t[16];

inline Bytes16 Load16(const void* bytes) {
  Bytes16 value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

inline void Store16(Bytes16 value, void* bytes) { std::memcpy(bytes, &value, sizeof value); }

inline bool IsZero(Bytes16 bytes) {
  using Halves2 = std::uint64_t __attribute__((vector_size(16)));
  const auto halves = reinterpret_cast<Halves2>(bytes);
  return (halves[0] | halves[1]) == 0;
}

// The bytes of `table` at each of `index`, 0 to 15; an index of 0x80 gives 0.
QL_BYTE_SHUFFLE inline Bytes16 LookUp(Bytes16 table, Bytes16 index) {
#if defined(__x86_64__)
  return reinterpret_cast<Bytes16>(
      _mm_shuffle_epi8(reinterpret_cast<__m128i>(table), reinterpret_cast<__m128i>(index)));
#elif defined(__aarch64__)
  return vqtbl1q_u8(table, index);
#else
  Bytes16 found = {};
  for (int i = 0; i < 16; ++i) found[i] = index[i] < 16 ? table[index[i]] : 0;
  return found;
#endif
}

#endif
