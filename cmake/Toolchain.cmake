# Compiler and linker settings that every target shares.

add_library(tirn_options INTERFACE)
target_compile_options(tirn_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                       -Woverloaded-virtual -Wcast-qual -Wformat=2)
target_compile_definitions(tirn_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_NO_FOREACH
                           QT_DEPRECATED_WARNINGS)
if(TIRN_WERROR)
    target_compile_options(tirn_options INTERFACE -Werror)
endif()
if(TIRN_SANITIZE)
    target_compile_options(tirn_options INTERFACE -fsanitize=${TIRN_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(tirn_options INTERFACE -fsanitize=${TIRN_SANITIZE})
endif()

find_program(TIRN_CCACHE ccache)
if(TIRN_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${TIRN_CCACHE})
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()

find_program(TIRN_MOLD mold)
if(TIRN_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

# Every source below `directory`, found again at each build, so that adding a file needs no list.
function(tirn_glob result directory)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${directory}/*.cpp)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${directory}/*.h)
    set(${result}_SOURCES ${${result}_SOURCES} ${sources} PARENT_SCOPE)
    set(${result}_HEADERS ${${result}_HEADERS} ${headers} PARENT_SCOPE)
endfunction()

# A layer of the program: a static library of the given rooms, each header checked to compile alone.
function(tirn_layer name)
    foreach(room ${ARGN})
        tirn_glob(layer ${CMAKE_CURRENT_SOURCE_DIR}/${room})
    endforeach()
    # The entry function belongs to the executable.
    list(FILTER layer_SOURCES EXCLUDE REGEX "/main\\.cpp$")
    if(NOT TARGET Qwt)
        foreach(list layer_SOURCES layer_HEADERS)
            list(FILTER ${list} EXCLUDE REGEX "${tirn_plot_files}")
        endforeach()
    endif()
    add_library(${name} STATIC ${layer_SOURCES})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${CMAKE_CURRENT_SOURCE_DIR}
                   FILES ${layer_HEADERS})
    set_target_properties(${name} PROPERTIES AUTOMOC ON VERIFY_INTERFACE_HEADER_SETS ON)
    target_link_libraries(${name} PUBLIC tirn_options)
endfunction()
