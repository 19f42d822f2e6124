// Exported calls that need no reader, each with what it has to give: on the data that reads before
// have left, and with it for the reads that follow.
#ifndef QUILLONID_FUZZ_DATA_CALLS_H
#define QUILLONID_FUZZ_DATA_CALLS_H

#include "fuzz/input.h"

namespace data_calls {

// A collect record to its text and back into every record.
void PackAndReadJson(Input& input);
// Head, sides and whole card of a record, as a file or as base64.
void SaveImage(Input& input);
// Base64 there and back.
void Base64(Input& input);
// Native data of any length, kept or not.
void KeepNativeData(Input& input);

}  // namespace data_calls

#endif
