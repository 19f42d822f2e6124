# The launcher that gives a program a root of its own (see tests/testing/with_private_root.c), so that /home/quillon and
# /libwlt.so are the program's own. Built for the machine that builds.
find_program(QL_HOST_CC NAMES cc gcc REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(QL_PRIVATE_ROOT ${PROJECT_BINARY_DIR}/with-private-root)
add_custom_command(OUTPUT ${QL_PRIVATE_ROOT}
  COMMAND ${QL_HOST_CC} -std=gnu11 -O1 -Wall -Wextra -Werror -o ${QL_PRIVATE_ROOT}
          ${PROJECT_SOURCE_DIR}/tests/testing/with_private_root.c
  DEPENDS ${PROJECT_SOURCE_DIR}/tests/testing/with_private_root.c)
add_custom_target(private-root DEPENDS ${QL_PRIVATE_ROOT})
