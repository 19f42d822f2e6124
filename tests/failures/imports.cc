#include "tests/failures/imports.h"

#include <algorithm>
#include <string>

#include "tests/failures/calls.h"

namespace failures {
namespace {

template <typename Function>
void* StandIn(Function* function) {
  return reinterpret_cast<void*>(function);
}

constexpr unsigned kErrorOrSignal = kError | kInterrupted;
constexpr char kMemory[] = "works on memory that it is given";
constexpr char kReleases[] = "releases and reports nothing";
constexpr char kCompiler[] = "start-up and check code of compiler and C library";

// clang-format off
const Import kImports[] = {
    // Files and descriptors
    {"open",      StandIn(Open),     kErrorOrSignal,             "EMFILE"},
    {"close",     StandIn(Close),    kErrorOrSignal,             "EIO: closed nevertheless, what was written is lost"},
    {"read",      StandIn(Read),     kErrorOrSignal | kShort,    "EIO"},
    {"write",     StandIn(Write),    kErrorOrSignal | kShort | kBusy, "EIO; ENOSPC of a file"},
    {"pread",     StandIn(Pread),    kErrorOrSignal | kShort,    "EIO"},
    {"pwrite",    StandIn(Pwrite),   kErrorOrSignal | kShort,    "ENOSPC"},
    {"ftruncate", StandIn(Ftruncate), kErrorOrSignal,            "EIO"},
    {"stat",      StandIn(Stat),     kError,                     "EACCES"},
    {"fstat",     StandIn(Fstat),    kError,                     "EIO"},
    {"fcntl",     StandIn(Fcntl),    kError,                     "EBADF"},
    {"poll",      StandIn(Poll),     kErrorOrSignal,             "ENOMEM"},
    {"getrlimit", StandIn(Getrlimit), kError,                    "EPERM"},
    // Terminals
    {"tcgetattr", StandIn(Tcgetattr), kError,                    "EIO"},
    {"tcsetattr", StandIn(Tcsetattr), kErrorOrSignal,            "EIO"},
    {"tcflush",   StandIn(Tcflush),   kError,                    "EIO"},
    {"ioctl",     StandIn(Ioctl),     kError,                    "EIO, as of a port that is gone"},
    {"ttyname_r", StandIn(TtynameR),  kError,                    "ENOTTY"},
    // Memory and loaded code
    {"malloc",    StandIn(Malloc),   kError,                     "ENOMEM; cJSON's own blocks, too"},
    {"calloc",    StandIn(Calloc),   kError,                     "ENOMEM"},
    {"free",      StandIn(Free),     kNone,                      kReleases},
    {"dlopen",    StandIn(Dlopen),   kError,                     "null"},
    {"dlsym",     StandIn(Dlsym),    kError,                     "null"},
    {"dlclose",   StandIn(Dlclose),  kError,                     "non-zero, and closed nevertheless"},
    // Time
    {"clock_gettime", StandIn(ClockGettime), kError,             "EPERM, as a system call filter gives"},
    {"nanosleep",     StandIn(Nanosleep),    kErrorOrSignal,     "EINVAL"},
    {"sleep",         StandIn(Sleep),        kInterrupted,       "seconds left"},
    {"localtime_r",   StandIn(LocaltimeR),   kError,             "EOVERFLOW"},
    {"tzset",         nullptr,               kNone,              "keeps the time zone it had"},
    // cJSON
    {"cJSON_Parse",         StandIn(CjsonParse),         kError, "null"},
    {"cJSON_PrintBuffered", StandIn(CjsonPrintBuffered), kError, "null"},
    {"cJSON_GetObjectItem", nullptr, kNone, "null is a missing key"},
    {"cJSON_IsString",      nullptr, kNone, "looks at one number"},
    {"cJSON_Delete",        nullptr, kNone, kReleases},
    {"cJSON_free",          nullptr, kNone, kReleases},
    // libusb
    {"libusb_init",                  StandIn(UsbInit),         kError, "NO_MEM"},
    {"libusb_get_device_list",       StandIn(UsbList),         kError, "NO_MEM"},
    {"libusb_get_device_descriptor", StandIn(UsbDescriptor),   kError, "IO"},
    {"libusb_open",                  StandIn(UsbOpen),         kError, "ACCESS"},
    {"libusb_reset_device",          StandIn(UsbReset),        kError, "NOT_FOUND"},
    {"libusb_kernel_driver_active",  StandIn(UsbDriverActive), kError, "NO_DEVICE"},
    {"libusb_detach_kernel_driver",  StandIn(UsbDetach),       kError, "OTHER"},
    {"libusb_claim_interface",       StandIn(UsbClaim),        kError, "BUSY"},
    {"libusb_release_interface",     StandIn(UsbRelease),      kError, "NO_DEVICE, and released"},
    {"libusb_bulk_transfer",         StandIn(UsbTransfer),     kErrorOrSignal | kShort, "PIPE, count left alone"},
    {"libusb_close",                 nullptr, kNone, kReleases},
    {"libusb_exit",                  nullptr, kNone, kReleases},
    {"libusb_free_device_list",      nullptr, kNone, kReleases},
    // Harmless
    {"cfsetspeed",           nullptr, kNone, "the library's speeds are in its table"},
    {"initstate_r",          nullptr, kNone, kMemory},
    {"srandom_r",            nullptr, kNone, kMemory},
    {"random_r",             nullptr, kNone, kMemory},
    {"memchr",               nullptr, kNone, kMemory},
    {"memcmp",               nullptr, kNone, kMemory},
    {"bcmp",                 nullptr, kNone, kMemory},
    {"memcpy",               nullptr, kNone, kMemory},
    {"memmove",              nullptr, kNone, kMemory},
    {"memset",               nullptr, kNone, kMemory},
    {"snprintf",             nullptr, kNone, "numbers and bytes into a buffer on the stack"},
    {"vsnprintf",            nullptr, kNone, "as snprintf; the buffer begins with a zero"},
    {"strcmp",               nullptr, kNone, kMemory},
    {"strcpy",               nullptr, kNone, kMemory},
    {"strlen",               nullptr, kNone, kMemory},
    {"strncmp",              nullptr, kNone, kMemory},
    {"strncpy",              nullptr, kNone, kMemory},
    {"strnlen",              nullptr, kNone, kMemory},
    {"strstr",               nullptr, kNone, kMemory},
    {"strrchr",              nullptr, kNone, kMemory},
    {"strchr",               nullptr, kNone, kMemory},
    {"strtol",               nullptr, kNone, "saturates, which its callers expect"},
    {"strerror_r",           nullptr, kNone, "a text for the log, whatever happens"},
    {"pthread_mutex_lock",   nullptr, kNone, "a plain mutex that its holder never takes twice"},
    {"pthread_mutex_unlock", nullptr, kNone, "held by the caller"},
    {"__errno_location",     nullptr, kNone, kCompiler},
    {"__stack_chk_fail",     nullptr, kNone, kCompiler},
    {"__stack_chk_guard",    nullptr, kNone, kCompiler},
    {"__getauxval",          nullptr, kNone, kCompiler},
    {"__cxa_finalize",       nullptr, kNone, kCompiler},
    {"__gmon_start__",       nullptr, kNone, kCompiler},
    {"_ITM_deregisterTMCloneTable", nullptr, kNone, kCompiler},
    {"_ITM_registerTMCloneTable",   nullptr, kNone, kCompiler},
};
// clang-format on

// "__read_chk" is "read" that also knows the size of the buffer.
std::string_view PlainName(std::string_view symbol) {
  if (!symbol.starts_with("__") || !symbol.ends_with("_chk")) return symbol;
  symbol.remove_prefix(2);
  symbol.remove_suffix(4);
  return symbol;
}

}  // namespace

std::span<const Import> Imports() { return kImports; }

const Import* FindImport(std::string_view symbol) {
  const std::string_view name = PlainName(symbol);
  const auto* const found = std::find_if(std::begin(kImports), std::end(kImports),
                                         [name](const Import& row) { return row.name == name; });
  return found != std::end(kImports) ? found : nullptr;
}

bool IsInstrumentation(std::string_view symbol) {
  constexpr std::string_view kStarts[] = {
      "__asan_", "__ubsan_", "__tsan_",   "__sanitizer_",
      "__lsan_", "__msan_",  "__sancov_", "_ZSt21__glibcxx_assert_fail"};
  return std::any_of(std::begin(kStarts), std::end(kStarts),
                     [symbol](std::string_view start) { return symbol.starts_with(start); });
}

}  // namespace failures
