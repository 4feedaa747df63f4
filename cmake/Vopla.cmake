# Flags of every target, and the programs beside the rooms: bench, fuzz.

find_program(VOPLA_CCACHE ccache)
if(VOPLA_CCACHE)
    # A precompiled header is found again by its content, not by its time. Said with every call: without it ccache keeps
    # nothing that uses one, which is everything here. What it needs to know of the included files the compiler itself tells:
    # nothing is preprocessed twice.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        CCACHE_DEPEND=1 ${VOPLA_CCACHE})
endif()
find_program(VOPLA_MOLD mold)
if(VOPLA_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

add_compile_options(-Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
if(VOPLA_CCACHE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    add_compile_options(-Wno-array-bounds -Wno-restrict)   # it sees them in texts that are joined by "+"
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Of no use there: every file is an included one, and their nameless namespaces are meant.
    add_compile_options(-Wno-subobject-linkage)
endif()
if(VOPLA_SANITIZE)
    add_compile_options(-fsanitize=${VOPLA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${VOPLA_SANITIZE})
endif()
if(VOPLA_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

# vopla_program(FILE USES modules LIBS foreign): one bench or fuzz program of the file's name.
function(vopla_program file)
    cmake_parse_arguments(P "" "" "USES;LIBS" ${ARGN})
    get_filename_component(name ${file} NAME_WE)
    add_executable(${name} ${file})
    target_link_libraries(${name} PRIVATE ${P_USES} ${P_LIBS})
endfunction()
