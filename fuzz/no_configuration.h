// Whether the library learns of its configuration file.
#ifndef QUILLONID_FUZZ_NO_CONFIGURATION_H
#define QUILLONID_FUZZ_NO_CONFIGURATION_H

namespace configuration {

// At the start it is hidden.
void Hide(bool hidden);

}  // namespace configuration

#endif
