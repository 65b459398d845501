target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/moments.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/rounded_difference.cpp)
qmml_add_levels(moments_kernels)
