// Masks personal data in the library's log. A line keeps what is known to be harmless from its
// start on; from the first word that is not, the rest is masked. So a line of an unknown kind, a
// value that was broken over two lines, or text of the application is masked rather than shown.
#ifndef QUILLONID_TOOLS_QLID_LOG_MASK_H
#define QUILLONID_TOOLS_QLID_LOG_MASK_H

#include <string>
#include <string_view>

namespace qlid {

// One line without its line end.
std::string MaskLogLine(std::string_view line);

}  // namespace qlid

#endif
