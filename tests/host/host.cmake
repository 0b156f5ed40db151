# The plug-in binary under hosts: our own test host (always), and the real
# hosts (label host): Ardour headless, and the Windows build under wine.
set(TENDRANE_HOST_DIR ${PROJECT_SOURCE_DIR}/tests/host)

add_executable(plugin_host_tests ${TENDRANE_HOST_DIR}/OwnHostTest.cpp ${support_sources})
target_link_libraries(plugin_host_tests PRIVATE tendrane_patch tendrane_resources GTest::gtest_main
                      ${CMAKE_DL_LIBS} Threads::Threads)
target_include_directories(plugin_host_tests PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(plugin_host_tests PRIVATE TENDRANE_PLUGIN_BINARY="$<TARGET_FILE:tendrane_vst>"
                          TENDRANE_HOST_CONFIG="${PROJECT_BINARY_DIR}/host-config")
# The plug-in's allocations reach the counting operator new of the program.
set_target_properties(plugin_host_tests PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(plugin_host_tests tendrane_vst)
gtest_discover_tests(plugin_host_tests DISCOVERY_MODE PRE_TEST
                     PROPERTIES LABELS plugin)

# A real host, headless: the scanner, a session rendered, saved, reopened.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  add_test(NAME host_ardour_session
           COMMAND ${Python3_EXECUTABLE} ${TENDRANE_HOST_DIR}/ardour/ardour_host_test.py
                   --plugin $<TARGET_FILE:tendrane_vst> --tendrane $<TARGET_FILE:tendrane>
                   --patch ${TENDRANE_HOST_DIR}/data/HostCheck.tdrn --work ${PROJECT_BINARY_DIR}/host-ardour)
  set_tests_properties(host_ardour_session PROPERTIES LABELS host TIMEOUT 900)
endif()
