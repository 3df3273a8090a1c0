# Texts of --help, manual pages and completions, made from the descriptions in tools/options.
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter)
set(VELMORAK_OPTIONS ${PROJECT_BINARY_DIR}/options)
file(GLOB descriptions CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/options/*)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${descriptions} ${PROJECT_SOURCE_DIR}/docs/environment.md)
execute_process(
  COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/tools/options/generate.py
          ${PROJECT_SOURCE_DIR} ${VELMORAK_OPTIONS} ${PROJECT_VERSION} ${VELMORAK_DATE}
  COMMAND_ERROR_IS_FATAL ANY)
