target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/bidiagonal_form.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/singular_values.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/singular_values_work.cpp)
qmml_add_levels(bidiagonal)
