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
