target_sources(qmml_objects PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/elimination.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/elimination_work.cpp)
qmml_add_levels(elimination)
