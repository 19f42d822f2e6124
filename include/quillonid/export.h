/* SPDX-License-Identifier: MIT */
/** @file
 *  Marks what the library exports. Every exported function has C linkage; everything else is
 * hidden. */
#ifndef QUILLONID_EXPORT_H
#define QUILLONID_EXPORT_H

#ifdef __cplusplus
#define QL_BEGIN_DECLS extern "C" {
#define QL_END_DECLS }
#define QL_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define QL_BEGIN_DECLS
#define QL_END_DECLS
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define QL_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define QL_STATIC_ASSERT_JOIN(a, b) a##b
#define QL_STATIC_ASSERT_NAME(line) QL_STATIC_ASSERT_JOIN(ql_static_assert_, line)
#define QL_STATIC_ASSERT(condition, text) \
  typedef char QL_STATIC_ASSERT_NAME(__LINE__)[(condition) ? 1 : -1]
#endif
#endif

#if defined(__GNUC__)
#define QL_API __attribute__((visibility("default")))
#define QL_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))
#else
#define QL_API
#define QL_PRINTF(text, first)
#endif

#endif
