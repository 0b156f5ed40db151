# One static library per subsystem. Sources are found by globbing, so adding
# a file never means editing a build file. Files ending in _posix or _linux
# build only off Windows, files ending in _win32 only on Windows, and files
# ending in _libpng only where libpng is available. A headless build leaves
# out the _linux files: they draw text with FreeType, fetch with curl and
# open X11 windows.
set(TENDRANE_CORE_LIBRARIES "" CACHE INTERNAL "")

function(tendrane_filter_sources out)
  set(result "")
  foreach(f IN LISTS ARGN)
    get_filename_component(stem "${f}" NAME_WE)
    if(stem MATCHES "_(posix|linux)$" AND WIN32)
      continue()
    endif()
    if(stem MATCHES "_linux$" AND TENDRANE_HEADLESS)
      continue()
    endif()
    if(stem MATCHES "_win32$" AND NOT WIN32)
      continue()
    endif()
    if(stem MATCHES "_libpng$" AND NOT PNG_FOUND)
      continue()
    endif()
    list(APPEND result "${f}")
  endforeach()
  set(${out} "${result}" PARENT_SCOPE)
endfunction()

# tendrane_library(NAME DEPS lib... [CORE])
function(tendrane_library name)
  cmake_parse_arguments(ARG "CORE" "" "DEPS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS
       ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.c)
  tendrane_filter_sources(sources ${sources})
  if(NOT sources)
    set(empty ${CMAKE_CURRENT_BINARY_DIR}/${name}_empty.cpp)
    if(NOT EXISTS ${empty})
      file(WRITE ${empty} "// This library has no sources yet.\n")
    endif()
    set(sources ${empty})
  endif()
  add_library(tendrane_${name} STATIC ${sources})
  target_include_directories(tendrane_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(tendrane_${name} PUBLIC ${ARG_DEPS})
  if(ARG_CORE)
    set(TENDRANE_CORE_LIBRARIES ${TENDRANE_CORE_LIBRARIES} tendrane_${name} CACHE INTERNAL "")
  endif()
endfunction()
