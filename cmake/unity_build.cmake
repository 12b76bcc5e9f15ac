# With CMAKE_UNITY_BUILD (the preset "solve") several sources are compiled as one, which takes half the
# time: most of a small source's time goes into the standard library's headers. Sources that have a
# local name in common with others of their folder stay alone.
if(NOT CMAKE_UNITY_BUILD)
    return()
endif()
# Many of their sources would.
set_target_properties(engine_global engine_linear engine_methods engine_nonlinear engine_search
                      PROPERTIES UNITY_BUILD OFF)

function(compile_alone folder)
    list(TRANSFORM ARGN PREPEND ${CMAKE_SOURCE_DIR}/${folder}/ OUTPUT_VARIABLE sources)
    set_source_files_properties(${sources} DIRECTORY ${CMAKE_SOURCE_DIR}/${folder}
                                PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
compile_alone(norv environment/nev_operations.cpp)
compile_alone(norv/readers mps_bounds.cpp mps_lines.cpp nl_special_ordered.cpp)
compile_alone(norv/solve box_verdict.cpp start_point.cpp)
compile_alone(src/translate row_functions.cpp setup.cpp variables.cpp)
