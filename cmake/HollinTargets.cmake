# SPDX-License-Identifier: MIT
# How every target of the project is built: warnings, hardening, sanitizers, and where programs land.

set(HOLLIN_BUNDLE_DIR "${CMAKE_BINARY_DIR}/Hollin.app")  # hollin, hollin-cli and their resources
set(HOLLIN_BIN_DIR "${CMAKE_BINARY_DIR}/bin")            # what an installation has on the path

add_library(hollin_options INTERFACE)
target_compile_options(hollin_options INTERFACE -Wall -Wextra -Wconversion
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> $<$<BOOL:${HOLLIN_WERROR}>:-Werror>)
# What a program that reads other people's files should have. Debian's compilers make position-independent programs
# without being asked.
target_compile_options(hollin_options INTERFACE
  "$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
target_link_options(hollin_options INTERFACE "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now>")
target_include_directories(hollin_options INTERFACE "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}")
if(HOLLIN_SANITIZE)
  add_compile_options(-fsanitize=${HOLLIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${HOLLIN_SANITIZE})
endif()
# Every program locks through what the thread sanitizer sees, in such a build alone.
if(HOLLIN_SANITIZE STREQUAL "thread")
  target_sources(hollin_options INTERFACE
    "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${PROJECT_SOURCE_DIR}/tests/support/clocklock.cpp>")
endif()

# A static library of the project: hollin_library(name SOURCES a.cpp b.cpp [PUBLIC libraries] [PRIVATE libraries])
function(hollin_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC hollin_options ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
endfunction()

# GoogleTest's headers, read once for all test programs: they take longer to compile than most tests.
function(hollin_test_headers)
  if(NOT TARGET hollin_test_headers)
    file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/test_headers.cpp" CONTENT "")
    add_library(hollin_test_headers OBJECT "${PROJECT_BINARY_DIR}/test_headers.cpp")
    target_link_libraries(hollin_test_headers PRIVATE hollin_options GTest::gmock)
    target_precompile_headers(hollin_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
  endif()
endfunction()

# No test meets a Hollin that runs on the same computer: the tests' lock lies in a folder of their own.
set(HOLLIN_TEST_RUNTIME_DIR "${CMAKE_BINARY_DIR}/runtime")
file(MAKE_DIRECTORY "${HOLLIN_TEST_RUNTIME_DIR}")
file(CHMOD "${HOLLIN_TEST_RUNTIME_DIR}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)

# A test program, every case a CTest case in a process of its own: hollin_test(name SOURCES ... LIBRARIES ...
# [LOCKS the things of the machine that only one case may use at a time] [TIMEOUT seconds that a case may take])
function(hollin_test name)
  cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBRARIES;LOCKS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES UNITY_BUILD ${HOLLIN_UNITY_TESTS})
  target_link_libraries(${name} PRIVATE hollin_options ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
  if(NOT arg_LIBRARIES MATCHES "Qt6::")  # Qt asks for other options of code generation
    hollin_test_headers()
    target_precompile_headers(${name} REUSE_FROM hollin_test_headers)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  set(properties TIMEOUT ${arg_TIMEOUT})
  if(arg_LOCKS)
    list(APPEND properties RESOURCE_LOCK ${arg_LOCKS})
  endif()
  list(APPEND properties ENVIRONMENT_MODIFICATION "XDG_RUNTIME_DIR=set:${HOLLIN_TEST_RUNTIME_DIR}")
  if(arg_ENVIRONMENT)
    list(APPEND properties ENVIRONMENT "${arg_ENVIRONMENT}")
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
