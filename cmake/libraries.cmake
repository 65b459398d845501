# The shared and the static library from the common objects. A few sources exist in the shared library only: their names
# are the C runtime's, which symbol versions can tell apart and an archive cannot.
get_property(shared_only GLOBAL PROPERTY QMML_SHARED_ONLY)
add_library(qmml SHARED $<TARGET_OBJECTS:qmml_objects> ${shared_only})
add_library(qmml_static STATIC $<TARGET_OBJECTS:qmml_objects>)
foreach(library IN ITEMS qmml qmml_static)
    target_include_directories(${library} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
target_include_directories(qmml PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(qmml PRIVATE QMML_BUILDING)
target_link_libraries(qmml PRIVATE $<BUILD_INTERFACE:qmml_options>)

# The ABI has its own number, the one in the version node; the release's number says nothing about it.
set_target_properties(qmml PROPERTIES VERSION 1.0.0 SOVERSION 1 LINKER_LANGUAGE CXX)
set_target_properties(qmml_static PROPERTIES OUTPUT_NAME qmml EXPORT_NAME static LINKER_LANGUAGE CXX)
add_library(qmml::qmml ALIAS qmml)
add_library(qmml::static ALIAS qmml_static)

include(cmake/exports.cmake)
qmml_restrict_exports(qmml ${PROJECT_SOURCE_DIR}/exports.txt)
