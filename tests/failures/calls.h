// Stand-ins for the calls that the library makes: each does what the real one does, unless the plan
// has this call fail.
#ifndef QUILLONID_TESTS_FAILURES_CALLS_H
#define QUILLONID_TESTS_FAILURES_CALLS_H

#include <cjson/cJSON.h>
#include <libusb-1.0/libusb.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <termios.h>

#include <cstddef>
#include <ctime>

namespace failures {

// file_calls.cc
int Open(const char* path, int flags, ...);
int Close(int fd);
ssize_t Read(int fd, void* buffer, std::size_t size);
ssize_t Write(int fd, const void* data, std::size_t size);
ssize_t Pread(int fd, void* buffer, std::size_t size, off_t offset);
ssize_t Pwrite(int fd, const void* data, std::size_t size, off_t offset);
int Ftruncate(int fd, off_t size);
int Stat(const char* path, struct stat* status);
int Fstat(int fd, struct stat* status);
int Fcntl(int fd, int command, ...);
int Getrlimit(__rlimit_resource_t resource, rlimit* limit);

// system_calls.cc
int Poll(pollfd* waits, nfds_t count, int milliseconds);
int Tcgetattr(int fd, termios* settings);
int Tcsetattr(int fd, int action, const termios* settings);
int Tcflush(int fd, int queue);
int Ioctl(int fd, unsigned long request, ...);
int TtynameR(int fd, char* name, std::size_t size);
void* Malloc(std::size_t size);
void* Calloc(std::size_t count, std::size_t size);
void Free(void* block);
void* Dlopen(const char* path, int flags);
void* Dlsym(void* library, const char* name);
int Dlclose(void* library);
int ClockGettime(clockid_t clock, timespec* time);
int Nanosleep(const timespec* length, timespec* left);
unsigned Sleep(unsigned seconds);
tm* LocaltimeR(const time_t* time, tm* local);

// library_calls.cc
cJSON* CjsonParse(const char* text);
char* CjsonPrintBuffered(const cJSON* item, int size, cJSON_bool formatted);
int UsbInit(libusb_context** context);
ssize_t UsbList(libusb_context* context, libusb_device*** list);
int UsbDescriptor(libusb_device* device, libusb_device_descriptor* descriptor);
int UsbOpen(libusb_device* device, libusb_device_handle** handle);
int UsbReset(libusb_device_handle* handle);
int UsbDriverActive(libusb_device_handle* handle, int interface_number);
int UsbDetach(libusb_device_handle* handle, int interface_number);
int UsbClaim(libusb_device_handle* handle, int interface_number);
int UsbRelease(libusb_device_handle* handle, int interface_number);
int UsbTransfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                int length, int* moved, unsigned limit);

}  // namespace failures

#endif
