# Packages that are headers only serve every processor. For another one than this machine's they are found below a root of
# links to them: beside them in /usr/include stand the headers of this machine's C library.
if(NOT CMAKE_CROSSCOMPILING OR NOT RIBKIT_TOOLS)
    return()
endif()
set(root ${CMAKE_BINARY_DIR}/headers)
foreach(path IN ITEMS include/CLI include/nlohmann include/toml++ share/cmake/CLI11 share/cmake/nlohmann_json)
    cmake_path(GET path PARENT_PATH folder)
    file(MAKE_DIRECTORY ${root}/usr/${folder})
    file(CREATE_LINK /usr/${path} ${root}/usr/${path} SYMBOLIC)
endforeach()
list(APPEND CMAKE_FIND_ROOT_PATH ${root})
