# The Windows test hosts, built beside Tendrane.dll: the render host, the
# editor host and the editor's clipboard check.
add_executable(tendrane_render_host ${PROJECT_SOURCE_DIR}/tests/host/windows/RenderHost.cpp)
target_include_directories(tendrane_render_host PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(tendrane_render_host PROPERTIES OUTPUT_NAME render_host
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)

add_executable(tendrane_editor_host ${PROJECT_SOURCE_DIR}/tests/host/windows/EditorHost.cpp)
target_include_directories(tendrane_editor_host PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(tendrane_editor_host PRIVATE tendrane_patch)
set_target_properties(tendrane_editor_host PROPERTIES OUTPUT_NAME editor_host
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)

add_executable(tendrane_editor_clipboard ${PROJECT_SOURCE_DIR}/tests/host/windows/EditorHostClipboard.cpp)
target_link_libraries(tendrane_editor_clipboard PRIVATE tendrane_plugin)
set_target_properties(tendrane_editor_clipboard PROPERTIES OUTPUT_NAME editor_clipboard
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)

# The editor's MIDI configuration dialog, the system's own, driven from a
# second thread of a Windows host.
add_executable(tendrane_editor_midi_config ${PROJECT_SOURCE_DIR}/tests/host/windows/EditorHostMidiConfig.cpp)
target_include_directories(tendrane_editor_midi_config PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(tendrane_editor_midi_config PRIVATE tendrane_patch)
set_target_properties(tendrane_editor_midi_config PROPERTIES OUTPUT_NAME editor_midi_config
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)

# The fetch worker stopped while a request waits on a server, under the
# Windows loader.
add_executable(tendrane_url_fetch_test ${PROJECT_SOURCE_DIR}/tests/host/windows/UrlFetchTest.cpp)
target_link_libraries(tendrane_url_fetch_test PRIVATE tendrane_platform ws2_32)
set_target_properties(tendrane_url_fetch_test PROPERTIES OUTPUT_NAME url_fetch_test
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)
