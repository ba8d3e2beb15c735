# Flags for our own sources only: third-party code never sees -Werror.
add_library(ribkit_warnings INTERFACE)
target_compile_options(ribkit_warnings INTERFACE
    $<$<BOOL:${RIBKIT_WARNINGS_ARE_ERRORS}>:-Werror> -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef -Wvla -Wno-format-nonliteral
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
if(RIBKIT_SANITIZE)
    add_compile_options(-fsanitize=${RIBKIT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
    add_link_options(-fsanitize=${RIBKIT_SANITIZE})
endif()
if(RIBKIT_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
