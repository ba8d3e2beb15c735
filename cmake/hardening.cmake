# What is installed is hardened: a smashed stack, an overrun of a known array and a write into what only the loader fills
# in end the program. Applied to libraries and the command, not to tests. `hardening_test.sh` looks at the built files.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX) # programs are loaded anywhere

# Sanitizers bring checks of their own. Debian's start files are not marked for -fcf-protection, so that nothing linked
# with them could run under it.
set(ribkit_hardening "")
set(ribkit_hardening_links "")
if(NOT RIBKIT_SANITIZE)
    set(ribkit_hardening -fstack-protector-strong -fstack-clash-protection)
    set(ribkit_hardening_links -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    # The C library checks nothing where nothing is optimised.
    string(TOUPPER "${CMAKE_BUILD_TYPE}" config)
    if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${config}}" MATCHES "-O[123s]")
        list(APPEND ribkit_hardening -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
    endif()
endif()

# ribkit_harden(TARGET...)
function(ribkit_harden)
    foreach(target IN LISTS ARGN)
        target_compile_options(${target} PRIVATE ${ribkit_hardening})
        target_link_options(${target} PRIVATE ${ribkit_hardening_links})
    endforeach()
endfunction()

# ribkit_harden_folders(FOLDER...): the libraries that they build, whatever is linked from them.
function(ribkit_harden_folders)
    foreach(folder IN LISTS ARGN)
        get_property(targets DIRECTORY ${CMAKE_SOURCE_DIR}/${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(type ${target} TYPE)
            if(type MATCHES "^(OBJECT|STATIC|SHARED)_LIBRARY$")
                ribkit_harden(${target})
            endif()
        endforeach()
    endforeach()
endfunction()
