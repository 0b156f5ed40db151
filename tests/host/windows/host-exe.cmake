# The render host as a Windows program, built beside Tendrane.dll.
add_executable(tendrane_render_host ${PROJECT_SOURCE_DIR}/tests/host/windows/RenderHost.cpp)
target_include_directories(tendrane_render_host PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(tendrane_render_host PROPERTIES OUTPUT_NAME render_host
                      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/vst)
