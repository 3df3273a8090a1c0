# The build tree has the layout of the installed one, so that both find their parts by the same relative paths and are
# relocatable.
set(VELMORAK_LIBDIR ${CMAKE_INSTALL_LIBDIR}/velmorak)
set(VELMORAK_DATADIR ${CMAKE_INSTALL_DATADIR}/velmorak)
set(VELMORAK_BIN ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(VELMORAK_LIB ${PROJECT_BINARY_DIR}/${VELMORAK_LIBDIR})
set(VELMORAK_SHARE ${PROJECT_BINARY_DIR}/${VELMORAK_DATADIR})

file(RELATIVE_PATH VELMORAK_LIB_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${VELMORAK_LIBDIR})
file(RELATIVE_PATH VELMORAK_SHARE_FROM_LIB /${VELMORAK_LIBDIR} /${VELMORAK_DATADIR})
file(RELATIVE_PATH VELMORAK_DOC_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_DOCDIR})
file(RELATIVE_PATH VELMORAK_SHARE_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${VELMORAK_DATADIR})

# RUNPATH, not RPATH: LD_LIBRARY_PATH takes precedence, so that it can substitute another library.
add_link_options(LINKER:--enable-new-dtags)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)

# A program that finds the analysis library beside itself.
function(velmorak_program target)
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${VELMORAK_BIN}
    INSTALL_RPATH "$ORIGIN/${VELMORAK_LIB_FROM_BIN}")
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
