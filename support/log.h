// Log lines of the layers. The level names the area; a line that reports a result takes the truth
// value of "it failed" as its type. The literal stands at the call, one call per line.
#ifndef QUILLONID_SUPPORT_LOG_H
#define QUILLONID_SUPPORT_LOG_H

#include "quillonid/support.h"

enum LogLevel : int {
  kLogPublic = 1,    // shared utility functions, time
  kLogExchange = 2,  // reader packets and exchange
  kLogDevice = 3,    // device opening and transports
  kLogCard = 6,      // card services and card data
  kLogApi = 9,       // exported functions, photo and images
};

#define LOG_PUBLIC(...) DPrintLogToFileAddType(0, kLogPublic, __VA_ARGS__)
#define LOG_EXCHANGE(...) DPrintLogToFileAddType(0, kLogExchange, __VA_ARGS__)
#define LOG_DEVICE(...) DPrintLogToFileAddType(0, kLogDevice, __VA_ARGS__)
#define LOG_CARD(...) DPrintLogToFileAddType(0, kLogCard, __VA_ARGS__)
#define LOG_API(...) DPrintLogToFileAddType(0, kLogApi, __VA_ARGS__)

#define LOG_EXCHANGE_RESULT(failed, ...) \
  DPrintLogToFileAddType((failed) ? 1 : 0, kLogExchange, __VA_ARGS__)
#define LOG_DEVICE_RESULT(failed, ...) \
  DPrintLogToFileAddType((failed) ? 1 : 0, kLogDevice, __VA_ARGS__)
#define LOG_CARD_RESULT(failed, ...) DPrintLogToFileAddType((failed) ? 1 : 0, kLogCard, __VA_ARGS__)
#define LOG_API_RESULT(failed, ...) DPrintLogToFileAddType((failed) ? 1 : 0, kLogApi, __VA_ARGS__)

// A text argument of a log line; null shows as "(null)".
inline const char* PrintableText(const char* text) { return text != nullptr ? text : "(null)"; }

#endif
