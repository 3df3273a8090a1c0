# gtkmm-3.0 and goocanvasmm-2.0 as one target. Debian's goocanvasmm lists an include folder that does not exist, which
# an imported target rejects; it is filtered out.
if(NOT VELMORAK_BUILD_EDITOR)
  return()
endif()
find_package(PkgConfig REQUIRED)
set(required "")
if(NOT VELMORAK_BUILD_EDITOR STREQUAL AUTO)
  set(required REQUIRED)
endif()
pkg_check_modules(VELMORAK_TOOLKIT ${required} gtkmm-3.0>=3.24 goocanvasmm-2.0>=1.90 gthread-2.0)
# A normal variable, so that AUTO is decided anew by the next configuration.
set(VELMORAK_BUILD_EDITOR ON)
if(NOT VELMORAK_TOOLKIT_FOUND)
  set(VELMORAK_BUILD_EDITOR OFF)
  message(STATUS "The editor is not built: gtkmm-3.0 or goocanvasmm-2.0 not found. The runner is.")
  return()
endif()
list(FILTER VELMORAK_TOOLKIT_INCLUDE_DIRS EXCLUDE REGEX "/lib/.*/goocanvasmm-2.0/include$")

add_library(velmorak_toolkit INTERFACE)
target_include_directories(velmorak_toolkit SYSTEM INTERFACE ${VELMORAK_TOOLKIT_INCLUDE_DIRS})
target_link_directories(velmorak_toolkit INTERFACE ${VELMORAK_TOOLKIT_LIBRARY_DIRS})
target_link_libraries(velmorak_toolkit INTERFACE ${VELMORAK_TOOLKIT_LIBRARIES})
