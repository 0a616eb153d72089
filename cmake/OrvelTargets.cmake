# Warnings and sanitizers for Orvel's own targets, and helpers that declare them.

add_library(orvel_options INTERFACE)
target_compile_options(orvel_options INTERFACE -Wall -Wextra -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 reports impossible overlaps inside std::basic_string when optimising (its bug
  # 105329); the warning says nothing about our code there.
  target_compile_options(orvel_options INTERFACE -Wno-restrict)
endif()
target_include_directories(orvel_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(ORVEL_SANITIZE)
  target_compile_options(orvel_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orvel_options INTERFACE -fsanitize=address,undefined)
endif()
if(ORVEL_TSAN)
  if(ORVEL_SANITIZE)
    message(FATAL_ERROR "ORVEL_TSAN and ORVEL_SANITIZE cannot be combined: ThreadSanitizer runs alone")
  endif()
  target_compile_options(orvel_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(orvel_options INTERFACE -fsanitize=thread)
endif()

# orvel_library(NAME DIR [DEPS ...]): a static library of every .cpp in DIR (not below it).
function(orvel_library name dir)
  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  if(sources)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC orvel_options ${ARGN})
  else()  # headers only, so far
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE orvel_options ${ARGN})
  endif()
endfunction()

# orvel_test(NAME DIR DEPS...): one GoogleTest executable of every .cpp in DIR.
function(orvel_test name dir)
  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE orvel_test_main ${ARGN})
  gtest_discover_tests(${name}
    DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()
