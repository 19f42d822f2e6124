# ql_add_tests(NAME sources... [OBJECTS] [PREFIX text] [LIBRARIES libraries...]): a test program that drives the built
# library, or, with OBJECTS, its object files; PREFIX goes before the names of tests that another program has, too. Every
# test runs in a process of its own, in a private root (see tests/testing/with_private_root.c), so that /home/quillon and
# /libwlt.so are the test's own.
find_package(GTest REQUIRED)
include(GoogleTest)

# Seconds for one test. Instrumented and emulated programs take their time.
set(QL_TEST_TIMEOUT 120)
if(QL_SANITIZE OR QL_COVERAGE OR CMAKE_CROSSCOMPILING_EMULATOR)
  set(QL_TEST_TIMEOUT 600)
endif()

function(ql_add_tests name)
  cmake_parse_arguments(arg "OBJECTS" "PREFIX" "LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  if(arg_OBJECTS)
    target_link_libraries(${name} PRIVATE quillonid_objects)
  else()
    target_link_libraries(${name} PRIVATE quillonid)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${name} PRIVATE ql_warnings quillonid_testing ${arg_LIBRARIES} GTest::gtest
                                        GTest::gtest_main)
  target_compile_options(${name} PRIVATE -O1)  # Compiling costs more than running.
  add_dependencies(${name} private-root)
  set_target_properties(${name} PROPERTIES
    CROSSCOMPILING_EMULATOR "${QL_PRIVATE_ROOT};${CMAKE_CROSSCOMPILING_EMULATOR}")
  # A test carries its program's name as a label: ctest -L reader_tests.
  gtest_discover_tests(${name} TEST_PREFIX "${arg_PREFIX}" DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT ${QL_TEST_TIMEOUT} LABELS ${name})
endfunction()
