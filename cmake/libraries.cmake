# libribkit, shared and static, and libribkit-platform; the exported names are a list in the tree.
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/exports.txt)
file(STRINGS ${CMAKE_SOURCE_DIR}/exports.txt exports REGEX "^[a-zA-Z]")
list(JOIN exports ";\n    " exported)
# Every exported name carries the interface that it belongs to, which changes with the library's own name (SOVERSION).
set(ribkit_symbols RIBKIT_0)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/ribkit.map CONTENT "${ribkit_symbols} {\nglobal:\n    @exported@;\nlocal:\n    *;\n};\n" @ONLY)

add_library(ribkit SHARED $<TARGET_OBJECTS:ribkit_objects>)
add_library(ribkit_static STATIC $<TARGET_OBJECTS:ribkit_objects>)
set_target_properties(ribkit_static PROPERTIES OUTPUT_NAME ribkit EXPORT_NAME ribkit-static)
# Linked as C: the switch has no C++ run-time library.
set_target_properties(ribkit PROPERTIES LINKER_LANGUAGE C SOVERSION 0 VERSION ${PROJECT_VERSION})
set_target_properties(ribkit_static PROPERTIES LINKER_LANGUAGE C)
set(ribkit_core_link_options -Wl,--as-needed -Wl,--gc-sections -Wl,-Bsymbolic-functions
    -Wl,--version-script=${CMAKE_BINARY_DIR}/ribkit.map)
target_link_options(ribkit PRIVATE ${ribkit_core_link_options})
set_property(TARGET ribkit APPEND PROPERTY LINK_DEPENDS ${CMAKE_BINARY_DIR}/ribkit.map)
foreach(library IN ITEMS ribkit ribkit_static)
    target_include_directories(${library} INTERFACE
        $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ribkit>)
endforeach()
