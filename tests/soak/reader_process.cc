#include "tests/soak/reader_process.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "simulator/tty_reader.h"

namespace {

void Send(int line, const std::string& text) {
  if (send(line, text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the reader's process is gone");
  }
}

std::string Receive(int line) {
  char text[256];
  const ssize_t got = recv(line, text, sizeof text, 0);
  return got > 0 ? std::string(text, static_cast<std::size_t>(got)) : "";
}

// Answers "SPECIMEN FINGERPRINTS FAULT" with the device path until the other end is closed.
void Serve(int line) {
  std::unique_ptr<simulator::TtyReader> reader;
  for (std::string text = Receive(line); !text.empty(); text = Receive(line)) {
    // A new one: nothing of the read before is still on its way. It comes before the old one goes,
    // so that their paths differ.
    reader = std::make_unique<simulator::TtyReader>();
    std::istringstream words(text);
    std::string specimen, fault;
    bool fingerprints = false;
    words >> specimen >> fingerprints >> fault;
    reader->PutCard(simulator::MakeCard(specimen, fingerprints));
    if (!fault.empty()) reader->SetFault(simulator::ParseFault(fault).value());
    Send(line, reader->path());
  }
}

}  // namespace

ReaderProcess::ReaderProcess() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::runtime_error("no socket pair");
  }
  pid_ = fork();
  if (pid_ == 0) {
    close(ends[0]);
    Serve(ends[1]);
    _exit(EXIT_SUCCESS);
  }
  close(ends[1]);
  line_ = ends[0];
}

ReaderProcess::~ReaderProcess() {
  close(line_);
  waitpid(pid_, nullptr, 0);
}

std::string ReaderProcess::Prepare(const std::string& specimen, bool fingerprints,
                                   const std::string& fault) {
  Send(line_, specimen + (fingerprints ? " 1 " : " 0 ") + fault);
  return Receive(line_);
}
