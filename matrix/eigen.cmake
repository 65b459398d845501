target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/eigen.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/rotations.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/tridiagonal.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/tridiagonal_blocked.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/tridiagonal_ql.cpp)
qmml_add_levels(rotations)
qmml_add_levels(tridiagonal)
