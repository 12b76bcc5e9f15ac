# header_package(TARGET FOLDER): an imported target for headers that stand in /usr/include/FOLDER.
#
# The folder is linked into one of our own: /usr/include itself holds the build machine's C library.
function(header_package target folder)
    if(TARGET ${target})
        return()
    endif()
    set(headers ${CMAKE_BINARY_DIR}/header_packages/${folder})
    file(MAKE_DIRECTORY ${headers})
    file(CREATE_LINK /usr/include/${folder} ${headers}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE IMPORTED)
    target_include_directories(${target} SYSTEM INTERFACE ${headers})
endfunction()
