# The resource test embeds its own small set of sample resources.
set(sample_generated ${CMAKE_CURRENT_BINARY_DIR}/SampleResources.cpp)
tendrane_embed_resources(OUTPUT ${sample_generated}
                         DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/platform/sample-resources
                         FUNCTION sampleResources)
target_sources(platform_tests PRIVATE ${sample_generated})

# A helper process for the safe-writer tests: killed while writing, or
# running into a size limit.
add_executable(platform_writer_child ${CMAKE_CURRENT_SOURCE_DIR}/platform/writer-child/WriterChild.cpp)
target_link_libraries(platform_writer_child PRIVATE tendrane_platform)
target_include_directories(platform_writer_child PRIVATE ${PROJECT_SOURCE_DIR})
add_dependencies(platform_tests platform_writer_child)
target_compile_definitions(platform_tests PRIVATE
  TENDRANE_WRITER_CHILD="$<TARGET_FILE:platform_writer_child>")
