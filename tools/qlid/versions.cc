#include "tools/qlid/versions.h"

#include <cjson/cJSON.h>
#include <dlfcn.h>
#include <libusb-1.0/libusb.h>

#include <filesystem>

#include "quillonid/quillonid.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr char kSuffix[] = ".so.";

std::filesystem::path LibraryFile() {
  Dl_info info = {};
  // POSIX wants a function's address to fit a data pointer.
  if (dladdr(reinterpret_cast<const void*>(&APP_ID_ReadCollectIDCard), &info) == 0) return {};
  return info.dli_fname ? info.dli_fname : "";
}

}  // namespace

std::string LibraryName() { return LibraryFile().filename().string(); }

std::string LibraryVersion() {
  std::error_code none;
  const std::string file = std::filesystem::canonical(LibraryFile(), none).filename().string();
  const std::size_t at = file.find(kSuffix);
  return at == std::string::npos ? "?" : file.substr(at + sizeof kSuffix - 1);
}

std::string VersionText() {
  const libusb_version* usb = libusb_get_version();
  return Format("qlid %s\nlibquillonid %s (%s), libusb %d.%d.%d, cJSON %s", QLID_VERSION,
                LibraryVersion().c_str(), LibraryName().c_str(), usb->major, usb->minor, usb->micro,
                cJSON_Version());
}

}  // namespace qlid
