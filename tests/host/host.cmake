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

# The Windows build under wine, against the same host built for Linux.
add_executable(plugin_render_host ${TENDRANE_HOST_DIR}/windows/RenderHost.cpp)
target_include_directories(plugin_render_host PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(plugin_render_host PRIVATE ${CMAKE_DL_LIBS} Threads::Threads)
set(TENDRANE_WIN64_BUILD ${PROJECT_SOURCE_DIR}/build-mingw64 CACHE PATH
    "The 64-bit Windows cross build that the wine test builds the DLL in")
add_test(NAME host_wine_render
         COMMAND ${TENDRANE_HOST_DIR}/windows/wine_host_test.sh ${PROJECT_SOURCE_DIR} ${TENDRANE_WIN64_BUILD}
                 $<TARGET_FILE:tendrane> $<TARGET_FILE:plugin_render_host> $<TARGET_FILE:tendrane_vst>
                 ${TENDRANE_HOST_DIR}/data/HostCheck.tdrn ${PROJECT_BINARY_DIR}/host-wine)
set_tests_properties(host_wine_render PROPERTIES LABELS host TIMEOUT 2400
                     ENVIRONMENT "XDG_CONFIG_HOME=${PROJECT_BINARY_DIR}/host-config")

# The editor in a host's window on an X server of its own (Xvfb): opened,
# clicked and dragged with real X events, compared with the headless panel.
find_package(X11)
find_program(TENDRANE_XVFB_RUN xvfb-run)
if(X11_FOUND AND NOT WIN32)
  add_executable(plugin_editor_host_tests ${TENDRANE_HOST_DIR}/EditorHostTest.cpp)
  target_link_libraries(plugin_editor_host_tests PRIVATE tendrane_patch tendrane_pixels tendrane_resources
                        GTest::gtest_main X11::X11 ${CMAKE_DL_LIBS} Threads::Threads)
  target_include_directories(plugin_editor_host_tests PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_definitions(plugin_editor_host_tests PRIVATE TENDRANE_PLUGIN_BINARY="$<TARGET_FILE:tendrane_vst>"
                            TENDRANE_PROGRAM="$<TARGET_FILE:tendrane>" TENDRANE_BINARY_DIR="${PROJECT_BINARY_DIR}")
  add_dependencies(plugin_editor_host_tests tendrane_vst tendrane)
  if(TENDRANE_XVFB_RUN)
    add_test(NAME host_editor_x11
             COMMAND ${TENDRANE_XVFB_RUN} -a -s "-screen 0 1280x1024x24 -noreset" $<TARGET_FILE:plugin_editor_host_tests>)
  else()
    # Without Xvfb the test cannot run, and says so rather than pass.
    add_test(NAME host_editor_x11 COMMAND sh -c "echo 'xvfb-run is missing: tools/setup-debian.sh host' >&2; exit 1")
  endif()
  set_tests_properties(host_editor_x11 PROPERTIES LABELS host TIMEOUT 300)
endif()
include(${TENDRANE_HOST_DIR}/windows/editor-host-test.cmake)
