# join_folder(TARGET FOLDER [EXCEPT FILE...]): the sources of a target that stand in a folder are compiled as one, because
# what templates make of the headers costs more than the files themselves. Only for the targets of QVP_JOIN_FOLDERS; a file for
# itself is what clang-tidy and a change of one line want.
function(join_folder target folder)
    cmake_parse_arguments(PARSE_ARGV 2 argument "" "" EXCEPT)
    if(NOT target IN_LIST QVP_JOIN_FOLDERS)
        return()
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    file(GLOB files RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} ${folder}/*.cpp)
    foreach(file ${argument_EXCEPT})
        list(REMOVE_ITEM files ${file})
    endforeach()
    string(MAKE_C_IDENTIFIER ${target}_${folder} group)
    set_source_files_properties(${files} PROPERTIES UNITY_GROUP ${group})
endfunction()
