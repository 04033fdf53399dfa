# The application as a bundle: its description, its icon set made of the drawing, its worker.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICONUTIL iconutil REQUIRED)
set(iconset "${CMAKE_BINARY_DIR}/boxlift.iconset")
set(icns "${CMAKE_BINARY_DIR}/boxlift.icns")
set(drawing "${CMAKE_SOURCE_DIR}/packaging/boxlift.svg")
set(draw_commands COMMAND "${CMAKE_COMMAND}" -E make_directory "${iconset}")
foreach(size 16 32 128 256 512)
    math(EXPR double "2 * ${size}")
    list(APPEND draw_commands
        COMMAND "${RSVG_CONVERT}" -w ${size} -h ${size}
            -o "${iconset}/icon_${size}x${size}.png" "${drawing}"
        COMMAND "${RSVG_CONVERT}" -w ${double} -h ${double}
            -o "${iconset}/icon_${size}x${size}@2x.png" "${drawing}")
endforeach()
add_custom_command(OUTPUT "${icns}" ${draw_commands}
    COMMAND "${ICONUTIL}" --convert icns --output "${icns}" "${iconset}"
    DEPENDS "${drawing}" VERBATIM)
target_sources(boxlift PRIVATE "${icns}")
set_source_files_properties("${icns}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(boxlift PROPERTIES
    MACOSX_BUNDLE ON
    OUTPUT_NAME Boxlift
    MACOSX_BUNDLE_INFO_PLIST "${CMAKE_SOURCE_DIR}/packaging/macos/Info.plist.in")
add_custom_command(TARGET boxlift POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -E copy "$<TARGET_FILE:boxlift-worker>" "$<TARGET_FILE_DIR:boxlift>")
