# Warnings for all code of the project; flags of the library, and of it and the tool; what instruments a whole build.
add_library(ql_warnings INTERFACE)
target_compile_options(ql_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -Wcast-align -Wundef -Werror
  -Werror=format-security)

# Of all that is installed, and of the simulated reader that the tool carries.
set(QL_HARDENING_FLAGS -fstack-protector-strong -fstack-clash-protection)
set(QL_HARDENING_LINK_FLAGS LINKER:-z,relro LINKER:-z,now)

set(QL_LIBRARY_FLAGS
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
  $<$<COMPILE_LANGUAGE:CXX>:-fno-threadsafe-statics>
  -fvisibility=hidden -fno-semantic-interposition)

# Internal calls stay inside: names such as test, Check and CopyFile also exist in applications.
set(QL_LIBRARY_LINK_FLAGS LINKER:-Bsymbolic-functions LINKER:--as-needed ${QL_HARDENING_LINK_FLAGS})

set(QL_SANITIZE "" CACHE STRING "Sanitizers for everything built, such as address,undefined or thread")
set(QL_CHAR "" CACHE STRING "What a plain char is, signed or unsigned; empty: what the machine has")
option(QL_COVERAGE "Count which lines and branches the tests reach" OFF)

if(QL_SANITIZE)
  # The run-time library of a sanitizer checks what _FORTIFY_SOURCE would, and clang gives it to programs alone: a shared
  # library is linked with its symbols missing.
  set(QL_INSTRUMENTATION -fsanitize=${QL_SANITIZE})
  set(ignored "")
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND QL_SANITIZE MATCHES "undefined")
    # The check of called functions compares addresses of type descriptions, and every shared library has its own.
    list(APPEND QL_INSTRUMENTATION -fsanitize=implicit-conversion,bounds,local-bounds -fno-sanitize=function)
    set(ignored -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer_ignorelist.txt)
  endif()
  add_compile_options(${QL_INSTRUMENTATION} ${ignored} -fno-sanitize-recover=all -fno-omit-frame-pointer -g -O1
                      -U_FORTIFY_SOURCE)
  add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # g++ takes the instrumented <regex> of its own library for uninitialised.
    target_compile_options(ql_warnings INTERFACE -Wno-maybe-uninitialized)
  endif()
  add_link_options(${QL_INSTRUMENTATION})
else()
  # Every build that is optimised: without that there is nothing to fortify.
  foreach(flag -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
    list(APPEND QL_HARDENING_FLAGS $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${flag}>)
  endforeach()
  list(APPEND QL_LIBRARY_LINK_FLAGS LINKER:-z,defs)
endif()
list(APPEND QL_LIBRARY_FLAGS ${QL_HARDENING_FLAGS})

if(QL_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "The fuzz targets need clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(QL_CHAR)
  add_compile_options(-f${QL_CHAR}-char)
endif()

if(QL_COVERAGE)
  # Two threads count, and two processes at once write the same files.
  add_compile_options(--coverage -fprofile-update=atomic -O0 -g)
  add_link_options(--coverage)
endif()
