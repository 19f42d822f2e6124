// Text encodings the plain way. The work areas of these models have room for anything.
#ifndef QUILLONID_TESTS_MODELS_TEXT_MODEL_H
#define QUILLONID_TESTS_MODELS_TEXT_MODEL_H

#include <cstdint>
#include <string>
#include <vector>

namespace model {

// UCS-2 unit of a pair of GBK bytes, lead 81 to FE and trail 40 to FF, from the C library's table;
// what it leaves out is a private character or "?".
unsigned UnitOfPair(unsigned lead, unsigned trail);
// The pair as lead + 256 * trail; "?" for a unit that has none.
unsigned PairOfUnit(unsigned unit);

int UnicodeToUtf8(const unsigned char* source, int size, char* dest, int dest_size);
int GbkToUcs2(std::uint16_t* dest, const unsigned char* source, int max);
int Ucs2ToGbk(char* dest, const std::uint16_t* source, int dest_size);
void GbkToUtf8(const char* source, char* dest, int dest_size);

// Names by their codes, as the lists of tests/carddata/expected_names.h say.
void Nation(int code, char* dest);
void Country(const char* code, char* dest);

}  // namespace model

#endif
