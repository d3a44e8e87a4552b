# Fails when an #include in a layered source tree points upward: a file of one layer may include headers of its
# own layer and of the layers below it, never of a layer above.
#
#   cmake -DROOT=<tree> -DLAYERS=<layer>;<layer>... -P check_layer_includes.cmake
#
# LAYERS lists the layers bottom first; a layer is one folder or several folders joined by "+" (folders of one
# layer may include each other). An include names a layer by its first path component ("helper/x.h"); includes
# without a folder and folders outside the list (the resources, the host's headers) are not checked.
if(NOT DEFINED ROOT OR NOT DEFINED LAYERS)
  message(FATAL_ERROR "usage: cmake -DROOT=<tree> -DLAYERS=<layer>;... -P check_layer_includes.cmake")
endif()

set(rank 0)
foreach(layer ${LAYERS})
  string(REPLACE "+" ";" folders "${layer}")
  foreach(folder ${folders})
    set(rank_of_${folder} ${rank})
  endforeach()
  math(EXPR rank "${rank} + 1")
endforeach()

set(violations 0)
file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/*.h ${ROOT}/*.cpp)
list(SORT files)
foreach(file ${files})
  string(REGEX MATCH "^[^/]+" folder "${file}")
  if(NOT DEFINED rank_of_${folder})
    continue()
  endif()
  file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^/\"]+/")
  foreach(line ${lines})
    string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^/\"]+)/.*$" "\\1" used "${line}")
    if(DEFINED rank_of_${used} AND rank_of_${used} GREATER rank_of_${folder})
      string(STRIP "${line}" line)
      message("${file}: ${line}: the ${folder} layer may not use the ${used} layer above it")
      math(EXPR violations "${violations} + 1")
    endif()
  endforeach()
endforeach()

if(violations GREATER 0)
  message(FATAL_ERROR "${violations} include(s) cross a layer upward")
endif()
message(STATUS "every include points down or sideways (${LAYERS})")
