// A reader on a pseudo-terminal that answers each command frame by a script: a thread on the
// master side takes frames apart and writes what the test laid down for them.
#ifndef QUILLONID_TESTS_READER_SCRIPTED_READER_H
#define QUILLONID_TESTS_READER_SCRIPTED_READER_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

// Card-module commands as hexadecimal text, and the answers that have a name.
inline const std::string kCheckCommand = "AA AA AA 96 69 00 03 11 FF ED";
inline const std::string kSearchCommand = "AA AA AA 96 69 00 03 20 01 22";
inline const std::string kSelectCommand = "AA AA AA 96 69 00 03 20 02 21";
inline const std::string kReadCommand = "AA AA AA 96 69 00 03 30 01 32";
inline const std::string kFingerCommand = "AA AA AA 96 69 00 03 30 10 23";
inline const std::string kOneCommand = "AA AA AA 96 69 00 03 30 20 13";

inline const std::string kReadyAnswer = "AA AA AA 96 69 00 04 00 00 90 94";
inline const std::string kFoundAnswer = "AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97";
inline const std::string kSelectedAnswer =
    "AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C";
inline const std::string kNoCardAnswer = "AA AA AA 96 69 00 04 00 00 81 85";
inline const std::string kIcPowerOnAnswer = "AA AA AA 96 69 00 04 40 02 41 07";
inline const std::string kReadFailedAnswer = "AA AA AA 96 69 00 04 00 00 41 45";
inline const std::string kUnsupportedAnswer = "AA AA AA 96 69 00 04 00 00 21 45 00";
inline const std::string kSilence;

// `bytes` with the exclusive-or of all but the last, from offset 5 on, as their last byte.
Bytes WithCheckByte(Bytes bytes);

// A read reply of `size` bytes whose length field and check byte are right. The content is `seed`
// and what follows from it, so that two replies differ.
Bytes ReadReply(std::size_t size, unsigned seed = 1);

class ScriptedReader {
 public:
  struct Answer {
    Bytes bytes;                  // empty: silence
    std::function<void()> first;  // runs on the reader's thread before the answer goes out
  };

  ScriptedReader();
  ScriptedReader(const ScriptedReader&) = delete;
  ScriptedReader& operator=(const ScriptedReader&) = delete;
  ~ScriptedReader();

  // Device path of the tty.
  const std::string& Path() const { return path_; }

  // Lays down the next answer to a command; the last one laid down stays for good. A command
  // without answers meets silence.
  void On(const std::string& command, Bytes answer, std::function<void()> first = {});
  void On(const std::string& command, const std::string& answer, std::function<void()> first = {});

  // Found, selected, and `reply` to every read command.
  void HoldCard(const Bytes& reply);

  // Puts bytes into the line now and returns when all of them can be read.
  void SendAhead(const Bytes& bytes);

  // The line is gone, as when the plug is pulled.
  void HangUp();

  // What arrived so far: whole frames as hexadecimal text, and all bytes.
  std::vector<std::string> Commands() const;
  Bytes Received() const;
  // The same when `size` bytes have arrived, or after a while without them.
  Bytes Received(std::size_t size) const;

 private:
  void Serve();
  void TakeFrames(Bytes* pending);
  void Respond(const std::string& command);

  int master_ = -1;
  int line_ = -1;  // a descriptor of the tty's own side, so that closing the port hangs nothing up
  int stop_[2] = {-1, -1};
  std::string path_;
  mutable std::mutex mutex_;
  std::map<std::string, std::deque<Answer>> script_;
  std::vector<std::string> commands_;
  Bytes received_;
  std::thread thread_;
};

#endif
