// Reads a card as JSON until one comes or a key is pressed: the one call that another thread may
// make.
//
//   g++ -std=c++17 -o cancel_read cancel_read.cc $(pkg-config --cflags --libs quillonid) -pthread
//   ./cancel_read /dev/ttyUSB0
#include <poll.h>
#include <quillonid/quillonid.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: cancel_read DEVICE\n");
    return 2;
  }
  std::puts("Put the card on the reader; Enter stops.");
  std::fflush(stdout);

  std::vector<char> json(8192);
  std::atomic<bool> done{false};
  int result = 0;
  std::thread reading([&] {
    result = APP_ID_ReadCollectIDCardInfo(argv[1], "", 115200, 60, 0, nullptr, json.data());
    done = true;
  });

  bool pressed = false;
  while (!done) {
    pollfd keyboard = {0, POLLIN, 0};
    if (!pressed && poll(&keyboard, 1, 100) > 0) pressed = true;
    if (pressed) {
      // A cancel between two commands of the read is missed: ask until the read has ended.
      APP_ID_CancelRead();
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
  reading.join();

  if (result == QL_CANCELLED) {
    std::puts("Stopped.");
    return 0;
  }
  if (result != QL_SUCCESS) {
    std::fprintf(stderr, "no card read: result %d\n", result);
    return 1;
  }
  std::puts(json.data());
  return 0;
}
