# SPDX-License-Identifier: MIT
# How the project's code is compiled, and the functions that define its targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# A release is the same wherever it is built: debug information, of which the linker makes the build
# id, has no path of the machine.
if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" AND NOT KRADDON_SANITIZE)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
                      -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)
endif()

set(KRADDON_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# Sources that are compiled together are included, and g++ takes their unnamed namespaces for those
# of headers.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND KRADDON_WARNINGS $<$<COMPILE_LANGUAGE:CXX>:-Wno-subobject-linkage>)
endif()

if(KRADDON_SANITIZE)
  add_compile_options(-fsanitize=${KRADDON_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KRADDON_SANITIZE})
endif()

# Sets the warnings and the one include root of a target.
function(kraddon_own target)
  target_compile_options(${target} PRIVATE ${KRADDON_WARNINGS})
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()

# kraddon_library(NAME SOURCES file... [PUBLIC lib...] [PRIVATE lib...]): a static library.
function(kraddon_library target)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${target} STATIC ${ARG_SOURCES})
  kraddon_own(${target})
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()

# Compiles a target for size: code that prints, or runs once in a command, and is a large part of the
# program.
function(kraddon_small target)
  if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" AND NOT KRADDON_SANITIZE)
    target_compile_options(${target} PRIVATE -Os)
  endif()
endfunction()
