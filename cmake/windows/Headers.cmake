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
