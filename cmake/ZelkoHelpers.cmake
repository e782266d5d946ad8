# zelko_add_platform_library(NAME SOURCES ... HEADERS ... [LIBS ...])
# Builds the listed sources of platform/NAME into the shared library NAME and installs the
# listed headers. The lists are explicit: a file that is renamed or missing stops the
# configuration instead of silently dropping out of the build. Headers are included as
# <NAME/header.h> both in the build tree and after installation.
function(zelko_add_platform_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LIBS" ${ARGN})
    if(NOT ARG_SOURCES OR NOT ARG_HEADERS)
        message(FATAL_ERROR "zelko_add_platform_library(${name}): SOURCES and HEADERS are required")
    endif()
    add_library(${name} SHARED ${ARG_SOURCES} ${ARG_HEADERS})
    add_library(Zelko::${name} ALIAS ${name})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${name} PUBLIC Qt5::Core ${ARG_LIBS})
    set_target_properties(${name} PROPERTIES OUTPUT_NAME zelko_${name}
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    install(TARGETS ${name} EXPORT ZelkoDataStreamConverterTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${ARG_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name})
endfunction()

# zelko_add_test(NAME [SERIAL] SOURCES... LIBS ...)
# One GoogleTest executable; each TEST becomes its own ctest entry. SERIAL runs its tests
# alone, for tests whose timing rules (lock waits) a loaded machine could break.
function(zelko_add_test name)
    cmake_parse_arguments(ARG "SERIAL" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE GTest::gtest GTest::gtest_main ${ARG_LIBS})
    target_compile_definitions(${name} PRIVATE
        ZELKO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        ZELKO_BINARY_DIR="${PROJECT_BINARY_DIR}")
    set(serial FALSE)
    if(ARG_SERIAL)
        set(serial TRUE)
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "ZELKO_SOURCE_DIR=${PROJECT_SOURCE_DIR}" RUN_SERIAL ${serial})
endfunction()
