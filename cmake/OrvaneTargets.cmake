# Shared build settings, the library and test helpers.

add_library(orv_warnings INTERFACE)
target_compile_options(orv_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror)

# Strict string handling for the project's own sources.
add_library(orv_strict INTERFACE)
target_compile_definitions(orv_strict INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH QT_USE_QSTRINGBUILDER
    ORV_VERSION_MAJOR=${PROJECT_VERSION_MAJOR} ORV_VERSION_MINOR=${PROJECT_VERSION_MINOR}
    ORV_VERSION_PATCH=${PROJECT_VERSION_PATCH} ORV_VERSION_TWEAK=${PROJECT_VERSION_TWEAK}
    ORV_VERSION_TEXT="${PROJECT_VERSION}")
target_link_libraries(orv_strict INTERFACE orv_warnings)

if(ORV_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
if(ORV_TSAN)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

set_property(GLOBAL PROPERTY ORV_LOGIC_LIBRARIES "")

# orv_library(<name> [LOGIC] LIBS <libs...>)
# A subsystem library: every .cpp/.h of its folder, no widgets allowed.
function(orv_library name)
    cmake_parse_arguments(ARG "LOGIC" "" "LIBS" ${ARGN})
    file(GLOB srcs CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h
         ${CMAKE_CURRENT_SOURCE_DIR}/*.qrc)
    list(FILTER srcs INCLUDE REGEX "\\.cpp$")
    list(LENGTH srcs count)
    if(count EQUAL 0)
        # A subsystem with nothing in it yet.
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
        target_link_libraries(${name} INTERFACE ${ARG_LIBS})
    else()
        file(GLOB all CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h
             ${CMAKE_CURRENT_SOURCE_DIR}/*.qrc)
        add_library(${name} STATIC ${all})
        target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
        target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE orv_strict)
    endif()
    if(ARG_LOGIC)
        set_property(GLOBAL APPEND PROPERTY ORV_LOGIC_LIBRARIES ${name})
    endif()
endfunction()

# Fails the configure step when a logic library reaches QtWidgets through its links.
function(_orv_collect_links target out)
    set(seen ${${out}})
    if(NOT TARGET ${target})
        return()
    endif()
    get_target_property(aliased ${target} ALIASED_TARGET)
    if(aliased)
        set(target ${aliased})
    endif()
    get_target_property(libs ${target} INTERFACE_LINK_LIBRARIES)
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "INTERFACE_LIBRARY")
        get_target_property(own ${target} LINK_LIBRARIES)
        if(own)
            list(APPEND libs ${own})
        endif()
    endif()
    foreach(lib IN LISTS libs)
        if(lib AND NOT lib IN_LIST seen AND NOT lib MATCHES "^\\$<")
            list(APPEND seen ${lib})
            set(${out} ${seen})
            _orv_collect_links(${lib} ${out})
            set(seen ${${out}})
        endif()
    endforeach()
    set(${out} ${seen} PARENT_SCOPE)
endfunction()

function(orv_check_logic_libraries)
    get_property(logic GLOBAL PROPERTY ORV_LOGIC_LIBRARIES)
    foreach(lib IN LISTS logic)
        set(all "")
        _orv_collect_links(${lib} all)
        foreach(dep IN LISTS all)
            if(dep MATCHES "Widgets|PrintSupport|Charts")
                message(FATAL_ERROR "Logic library ${lib} links ${dep}; widgets belong in src/ui")
            endif()
        endforeach()
    endforeach()
endfunction()

# orv_tests(LABEL <label> LIBS <libs...>)
# Every tst_*.cpp of the current folder becomes one test binary registered with CTest.
function(orv_tests)
    cmake_parse_arguments(ARG "" "LABEL" "LIBS" ${ARGN})
    file(GLOB tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/tst_*.cpp)
    file(GLOB support CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/support_*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/support_*.h)
    foreach(src IN LISTS tests)
        get_filename_component(name ${src} NAME_WE)
        add_executable(${name} ${src} ${support})
        target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt6::Test orv_warnings)
        target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests/common)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABEL}" TIMEOUT 300
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;ORV_SOURCE_DIR=${CMAKE_SOURCE_DIR};ORV_BUILD_DIR=${CMAKE_BINARY_DIR}")
    endforeach()
endfunction()
