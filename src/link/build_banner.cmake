# Sets VEXCC_REVISION, VEXCC_RELEASE_DATE and VEXCC_PLATFORM for the banner: the commit that the
# sources stand at and its date; "unknown" for sources without history.
set(VEXCC_REVISION "unknown")
set(VEXCC_RELEASE_DATE "unknown")
set(VEXCC_PLATFORM "${CMAKE_SYSTEM_NAME} ${CMAKE_SYSTEM_PROCESSOR}")

find_package(Git QUIET)
if(GIT_FOUND)
    execute_process(
        COMMAND ${GIT_EXECUTABLE} log -1 --format=%h|%cs
        WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
        OUTPUT_VARIABLE last_commit
        OUTPUT_STRIP_TRAILING_WHITESPACE
        ERROR_QUIET)
    if(last_commit MATCHES "^([0-9a-f]+)[|]([0-9-]+)$")
        set(VEXCC_REVISION ${CMAKE_MATCH_1})
        set(VEXCC_RELEASE_DATE ${CMAKE_MATCH_2})
    endif()
endif()
