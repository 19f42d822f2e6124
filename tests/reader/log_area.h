// Log lines of one area: the message alone, led by "! " when the line is of the error type.
#ifndef QUILLONID_TESTS_READER_LOG_AREA_H
#define QUILLONID_TESTS_READER_LOG_AREA_H

#include <string>
#include <vector>

inline constexpr char kCardArea[] = "BusiId:";
inline constexpr char kApiArea[] = "AppId:";

// A line's opening up to its message: the area name is written over the type text.
std::string LineOpening(bool error, const std::string& area);

std::vector<std::string> LinesOf(const std::string& area);

// Whether the log holds `line` as it stands.
bool HasLine(const std::string& line);

#endif
