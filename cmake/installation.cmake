# Where an installation puts what. The link and the host's libraries are plug-ins, found by run path
# in a folder of their own; on Windows all stand together, beside the program, where its loader looks.
include(GNUInstallDirs)
set(vexcc_documents ${CMAKE_INSTALL_DATADIR}/doc/vexcc)
set(vexcc_headers ${CMAKE_INSTALL_INCLUDEDIR}/vexcc)
if(WIN32)
    set(vexcc_plug_ins ${CMAKE_INSTALL_BINDIR})
    set(vexcc_definitions ${CMAKE_INSTALL_BINDIR})
else()
    set(vexcc_plug_ins ${CMAKE_INSTALL_LIBDIR}/vexcc)
    set(vexcc_definitions ${CMAKE_INSTALL_DATADIR}/vexcc)
endif()
# From the program to them.
file(RELATIVE_PATH vexcc_bin_to_plug_ins /${CMAKE_INSTALL_BINDIR} /${vexcc_plug_ins})
file(RELATIVE_PATH vexcc_bin_to_definitions /${CMAKE_INSTALL_BINDIR} /${vexcc_definitions})

# set_run_path(TARGETS target... PATHS path...): where installed files look for libraries, in the build
# tree too. CMake would otherwise pad the build's run paths with empty parts, to have room for the
# installation's, and the loader takes an empty part for the current folder.
function(set_run_path)
    cmake_parse_arguments(arg "" "" "TARGETS;PATHS" ${ARGN})
    set_target_properties(${arg_TARGETS} PROPERTIES INSTALL_RPATH "${arg_PATHS}"
                                                    BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# install_plug_in(TARGET...): shared libraries, which find each other beside themselves.
function(install_plug_in)
    set_run_path(TARGETS ${ARGN} PATHS "$ORIGIN")
    install(TARGETS ${ARGN}
            LIBRARY DESTINATION ${vexcc_plug_ins}
            RUNTIME DESTINATION ${vexcc_plug_ins}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/vexcc)
endfunction()

install(FILES README.md CHANGELOG.md DESTINATION ${vexcc_documents})
install(DIRECTORY docs DESTINATION ${vexcc_documents})
install(DIRECTORY examples DESTINATION ${vexcc_documents})
install(DIRECTORY hostapi/include/ DESTINATION ${vexcc_headers})
install(DIRECTORY norv/include/ DESTINATION ${vexcc_headers})
