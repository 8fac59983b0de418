# ovno2_headers(TARGET FOLDER): a header-only library of the build machine as an imported target. Its folder is linked
# into the build tree, for /usr/include as a whole must not be on a cross compiler's search path.
function(ovno2_headers target folder)
  if(TARGET ${target} OR NOT EXISTS /usr/include/${folder})
    return()
  endif()
  set(include ${CMAKE_BINARY_DIR}/headers/${folder})
  file(MAKE_DIRECTORY ${include})
  file(CREATE_LINK /usr/include/${folder} ${include}/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} INTERFACE ${include})
endfunction()

# ovno2_find_headers(PACKAGE TARGET FOLDER): all that the find module of such a library does.
include(FindPackageHandleStandardArgs)
macro(ovno2_find_headers package target folder)
  ovno2_headers(${target} ${folder})
  if(TARGET ${target})
    set(${package}_TARGET ${target})
  endif()
  find_package_handle_standard_args(${package} REQUIRED_VARS ${package}_TARGET)
endmacro()
