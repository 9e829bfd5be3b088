# What a Windows program carries in itself: icon, version, manifest; and that those with windows have
# no console.
find_program(RSVG_CONVERT rsvg-convert REQUIRED) # Debian: librsvg2-bin
find_program(ICOTOOL icotool REQUIRED)           # Debian: icoutils

set(HOUSE_ICON ${CMAKE_CURRENT_BINARY_DIR}/valtrino.ico)
set(svg ${CMAKE_SOURCE_DIR}/assets/valtrino.svg)
set(pictures "")
foreach(side 16 20 24 32 40 48 64 256)
    set(png ${CMAKE_CURRENT_BINARY_DIR}/valtrino-${side}.png)
    add_custom_command(OUTPUT ${png}
        COMMAND ${RSVG_CONVERT} --width ${side} --height ${side} --output ${png} ${svg}
        DEPENDS ${svg} VERBATIM)
    list(APPEND pictures ${png})
endforeach()
add_custom_command(OUTPUT ${HOUSE_ICON}
    COMMAND ${ICOTOOL} --create --output ${HOUSE_ICON} ${pictures}
    DEPENDS ${pictures} VERBATIM)
add_custom_target(program_icon DEPENDS ${HOUSE_ICON})

function(house_windows_program HOUSE_PROGRAM HOUSE_TITLE)
    set(HOUSE_MANIFEST ${CMAKE_CURRENT_BINARY_DIR}/${HOUSE_PROGRAM}.manifest)
    set(resources ${CMAKE_CURRENT_BINARY_DIR}/${HOUSE_PROGRAM}.rc)
    configure_file(windows/program.manifest.in ${HOUSE_MANIFEST} @ONLY)
    configure_file(windows/program.rc.in ${resources} @ONLY)
    target_sources(${HOUSE_PROGRAM} PRIVATE ${resources})
    set_property(SOURCE ${resources} TARGET_DIRECTORY ${HOUSE_PROGRAM} PROPERTY
        OBJECT_DEPENDS ${HOUSE_ICON} ${HOUSE_MANIFEST})
    add_dependencies(${HOUSE_PROGRAM} program_icon)
endfunction()

house_windows_program(valtrino "Valtrino")
house_windows_program(valtrino-novo "Valtrino (novo banco de dados)")
house_windows_program(valtrino-mdb "Valtrino (linha de comando)")
set_target_properties(valtrino valtrino-novo PROPERTIES WIN32_EXECUTABLE ON)
install(TARGETS valtrino valtrino-novo valtrino-mdb RUNTIME DESTINATION .)
