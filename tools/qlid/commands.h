// The commands of qlid and what they take from the command line. Each returns the exit status.
#ifndef QUILLONID_TOOLS_QLID_COMMANDS_H
#define QUILLONID_TOOLS_QLID_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

#include "tools/qlid/reading.h"

namespace qlid {

struct OutputOptions {
  bool json = false;
  bool redact = false;
  bool picture = false;  // show the photo on the terminal
  std::string photo;     // BMP or PNG file; empty: none
  std::string native;    // file for the read reply; empty: none
};

struct ReadOptions {
  ReadRequest request;
  std::string kind = "any";
  bool watch = false;     // card after card until stopped
  int pause = 500;        // then, milliseconds between a read and the next
  std::string exec;       // command that takes each card over; empty: none
  bool trace = false;     // show the frames that travel
  bool timing = false;    // show where the time went
  std::string record;     // file for everything that travels; empty: none
  int exec_seconds = 60;  // that it may take
  OutputOptions output;
};
int ReadCommand(const ReadOptions& options);
int WatchCommand(const ReadOptions& options);

struct DevicesOptions {
  bool json = false;
  bool known = false;                // list the ids alone
  std::string probe;                 // device to ask whether it is a reader
  long baud = 115200;                // for it
  std::vector<std::string> usb_ids;  // beside the known ones
};
int DevicesCommand(const DevicesOptions& options);

struct DecodeOptions {
  std::string file;
  bool explain = false;  // byte for byte
  bool packet = false;   // not a card answer: one frame of a line trace
  OutputOptions output;
};
int DecodeCommand(const DecodeOptions& options);

struct SimulateOptions {
  std::string card = "resident";
  std::string person;
  bool fingerprints = false;
  std::string fault;
  std::string link;  // a symbolic link to the tty, made and removed
  bool trace = false;
  std::string replay;  // recording to answer from; empty: a specimen card
};
int SimulateCommand(const SimulateOptions& options);

inline constexpr char kDemoPhoto[] = "specimen.bmp";  // where none is named

struct DemoOptions {
  std::string card = "resident";
  bool json = false;
  std::string photo;  // BMP or PNG file; empty: kDemoPhoto, where it can be written
  std::string fault;  // of the reader, by name
};
int DemoCommand(const DemoOptions& options);

struct DoctorOptions {
  ReadRequest request;  // an empty device: a USB reader, where there is one
  bool json = false;
  bool print_udev_rules = false;
};
int DoctorCommand(const DoctorOptions& options);

int ResetBaudCommand(const ReadRequest& request);

struct LogOptions {
  std::string file;  // empty: where the library writes it
  bool redact = false;
};
int LogCommand(const LogOptions& options);

struct ExplainOptions {
  std::string code;     // empty: a line for each
  bool manual = false;  // the text of the manual page
};
int ExplainCommand(const ExplainOptions& options);

}  // namespace qlid

#endif
