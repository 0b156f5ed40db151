# The resource test embeds its own small set of sample resources.
set(sample_generated ${CMAKE_CURRENT_BINARY_DIR}/SampleResources.cpp)
tendrane_embed_resources(OUTPUT ${sample_generated}
                         DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/platform/sample-resources
                         FUNCTION sampleResources)
target_sources(platform_tests PRIVATE ${sample_generated})
