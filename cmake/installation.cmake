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

install(FILES README.md CHANGELOG.md LICENSE CONTRIBUTING.md DESTINATION ${vexcc_documents})
install(DIRECTORY docs DESTINATION ${vexcc_documents})
install(DIRECTORY examples DESTINATION ${vexcc_documents})
install(DIRECTORY hostapi/include/ DESTINATION ${vexcc_headers})
install(DIRECTORY norv/include/ DESTINATION ${vexcc_headers})

# The engine as a library for programs of one's own: where compilers, find_package and pkg-config look.
# The library itself stays with the plug-ins, which find it beside themselves.
function(install_engine_for_developers)
    install(DIRECTORY engine/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/localsolver)
    file(RELATIVE_PATH localsolver_to_prefix /${config_folder} /)
    file(RELATIVE_PATH localsolver_lib_to_prefix /${CMAKE_INSTALL_LIBDIR} /)
    configure_file(cmake/localsolver-config.cmake.in localsolver-config.cmake @ONLY)
    configure_file(cmake/localsolver.pc.in localsolver.pc @ONLY)
    include(CMakePackageConfigHelpers)
    write_basic_package_version_file(localsolver-config-version.cmake COMPATIBILITY SameMajorVersion)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/localsolver-config.cmake
                  ${CMAKE_CURRENT_BINARY_DIR}/localsolver-config-version.cmake
            DESTINATION ${config_folder})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/localsolver.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    install(CODE "
        file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
        file(CREATE_LINK vexcc/liblocalsolver.so
             \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/liblocalsolver.so\"
             SYMBOLIC)")
endfunction()
if(NOT WIN32 AND NOT VEXCC_LOCALSOLVER_LIBRARY)
    install_engine_for_developers()
endif()

# Packages: cpack -G "DEB;TGZ" in the build folder, or ./dev package.
set(CPACK_PACKAGE_NAME vexcc)
set(CPACK_PACKAGE_CONTACT "the authors of vexcclib64 <vexcc@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Solver link with a host, an optimization engine and norvsolve")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/bin)
include(CPack)
