# Sources of a target are compiled a few at a time, as one: a build from nothing takes a third of the time, and a build after
# a change somewhat longer. Then sources share the names that each has for itself. Those whose names mean different things
# in different sources are compiled alone.
option(VELMORAK_UNITY "Compile several sources as one, which makes builds from nothing quicker" OFF)

set(CMAKE_UNITY_BUILD ${VELMORAK_UNITY})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)
if(VELMORAK_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # A class of a source counts as one of a header, because the source is included.
  add_compile_options(-Wno-subobject-linkage)
endif()

# Sources of the current folder's targets that are not compiled together with others.
function(velmorak_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
