target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/array_algebra.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/array_call.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/array_elements.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/array_files.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/array_parts.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/blocks.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/matrix_file.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/raw_entries.cpp)
