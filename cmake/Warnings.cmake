# Strict warnings for the project's own targets; third-party headers come in as system includes.
function(velmora_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                           -Wold-style-cast -Wcast-align -Woverloaded-virtual
                                           -Wformat=2 -Wimplicit-fallthrough)
  if(VELMORA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# velmora_folder_library(<target> <link libraries...>): the library of one source folder, made
# of the .cpp files in it.
function(velmora_folder_library target)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} PUBLIC ${ARGN})
  velmora_warnings(${target})
endfunction()
