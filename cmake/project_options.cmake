# Compiler settings that every target of the project shares, as one interface target.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_compile_options(project_options INTERFACE
    "$<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall;-Wextra;-Wconversion;-Wshadow;-Werror>"
    "$<$<CXX_COMPILER_ID:MSVC>:/W4;/permissive-;/utf-8;/Zc:__cplusplus;/Zc:preprocessor>")
# g++ 12 reports overlapping copies inside std::string's operator+ that do not exist (GCC bug 105651).
target_compile_options(project_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

set(VEXCC_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
option(VEXCC_COVERAGE "Instrument for line coverage" OFF)
if(VEXCC_SANITIZE)
    # Recovery is off: a report fails the test that caused it.
    set(sanitizer_flags -fsanitize=${VEXCC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
    target_compile_options(project_options INTERFACE ${sanitizer_flags})
    target_link_options(project_options INTERFACE -fsanitize=${VEXCC_SANITIZE})
endif()
if(VEXCC_COVERAGE)
    target_compile_options(project_options INTERFACE --coverage)
    target_link_options(project_options INTERFACE --coverage)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
