# What every target of the project has in common.

add_library(project_options INTERFACE)
target_include_directories(project_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)  # g++ 12 sees overlapping copies in every "literal" + string it optimises
if(OVNO2_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(project_options INTERFACE -fsanitize=address,undefined)
endif()
if(WIN32)
  # One self-contained file: no run-time beside the DLL. 32-bit frames keep the 16-byte stack that SSE code expects.
  target_compile_definitions(project_options INTERFACE UNICODE _UNICODE WINVER=0x0600 _WIN32_WINNT=0x0600)
  target_compile_options(project_options INTERFACE -mstackrealign)
  target_link_options(project_options INTERFACE -static -static-libgcc -static-libstdc++)
endif()

# ovno2_module(NAME LINKS TARGET...): one folder of the core, one static library. It links only what stands below it,
# so that a call upwards does not link.
function(ovno2_module name)
  cmake_parse_arguments(MODULE "" "" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(sources)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC project_options ${MODULE_LINKS})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE project_options ${MODULE_LINKS})
  endif()
endfunction()
