# Warnings for all code of the project; flags of the library alone.
add_library(ql_warnings INTERFACE)
target_compile_options(ql_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -Wcast-align -Wundef -Werror
  -Werror=format-security)

set(QL_LIBRARY_FLAGS
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
  $<$<COMPILE_LANGUAGE:CXX>:-fno-threadsafe-statics>
  -fvisibility=hidden -fno-semantic-interposition -fstack-protector-strong -fstack-clash-protection
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=3>)

# Internal calls stay inside: names such as test, Check and CopyFile also exist in applications.
set(QL_LIBRARY_LINK_FLAGS LINKER:-Bsymbolic-functions LINKER:--as-needed LINKER:-z,relro LINKER:-z,now LINKER:-z,defs)
