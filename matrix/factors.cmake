target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/cholesky.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/factors_gram_schmidt.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/sweep.cpp)
qmml_add_levels(factors_kernels)
