# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
# The flags that every target shares, and the few helpers that the folders' CMakeLists.txt use.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# sorakaze_pkg(NAME MODULE...): an imported target PkgConfig::NAME, or an error that says what to do.
macro(sorakaze_pkg name)
    if(NOT TARGET PkgConfig::${name})
        pkg_check_modules(${name} QUIET IMPORTED_TARGET GLOBAL ${ARGN})
        if(NOT ${name}_FOUND)
            message(FATAL_ERROR "missing: ${ARGN}. Run scripts/setup to install what Sorakaze builds with.")
        endif()
    endif()
endmacro()

add_library(sorakaze_flags INTERFACE)
target_include_directories(sorakaze_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(sorakaze_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in std::string's own operator+.
    target_compile_options(sorakaze_flags INTERFACE -Wno-restrict)
endif()
if(SORAKAZE_SANITIZE)
    target_compile_options(sorakaze_flags INTERFACE
        -fsanitize=${SORAKAZE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # Line numbers are enough for a report, and GCC takes twice as long over -O1 -g.
        $<IF:$<CXX_COMPILER_ID:GNU>,-Og;-g1,-O1>)
    target_link_options(sorakaze_flags INTERFACE -fsanitize=${SORAKAZE_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND SORAKAZE_SANITIZE MATCHES "address")
        # As GCC has it: a sanitizer doesn't fit under the decoder's bounds.
        target_compile_definitions(sorakaze_flags INTERFACE __SANITIZE_ADDRESS__=1)
    endif()
endif()
if(SORAKAZE_FUZZ)
    target_compile_options(sorakaze_flags INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(sorakaze_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
include(cmake/Hardening.cmake)

# Where a built station stands: the portable folder that a user has. Only the preset release fills build/Sorakaze/;
# every other build has a folder of its own, so that two builds never mix.
if(CMAKE_BINARY_DIR STREQUAL "${PROJECT_SOURCE_DIR}/build/release")
    set(SORAKAZE_STATION_DIR ${PROJECT_SOURCE_DIR}/build/Sorakaze)
else()
    set(SORAKAZE_STATION_DIR ${CMAKE_BINARY_DIR}/Sorakaze)
endif()
set(SORAKAZE_PROGRAMS_DIR ${SORAKAZE_STATION_DIR}/Sorakaze.app/Contents/Linux)
set(SORAKAZE_RESOURCES_DIR ${SORAKAZE_STATION_DIR}/Sorakaze.app/Contents/Resources)

# sorakaze_library(NAME SOURCES... [LINK LIBS...])
function(sorakaze_library name)
    cmake_parse_arguments(A "" "" "LINK" ${ARGN})
    add_library(${name} STATIC ${A_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PUBLIC sorakaze_flags ${A_LINK})
    set_property(GLOBAL APPEND PROPERTY SORAKAZE_LIBRARIES ${name})
endfunction()

# sorakaze_check_libraries(): writes down what each library is made of and links, for scripts/check-libraries, and makes a
# program of each library alone: that links only if the libraries which it names have all the symbols that it needs.
function(sorakaze_check_libraries)
    add_custom_target(check_libraries)
    get_property(libraries GLOBAL PROPERTY SORAKAZE_LIBRARIES)
    set(table "")
    foreach(name IN LISTS libraries)
        get_target_property(folder ${name} SOURCE_DIR)
        get_target_property(files ${name} SOURCES)
        list(TRANSFORM files REPLACE "^([^/].*)" "${folder}/\\1")
        get_target_property(linked ${name} LINK_LIBRARIES)
        string(APPEND table "${name}\t${files}\t${linked}\n")
        add_executable(${name}_alone EXCLUDE_FROM_ALL ${PROJECT_SOURCE_DIR}/cmake/Empty.cpp)
        target_link_libraries(${name}_alone PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${name}>")
        add_dependencies(check_libraries ${name}_alone)
    endforeach()
    file(WRITE ${CMAKE_BINARY_DIR}/libraries.tsv "${table}")
endfunction()

# sorakaze_program(NAME DIRECTORY SOURCES... [LINK LIBS...]): an executable that stands in DIRECTORY of the station.
function(sorakaze_program name directory)
    cmake_parse_arguments(A "" "" "LINK" ${ARGN})
    add_executable(${name} ${A_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE sorakaze_flags ${A_LINK})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${directory})
endfunction()

# The tests with the label "threads": those that the thread sanitizer runs.
add_custom_target(thread_tests)

# sorakaze_test(NAME SOURCES... [LINK LIBS...] [LABELS ...]): a GoogleTest program, one ctest entry.
function(sorakaze_test name)
    cmake_parse_arguments(A "" "" "LINK;LABELS" ${ARGN})
    if(SORAKAZE_FUZZ OR NOT SORAKAZE_TESTS)
        return()
    endif()
    find_package(GTest REQUIRED)
    add_executable(${name} ${A_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE sorakaze_flags ${A_LINK} GTest::gmock GTest::gtest_main)
    # No test may depend on another: failures print the seed of their order.
    add_test(NAME ${name} COMMAND ${name} --gtest_shuffle)
    set_tests_properties(${name} PROPERTIES LABELS "${A_LABELS}" TIMEOUT 600)
    if("threads" IN_LIST A_LABELS)
        add_dependencies(thread_tests ${name})
    endif()
endfunction()

# sorakaze_opens_sounds(NAME): a test or benchmark, should it be built, that opens sounds.
function(sorakaze_opens_sounds name)
    if(TARGET ${name})
        target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/DecoderOfTests.cpp)
        target_compile_definitions(${name} PRIVATE DECODER_PROGRAM="$<TARGET_FILE:sorakaze-decoder>")
        add_dependencies(${name} sorakaze-decoder)
    endif()
endfunction()

add_custom_target(fuzz_targets)

# sorakaze_fuzz(NAME CORPUS_FOLDER SOURCES... [LINK LIBS...]): a libFuzzer target. scripts/fuzz runs them all.
function(sorakaze_fuzz name corpus)
    cmake_parse_arguments(A "" "" "LINK" ${ARGN})
    if(NOT SORAKAZE_FUZZ)
        return()
    endif()
    add_executable(${name} ${A_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE sorakaze_flags ${A_LINK})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
    add_dependencies(fuzz_targets ${name})
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${corpus} ${CMAKE_BINARY_DIR}/fuzz/${name}.corpus SYMBOLIC)
endfunction()
