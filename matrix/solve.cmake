target_sources(qmml_objects PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/solve.cpp ${CMAKE_CURRENT_SOURCE_DIR}/solve_small.cpp)
qmml_add_levels(solve)
