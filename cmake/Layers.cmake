# The rooms of source/layers.txt as libraries and test programs. A room is a folder and its line there: only what differs from
# the rule has a CMakeLists.txt of its own.

# vopla_read_layers(): VOPLA_ROOMS in the order of the table, ROOM_<name>_ON and ROOM_<name>_FOREIGN.
function(vopla_read_layers)
    set(table ${PROJECT_SOURCE_DIR}/source/layers.txt)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})
    file(STRINGS ${table} lines REGEX "^[A-Z]")
    set(rooms)
    foreach(line IN LISTS lines)
        string(REPLACE ";" "," line "${line}")
        string(REPLACE "|" ";" cells "${line}")
        list(TRANSFORM cells STRIP)
        list(GET cells 0 name)
        list(GET cells 1 on)
        list(GET cells 2 foreign)
        if(name MATCHES "^[A-Z]+[0-9]*$")   # a foreign library: for the check alone
            continue()
        endif()
        string(REPLACE " " ";" on "${on}")
        string(REPLACE " " ";" foreign "${foreign}")
        list(APPEND rooms ${name})
        set(ROOM_${name}_ON ${on} PARENT_SCOPE)
        set(ROOM_${name}_FOREIGN ${foreign} PARENT_SCOPE)
    endforeach()
    set(VOPLA_ROOMS ${rooms} PARENT_SCOPE)
endfunction()

# vopla_precompile(TARGET KIND headers...): the first target of a kind compiles them, the others use what it has.
function(vopla_precompile name kind)
    get_property(first GLOBAL PROPERTY PRECOMPILED_${kind})
    if(first)
        target_precompile_headers(${name} REUSE_FROM ${first})
    else()
        target_precompile_headers(${name} PRIVATE ${ARGN})
        set_property(GLOBAL PROPERTY PRECOMPILED_${kind} ${name})
    endif()
endfunction()

# vopla_room(NAME): the library of a room; main.cpp is a program of its own. Without a folder it is what it stands on.
function(vopla_room name)
    file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/source/${name}/*.cpp ${PROJECT_SOURCE_DIR}/source/${name}/*.h)
    list(FILTER files EXCLUDE REGEX "/main\\.cpp$")
    if(NOT files)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE ${ROOM_${name}_ON})
        return()
    endif()
    set(foreign)
    foreach(library IN LISTS ROOM_${name}_FOREIGN)
        list(APPEND foreign ${FOREIGN_${library}})
    endforeach()
    add_library(${name} STATIC ${files})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/source)
    target_link_libraries(${name} PUBLIC ${ROOM_${name}_ON} Threads::Threads PRIVATE ${foreign})
    if(QT IN_LIST ROOM_${name}_FOREIGN)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PUBLIC Qt6::Widgets)   # its headers are of the toolkit
        vopla_precompile(${name} ROOM_QT <QtWidgets> <functional> <memory> <string>)
    else()
        set(kind ROOM)
        if(SDL IN_LIST ROOM_${name}_FOREIGN)
            set(kind ROOM_SDL)   # its flags are others
        endif()
        vopla_precompile(${name} ${kind} <algorithm> <array> <cstdint> <filesystem> <functional> <map> <memory>
            <mutex> <optional> <span> <string> <string_view> <vector>)
    endif()
endfunction()

# vopla_tests(ROOM LIBS foreign): every *.cpp of this room's tests in one program.
function(vopla_tests room)
    cmake_parse_arguments(T "" "" "LIBS" ${ARGN})
    file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${room}/*.cpp ${PROJECT_SOURCE_DIR}/tests/${room}/*.h)
    if(NOT files)
        return()
    endif()
    set(name test_${room})
    add_executable(${name} ${files} ${PROJECT_SOURCE_DIR}/tests/UseTheLocale.cpp)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${room} ${T_LIBS} GTest::gmock_main GTest::gtest)
    target_compile_definitions(${name} PRIVATE VOPLA_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        VOPLA_BINARY_DIR="${PROJECT_BINARY_DIR}")
    # A test runs once for each time that it is compiled: what counts is the compiler's time.
    target_compile_options(${name} PRIVATE -O0)
    set(kind TESTS)
    if(T_LIBS OR QT IN_LIST ROOM_${room}_FOREIGN)
        set(kind TESTS_${room})   # its flags are others
    endif()
    vopla_precompile(${name} ${kind} <gtest/gtest.h> <string> <vector>)
    if(NOT QT IN_LIST ROOM_${room}_FOREIGN)
        add_dependencies(engine_tests ${name})   # what the sanitizers build: the toolkit is not instrumented
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 LABELS ${room})
endfunction()
