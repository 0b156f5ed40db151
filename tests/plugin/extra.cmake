# The plug-in binary's own tests live with the hosts.
include(${PROJECT_SOURCE_DIR}/tests/host/host.cmake)
