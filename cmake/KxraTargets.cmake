# What every target of this project shares, and the functions that make targets.

find_package(Threads REQUIRED)

# Warnings are errors in our targets and never in a consumer's.
add_library(kxra_warnings INTERFACE)
target_compile_options(kxra_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

# What the library needs to be unloadable: no symbols that the loader must keep for good.
add_library(kxra_options INTERFACE)
target_compile_options(kxra_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
# A trace takes its lines for texts of the system's set. The German ones are, where German is at home.
target_compile_options(kxra_options INTERFACE $<$<AND:$<PLATFORM_ID:Windows>,$<CXX_COMPILER_ID:GNU>>:-fexec-charset=CP1252>)
if(KXRA_SANITIZE)
    target_compile_options(kxra_options INTERFACE -fsanitize=${KXRA_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
    target_link_options(kxra_options INTERFACE -fsanitize=${KXRA_SANITIZE})
endif()

# The half of Platform/ that fits the system.
if(WIN32)
    set(KXRA_SYSTEM Windows)
else()
    set(KXRA_SYSTEM Posix)
endif()

# kxra_target(name): the common settings for a library or program of ours.
function(kxra_target name)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kxra_warnings> $<BUILD_INTERFACE:kxra_options>)
endfunction()

# kxra_test(name SOURCES ... LIBRARIES ... [LABELS ...] [TIMEOUT seconds]): a program of GoogleTest cases,
# each of which becomes a test; where an emulator runs it, whose start takes longer than most cases, the program is one
# test. Tests labelled "slow" run with ./test --all only, and not under sanitizers; those
# labelled "stress" too, but under each of them.
function(kxra_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_executable(${name} ${arg_SOURCES})
    kxra_target(${name})
    target_include_directories(
        ${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/Tests ${CMAKE_SOURCE_DIR}/Tests/Support/${KXRA_SYSTEM})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
    # What is tested is optimised as the preset says; the tests themselves have to be built fast, not to be fast.
    if(NOT MSVC)
        target_compile_options(${name} PRIVATE -O0)
    endif()
    foreach(header string vector gmock/gmock.h gtest/gtest.h)
        target_precompile_headers(${name} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:<${header}$<ANGLE-R>>")
    endforeach()
    if(CMAKE_CROSSCOMPILING)
        math(EXPR arg_TIMEOUT "600 + ${arg_TIMEOUT}") # for all cases of the program
    endif()
    set(properties TIMEOUT ${arg_TIMEOUT})
    if(arg_LABELS)
        list(APPEND properties LABELS "${arg_LABELS}")
    endif()
    if(CMAKE_CROSSCOMPILING)
        add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/cmake/sh/finished ${CMAKE_CROSSCOMPILING_EMULATOR}
                                      $<TARGET_FILE:${name}>)
        set_tests_properties(${name} PROPERTIES ${properties})
        return()
    endif()
    gtest_discover_tests(
        ${name} NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
