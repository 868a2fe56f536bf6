# Wayland protocols: the code that wayland-scanner writes from their descriptions.
#
#   corvatto_wayland_protocols(wayland_client_protocols client FILE.xml ...)
#
# makes a static library with a header NAME-client-protocol.h for each NAME.xml ("server" for the other side of the
# wire, NAME-server-protocol.h). Of protocols that are not stable the package of Debian 12 that has them, or else this
# project, keeps the description.

find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
pkg_get_variable(WAYLAND_PROTOCOLS_DIR wayland-protocols pkgdatadir)

function(corvatto_wayland_protocols target side)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/${target})
    file(MAKE_DIRECTORY ${generated})
    set(files)
    foreach(description IN LISTS ARGN)
        if(NOT IS_ABSOLUTE ${description})
            set(description ${CMAKE_CURRENT_SOURCE_DIR}/${description})
        endif()
        get_filename_component(name ${description} NAME_WE)
        set(header ${generated}/${name}-${side}-protocol.h)
        set(code ${generated}/${name}-protocol.c)
        add_custom_command(OUTPUT ${header} COMMAND ${WAYLAND_SCANNER} ${side}-header ${description} ${header}
            DEPENDS ${description} VERBATIM)
        add_custom_command(OUTPUT ${code} COMMAND ${WAYLAND_SCANNER} private-code ${description} ${code}
            DEPENDS ${description} VERBATIM)
        list(APPEND files ${header} ${code})
    endforeach()
    add_library(${target} STATIC ${files})
    set_target_properties(${target} PROPERTIES AUTOMOC OFF POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${target} SYSTEM PUBLIC ${generated})
    target_link_libraries(${target} PUBLIC PkgConfig::WAYLAND_${side})
endfunction()
