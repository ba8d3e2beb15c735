# For hosts that are not Debian: what they may lack is linked into what is built, and programs find their libraries from
# where they are themselves. libnats would bring OpenSSL with it, which has to be renewed by the host: nats: URLs say that
# they are not there.
option(RIBKIT_SELF_CONTAINED "Need nothing of a host but its C library (without NATS)" OFF)
if(RIBKIT_SELF_CONTAINED)
    add_link_options($<$<LINK_LANGUAGE:CXX>:-static-libstdc++> $<$<LINK_LANGUAGE:CXX>:-static-libgcc>)
    set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib")
    set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
endif()

# Debian's library of toml++ is this machine's: for others, and for other hosts, what its headers hold is compiled here.
if(NOT RIBKIT_SELF_CONTAINED AND (ribkit_native OR NOT RIBKIT_TOOLS))
    return()
endif()
find_path(TOMLPLUSPLUS_INCLUDES toml++/toml.h REQUIRED)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/toml.cpp CONTENT "#define TOML_IMPLEMENTATION\n#include <toml++/toml.h>\n")
add_library(ribkit_toml STATIC ${CMAKE_BINARY_DIR}/toml.cpp)
target_compile_definitions(ribkit_toml PUBLIC TOML_HEADER_ONLY=0)
target_include_directories(ribkit_toml SYSTEM PUBLIC ${TOMLPLUSPLUS_INCLUDES})
add_library(tomlplusplus::tomlplusplus ALIAS ribkit_toml)
