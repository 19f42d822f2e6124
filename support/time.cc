// Time stamps, ticks and small checks as exported functions.
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "quillonid/support.h"
#include "support/clock.h"
#include "support/log.h"

namespace {

// Wall clock in milliseconds since the epoch. Each is set by its call and never cleared; atomic
// since any thread may ask for a difference.
std::atomic<long> g_stStartTime;
std::atomic<long> g_stEndTime;
// What Time_GetLocalTime() returned last; each call overwrites it.
char s_szLocalTime[128];

// A generator of its own that gives the numbers of srand() and rand(), so that those of the
// application go on undisturbed.
class Generator {
 public:
  Generator() { initstate_r(1, state_, sizeof state_, &data_); }
  void Seed(std::uint32_t seed) { srandom_r(seed, &data_); }
  unsigned char LowByte() {
    std::int32_t number = 0;
    random_r(&data_, &number);
    return static_cast<unsigned char>(number & 0xFF);
  }

 private:
  random_data data_ = {};
  char state_[128] = {};
};

constexpr int kMonthLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

int FromBcd(unsigned char byte) { return (byte >> 4) * 10 + (byte & 0x0F); }

bool IsBcd(unsigned char byte) { return byte >> 4 <= 9 && (byte & 0x0F) <= 9; }

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

}  // namespace

char* Time_GetLocalTime(const char* sep) {
  LOG_PUBLIC("[%s] Start ", __func__);
  if (sep == nullptr) sep = "";
  const timespec now = WallClock();
  const tm local = LocalTime(now.tv_sec);
  std::snprintf(s_szLocalTime, sizeof s_szLocalTime, "%02d%s%02d%s%02d%s%02d%s%02d%s%02d%s%03d",
                local.tm_year - 100, sep, local.tm_mon + 1, sep, local.tm_mday, sep, local.tm_hour,
                sep, local.tm_min, sep, local.tm_sec, sep,
                static_cast<int>(now.tv_nsec / 1'000'000));
  LOG_PUBLIC("[%s] End szTime = %s ", __func__, s_szLocalTime);
  return s_szLocalTime;
}

unsigned int GeneralSleep(int n) {
  if (n < 200) return 0;
  return sleep(static_cast<unsigned>(n / 200));
}

int GetRandom(int count, unsigned char* out) {
  if (count < 1 || out == nullptr) return 0;
  Generator generator;
  generator.Seed(static_cast<std::uint32_t>(WallClock().tv_sec));
  for (int i = 0; i < count; ++i) {
    out[i] = generator.LowByte();
    const auto now = static_cast<std::uint32_t>(WallClock().tv_sec);
    generator.Seed(now + static_cast<std::uint32_t>(i) + out[i]);
  }
  return 0;
}

int GetTransTime(char* out) {
  const char* const text = Time_GetLocalTime(nullptr);
  if (out != nullptr) std::memcpy(out, text + 6, 6);
  return 0;
}

int GetTransDate(char* out) {
  const char* const text = Time_GetLocalTime(nullptr);
  if (out != nullptr) std::memcpy(out, text, 6);
  return 0;
}

int time_Valid_YYMMDD(const unsigned char* bcd) {
  if (bcd == nullptr || !IsBcd(bcd[0]) || !IsBcd(bcd[1]) || !IsBcd(bcd[2])) return -1;
  const int year = FromBcd(bcd[0]) + (bcd[0] < 0x50 ? 2000 : 1900);
  const int month = FromBcd(bcd[1]);
  const int day = FromBcd(bcd[2]);
  if (month < 1 || month > 12) return -1;
  const int length = month == 2 && IsLeapYear(year) ? 29 : kMonthLengths[month - 1];
  return day >= 1 && day <= length ? 0 : -1;
}

unsigned int GetTickCount() { return static_cast<unsigned>(WallMilliseconds()); }

long GetTickCountStartTime() {
  LOG_PUBLIC("==>[%s] Start ", __func__);
  const long now = WallMilliseconds();
  g_stStartTime = now;
  LOG_PUBLIC("g_stStartTime= %ld", now);
  return now;
}

long GetTickCountEndTime() {
  LOG_PUBLIC("[%s] Start ", __func__);
  const long now = WallMilliseconds();
  g_stEndTime = now;
  DPrintLogToFile("g_stEndTime= %ld", now);
  return now;
}

long GetTickCountTimeOut() {
  LOG_PUBLIC("[%s] Start ", __func__);
  const long taken = g_stEndTime - g_stStartTime;
  LOG_PUBLIC("%d ", static_cast<int>(taken));
  return taken;
}

int Check(const unsigned char* data, int len) {
  if (data == nullptr) return 0;
  unsigned char sum = data[0];  // On purpose: looked at whatever `len` says.
  for (int i = 1; i < len; ++i) sum ^= data[i];
  return sum == 0 ? 1 : 0;
}
