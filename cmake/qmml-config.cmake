# Defines qmml::qmml, the shared library, and qmml::static, which needs C++ enabled in the project that links it.
include(${CMAKE_CURRENT_LIST_DIR}/qmml-targets.cmake)
