// Versions of what is loaded, as found at run time.
#ifndef QUILLONID_TOOLS_QLID_VERSIONS_H
#define QUILLONID_TOOLS_QLID_VERSIONS_H

#include <string>

namespace qlid {

// The loaded library's file: "libquillonid.so.1", and "1.0.0" from the file that this leads to.
std::string LibraryName();
std::string LibraryVersion();

// The two lines of `qlid --version`.
std::string VersionText();

}  // namespace qlid

#endif
