// Device texts: what opening and closing does for each of them.
#include <strings.h>

#include <cstdlib>

#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "tests/models/line.h"
#include "tests/models/model.h"
#include "tests/usb/fake_libusb.h"

namespace {

constexpr std::uint64_t kOpens = 20000;

using Events = std::vector<std::string>;

// What opening before has left.
struct Model {
  unsigned kind = 0;
  int baud = 0;
  unsigned connect_type = 0;
  bool raises = false;
  struct {
    int product, vendor;
  } added[10] = {};
  int tries = 6;
};

std::string AnyDevice(Random& random) {
  constexpr const char* kTexts[] = {"HID",  "1001", "SDT",        "PCSC",     "AUX",
                                    "AUX1", "aux2", "BLUETOOTH ", "/dev/tty", "/dev",
                                    "COM1", "COM",  "/DEV/ttyS0", "com1",     "",
                                    "1002", "HIDX", "BLUETOOTH:", "AUX x",    "/dev/ttyS0"};
  std::string text = kTexts[random.Between(0, 19)];
  if (text.rfind("BLUETOOTH", 0) == 0) {
    text += random.Text(random.OneIn(4) ? random.Between(15, 19) : 17, "01:F");
  }
  if (text.rfind("/dev", 0) == 0 && random.OneIn(2)) {
    text += random.Text(random.OneIn(8) ? random.Between(200, 240) : random.Between(1, 9), "a/1");
  }
  if (random.OneIn(4)) {
    for (char& c : text) {
      if (c >= 'A' && c <= 'Z' && random.OneIn(2)) c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return text;
}

bool IsAnyCase(const std::string& text, const char* word) {
  return strcasecmp(text.c_str(), word) == 0;
}

int ListedRate(int baud) {
  constexpr int kRates[] = {300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400};
  return std::find(std::begin(kRates), std::end(kRates), baud) == std::end(kRates) ? 9600 : baud;
}

// The command for a rate, as the line sees it.
void SendBaud(int baud, Events* events) {
  if (baud == 115200) events->emplace_back("write 1B 25 53 31");
  if (baud == 38400) events->emplace_back("write 1B 25 53 32");
  if (baud == 19200) events->emplace_back("write 1B 25 53 33");
  if (baud == 9600) events->emplace_back("write 1B 25 53 34");
  if (baud == 0) events->emplace_back("write 1B 25 42");
}

void CloseLine(Events* events) {
  events->push_back("rate " + std::to_string(line::kFirstRate));
  events->emplace_back("close");
}

int OpenLine(Model* model, const std::string& path, int baud, bool opens, Events* events) {
  model->kind = 1;
  model->baud = model->raises ? 9600 : baud;
  if (path.empty()) return -50;
  events->push_back("open " + path);
  if (!opens) return -50;
  events->push_back("rate " + std::to_string(ListedRate(model->baud)));
  if (baud == 9600 || !model->raises) return 0;
  SendBaud(baud, events);
  CloseLine(events);
  model->baud = baud;
  events->push_back("open " + path);
  events->push_back("rate " + std::to_string(ListedRate(baud)));
  return 0;
}

// `present`: the reader on the bus; none when its ids are negative.
int OpenUsb(Model* model, int product, int vendor, int* tries) {
  constexpr int kKnown[6][2] = {
      {0xBCD5, 0x0403},
      {0xBCD7, 0x0403},
      {0xBC95, 0x0403},
      {0xBE11, 0x2B46},
      {0xBE01, 0x2B46},
      {0xBC01, 0x2B46},
  };
  model->kind = 7;
  model->connect_type = 0;
  for (*tries = 1; *tries <= model->tries; ++*tries) {
    const int i = *tries - 1;
    const int tried_product = i < 6 ? kKnown[i][0] : model->added[i - 6].product;
    const int tried_vendor = i < 6 ? kKnown[i][1] : model->added[i - 6].vendor;
    if (product >= 0 && product == tried_product && vendor == tried_vendor) return 0;
  }
  --*tries;
  return -50;
}

// A reader that is one of those tried, or nearly, or none.
void AnyUsbReader(Random& random, const Model& model, int* product, int* vendor) {
  constexpr int kProducts[] = {0xBCD5, 0xBCD7, 0xBC95, 0xBE11, 0xBE01, 0xBC01};
  *product = *vendor = -1;
  if (random.OneIn(4)) return;
  *product = kProducts[random.Between(0, 5)];
  *vendor = random.OneIn(2) ? 0x0403 : 0x2B46;
  if (random.OneIn(2)) {
    const auto& added = model.added[random.Between(0, 9)];
    if (added.product > 0xFFFF || added.vendor > 0xFFFF) return;
    *product = added.product;
    *vendor = added.vendor;
  }
}

bool AddsAsTheModel(Random& random, Model* model) {
  const int index = random.OneIn(8) ? random.Between(-2, 12) : random.Between(0, 9);
  const bool fits = index >= 0 && index <= 9;
  const int product = random.Between(0, random.OneIn(8) ? 0x1FFFF : 3);
  const int vendor = random.Between(0, 2);
  int result = 0;
  bool is_taken = fits;
  if (random.OneIn(2)) {
    result = APP_ID_AddHID(index, product, vendor);
  } else {
    char product_text[8];
    char vendor_text[8];
    const int digits = random.OneIn(8) ? 3 : 4;
    std::snprintf(product_text, sizeof product_text, "%0*X", digits,
                  static_cast<unsigned>(product));
    std::snprintf(vendor_text, sizeof vendor_text, "%0*X", digits, static_cast<unsigned>(vendor));
    is_taken = fits && std::strlen(product_text) == 4 && std::strlen(vendor_text) == 4;
    result = Linux_QL_ID_AddHID(index, product_text, vendor_text);
  }
  if (is_taken) {
    model->added[index] = {product, vendor};
    model->tries = 6 + index + 1;
  }
  return Equal(is_taken ? 0 : -2, result);
}

}  // namespace

TEST(ModelOfFuncOpenDevice, IsEqual) {
  Model model;
  ForEachInput(
      [&model](Random& random) {
        if (random.OneIn(4) && !AddsAsTheModel(random, &model)) return false;
        if (random.OneIn(4)) {
          model.raises = random.OneIn(2);
          QL_APP_Id_RaiseBaundFlag(model.raises ? random.Between(1, 3) : 0);
        }
        const std::string text = AnyDevice(random);
        constexpr int kBauds[] = {9600, 115200, 38400, 19200, 57600, 0, 14400, 230400};
        const int baud = kBauds[random.Between(0, 7)];
        int product = 0;
        int vendor = 0;
        AnyUsbReader(random, model, &product, &vendor);
        line::Start(0);
        line::State& line = line::Now();
        line.notes_writes = true;
        line.opens = !random.OneIn(4);
        fake_libusb::State& usb = fake_libusb::Now();
        usb.calls.clear();
        usb.devices.clear();
        if (product >= 0) {
          usb.devices.push_back(
              {static_cast<std::uint16_t>(vendor), static_cast<std::uint16_t>(product)});
        }

        const int library = tFuncOpenDevice(text.c_str(), "", baud, random.Between(0, 5), 3);
        const auto tried = std::count(usb.calls.begin(), usb.calls.end(), "init");
        tFuncCloseDevice();

        int result = -2;
        int tries = 0;
        Events events;
        if (text.empty()) {
          result = -50;
        } else if (IsAnyCase(text, "HID") || text == "1001") {
          result = OpenUsb(&model, product, vendor, &tries);
        } else if (IsAnyCase(text, "SDT")) {
          model.kind = 3;
          model.connect_type = 3;
          result = -50;
        } else if (IsAnyCase(text, "PCSC")) {
          model.kind = 2;
          model.connect_type = 2;
          result = -50;
        } else if (IsAnyCase(text.substr(0, 3), "AUX")) {
          model.kind = 4;
          result = -50;
        } else if (text.size() == 27 && IsAnyCase(text.substr(0, 9), "BLUETOOTH")) {
          model.kind = 6;
          result = -50;
        } else if (text.substr(0, 4) == "/dev") {
          result = OpenLine(&model, text, baud, line.opens, &events);
        } else if (text.substr(0, 3) == "COM") {
          if (baud == 9600 || baud == 115200) {
            result = OpenLine(&model, "", baud, line.opens, &events);
          }
        }
        if (result == 0 && model.kind == 1) {
          if (model.baud != 9600 && model.raises) SendBaud(0, &events);
          CloseLine(&events);
        }

        return Equal(result, library) && Equal(events, line.events) &&
               Equal(std::ptrdiff_t{tries}, std::ptrdiff_t{tried}) &&
               Equal(model.connect_type, unsigned{Dev_Zel_IdCard_GetConnectType()}) &&
               Equal(0, usb.handles + usb.contexts + usb.lists);
      },
      kOpens);
}
