# Libraries from Debian that the project links. Debian's development
# packages are for one architecture only, so a 32-bit build links the i386
# runtime library by its file name (the headers are the same): sets
# <PREFIX>_LIBRARY and <PREFIX>_INCLUDE_DIR.
function(wex_find_library prefix name soname header)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    find_library(${prefix}_LIBRARY NAMES ${soname} PATHS /usr/lib/i386-linux-gnu NO_DEFAULT_PATH
                 NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  else()
    find_library(${prefix}_LIBRARY NAMES ${name} REQUIRED)
  endif()
  find_path(${prefix}_INCLUDE_DIR ${header} NO_CMAKE_FIND_ROOT_PATH REQUIRED)
endfunction()
