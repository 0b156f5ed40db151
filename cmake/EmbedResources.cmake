# Turns a folder of resource files into a generated C++ source holding a
# ResourceTable. The resource type comes from the file extension, the name
# from the file name without it:
#   .quol QUOL, .fomal FOMAL, .txt TXT, .tdrn TDRN, .fnt FNT, .png PNG.
#
# tendrane_embed_resources(OUTPUT file.cpp DIRECTORY dir FUNCTION fn)
# defines `const platform::ResourceTable& fn()`.
set(TENDRANE_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/embed_resources_script.cmake CACHE INTERNAL "")

function(tendrane_embed_resources)
  cmake_parse_arguments(ARG "" "OUTPUT;DIRECTORY;FUNCTION" "" ${ARGN})
  file(GLOB_RECURSE inputs CONFIGURE_DEPENDS
       ${ARG_DIRECTORY}/*.quol ${ARG_DIRECTORY}/*.fomal ${ARG_DIRECTORY}/*.txt
       ${ARG_DIRECTORY}/*.tdrn ${ARG_DIRECTORY}/*.fnt ${ARG_DIRECTORY}/*.png)
  add_custom_command(
    OUTPUT ${ARG_OUTPUT}
    COMMAND ${CMAKE_COMMAND} -DDIRECTORY=${ARG_DIRECTORY} -DOUTPUT=${ARG_OUTPUT}
            -DFUNCTION=${ARG_FUNCTION} -P ${TENDRANE_EMBED_SCRIPT}
    DEPENDS ${inputs} ${TENDRANE_EMBED_SCRIPT}
    COMMENT "Embedding resources of ${ARG_DIRECTORY}"
    VERBATIM)
endfunction()
