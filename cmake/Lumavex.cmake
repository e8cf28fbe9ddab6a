# SPDX-License-Identifier: GPL-3.0-or-later
# Settings common to all targets of the project.

add_library(lumavex_options INTERFACE)
target_include_directories(lumavex_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(lumavex_options INTERFACE
    LUMAVEX_VERSION="${PROJECT_VERSION}"
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS)
target_compile_options(lumavex_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference
    -Wimplicit-fallthrough -Wformat=2)
# A unity build compiles up to ten files of a folder as one, in a quarter of the time: most of it goes into reading Qt's
# headers. Folders stay free of names that two of their files define. GCC takes the files' unnamed namespaces for those
# of a header then, hence without that warning.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 10)
if(CMAKE_UNITY_BUILD)
    target_compile_options(lumavex_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(LUMAVEX_WARNINGS_AS_ERRORS)
    target_compile_options(lumavex_options INTERFACE -Werror)
endif()
if(LUMAVEX_SANITIZE)
    target_compile_options(lumavex_options INTERFACE -fsanitize=${LUMAVEX_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(lumavex_options INTERFACE -fsanitize=${LUMAVEX_SANITIZE})
endif()
if(LUMAVEX_SANITIZE STREQUAL "thread")
    add_library(lumavex_forking_clone OBJECT tests/sanitizers/forking_clone.cpp)
    target_link_libraries(lumavex_options INTERFACE $<TARGET_OBJECTS:lumavex_forking_clone>)
endif()

# lumavex_library(<name> [<public dependency>...]): the static library of the calling folder, made of every source and
# header directly in it.
function(lumavex_library name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    add_library(${name} STATIC ${sources})
    # Each of these repeats the functions of another file for processors with AVX2.
    file(GLOB variants *Avx2.cpp)
    set_source_files_properties(${variants} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX
        AUTOUIC_SEARCH_PATHS ${PROJECT_SOURCE_DIR}/resources/interfaces)
    target_link_libraries(${name} PUBLIC lumavex_options ${ARGN})
    # A window's header may include the class generated from its interface file.
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/include)
endfunction()
