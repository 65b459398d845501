# Compile options of everything that is built here. They are not passed on to users of the library.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O3 -DNDEBUG")

find_program(QMML_CCACHE ccache)
if(QMML_CCACHE AND PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QMML_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${QMML_CCACHE})
endif()

# Results must not depend on the machine: no contraction into fused operations. Nobody reads errno behind a
# mathematical function here, and without it sqrt is one instruction.
add_library(qmml_options INTERFACE)
target_compile_options(qmml_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off -fno-math-errno
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-semantic-interposition>
    # Without it Clang moves arithmetic past the places where faults are masked.
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-ffp-exception-behavior=maytrap>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict> # GCC 12 takes string sums for overlaps
    $<$<BOOL:${QMML_WERROR}>:-Werror>)
if(QMML_SANITIZE)
    target_compile_options(qmml_options INTERFACE -fsanitize=${QMML_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(qmml_options INTERFACE -fsanitize=${QMML_SANITIZE})
endif()
if(QMML_COVERAGE)
    target_compile_options(qmml_options INTERFACE --coverage)
    target_link_options(qmml_options INTERFACE --coverage)
endif()
