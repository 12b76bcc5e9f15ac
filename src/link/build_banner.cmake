# Writes the banner's source OUTPUT from TEMPLATE, at build time and only when the text changes:
#
#   cmake -DTEMPLATE=… -DOUTPUT=… -DSOURCES=… -DGIT=… -DPROJECT_VERSION=… -DPLATFORM=… -P build_banner.cmake
#
# Revision and date are those of the commit that the folder SOURCES stands at; "unknown" without git
# or without history.
set(VEXCC_REVISION "unknown")
set(VEXCC_RELEASE_DATE "unknown")
if(GIT)
    execute_process(
        COMMAND ${GIT} log -1 --format=%h|%cs
        WORKING_DIRECTORY ${SOURCES}
        OUTPUT_VARIABLE last_commit
        OUTPUT_STRIP_TRAILING_WHITESPACE
        ERROR_QUIET)
    if(last_commit MATCHES "^([0-9a-f]+)[|]([0-9-]+)$")
        set(VEXCC_REVISION ${CMAKE_MATCH_1})
        set(VEXCC_RELEASE_DATE ${CMAKE_MATCH_2})
    endif()
endif()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
