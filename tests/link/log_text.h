// What a test reads in the log, shortened: the area's level, "!" for an error, the message.
#ifndef QUILLONID_TESTS_LINK_LOG_TEXT_H
#define QUILLONID_TESTS_LINK_LOG_TEXT_H

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

// Every line: "2: nDataLen = 4", "3!: ...", and for a dump "title: 02 30". A line of another form
// stays as LogLines() returns it.
Lines Logged();

// The lines of one area alone, without its level: Logged("2") gives "nDataLen = 4".
Lines Logged(const std::string& level);

// A message that itself ends in "\r\n" leaves an empty line behind it, and loses its own end here.
Lines WithoutEmptyLines(const Lines& lines);

// How many lines of the log begin like that.
std::size_t CountLogged(const std::string& start);

#endif
