# Rooms: one folder is one static library, and arrows run one way.
#
#   corvatto_room(store
#       USES settings platform            rooms declared before this one; anything else stops the configuration
#       LIBRARIES PRIVATE SQLite::SQLite3 what target_link_libraries takes
#       HEADERS ClipboardStore.h ...      what others may include, as "store/ClipboardStore.h"
#       SOURCES ClipboardStore.cpp ...)
#
# A compiler that works on a room sees that room's headers and those of the rooms it uses, and no others: each room
# publishes an include directory of its own, made of links to exactly the headers it declares.

function(corvatto_room name)
    cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "FOLDER" "USES;LIBRARIES;HEADERS;SOURCES")
    if(ROOM_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "Room '${name}': unknown arguments ${ROOM_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT ROOM_FOLDER)
        set(ROOM_FOLDER ${name})
    endif()

    foreach(used IN LISTS ROOM_USES)
        if(NOT TARGET corvatto_${used})
            message(FATAL_ERROR
                "Room '${name}' may not use '${used}': a room uses only rooms that are declared before it.")
        endif()
    endforeach()

    set(include_dir ${PROJECT_BINARY_DIR}/rooms/${name})
    file(REMOVE_RECURSE ${include_dir})
    file(MAKE_DIRECTORY ${include_dir}/${ROOM_FOLDER})
    foreach(header IN LISTS ROOM_HEADERS)
        if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${header})
            message(FATAL_ERROR "Room '${name}': no header ${header}")
        endif()
        file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${include_dir}/${ROOM_FOLDER}/${header} SYMBOLIC)
    endforeach()

    add_library(corvatto_${name} STATIC ${ROOM_SOURCES} ${ROOM_HEADERS})
    set_target_properties(corvatto_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(corvatto_${name} PUBLIC ${include_dir})
    list(TRANSFORM ROOM_USES PREPEND corvatto_ OUTPUT_VARIABLE used_targets)
    target_link_libraries(corvatto_${name} PUBLIC ${used_targets} PRIVATE corvatto_warnings)
    if(ROOM_LIBRARIES)
        target_link_libraries(corvatto_${name} ${ROOM_LIBRARIES})
    endif()
endfunction()
