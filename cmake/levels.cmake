# Adds STEM_baseline.cpp and, where the processor family has them, STEM_avx2.cpp and STEM_avx512.cpp: the same kernels for
# each instruction set, chosen when the program runs. Such a source holds nothing that others share.
function(qmml_add_levels stem)
    target_sources(qmml_objects PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${stem}_baseline.cpp)
    if(NOT QMML_X86_LEVELS)
        return()
    endif()
    target_sources(qmml_objects PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR}/${stem}_avx2.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/${stem}_avx512.cpp)
    set_source_files_properties(${stem}_avx2.cpp TARGET_DIRECTORY qmml_objects PROPERTIES COMPILE_OPTIONS -mavx2)
    set_source_files_properties(${stem}_avx512.cpp TARGET_DIRECTORY qmml_objects PROPERTIES
        # GCC 12 warns about its own headers here.
        COMPILE_OPTIONS "-mavx512f;-mavx512dq;-mprefer-vector-width=512;$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-uninitialized>")
endfunction()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    set(QMML_X86_LEVELS ON)
endif()
