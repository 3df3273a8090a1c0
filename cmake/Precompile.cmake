# Headers that nearly every source includes are compiled once. Each source includes what it uses all the same:
# scripts/tidy and the packages compile without.
option(VELMORAK_PRECOMPILE "Compile common headers once, which makes builds quicker" ON)

# Not <filesystem>: it brings std::quoted, which would be found instead of the function of velmorak/Text.h.
set(VELMORAK_COMMON_HEADERS <algorithm> <array> <charconv> <cmath> <cstdint> <fstream> <functional> <limits> <map>
  <memory> <numeric> <optional> <set> <sstream> <stdexcept> <string> <string_view> <system_error> <tuple>
  <unordered_map> <utility> <variant> <vector>)
# They are the same for all targets only if all have the flags of threads.
add_compile_options(-pthread)

# All targets of a folder and of those below it.
function(velmorak_targets_below folder result)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below ${folders})
    velmorak_targets_below(${below} more)
    list(APPEND targets ${more})
  endforeach()
  set(${result} ${targets} PARENT_SCOPE)
endfunction()

# The targets below the current folder that have one of the types and link a library whose name matches take the headers
# of the target `from`, which has the same flags. Sources with flags of their own do not.
function(velmorak_share_headers from types linked)
  if(NOT VELMORAK_PRECOMPILE)
    return()
  endif()
  velmorak_targets_below(${CMAKE_CURRENT_SOURCE_DIR} targets)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    get_target_property(headers ${target} PRECOMPILE_HEADERS)
    get_target_property(reused ${target} PRECOMPILE_HEADERS_REUSE_FROM)
    if("${type}" IN_LIST types AND "${libraries}" MATCHES "${linked}" AND NOT headers AND NOT reused)
      target_precompile_headers(${target} REUSE_FROM ${from})
    endif()
  endforeach()
endfunction()

# Compiles sources with options of their own.
function(velmorak_source_options options)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${options}" SKIP_PRECOMPILE_HEADERS ON)
endfunction()
