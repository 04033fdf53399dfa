# What `cmake --install` puts where, and the package that `cpack` makes of it.
include(GNUInstallDirs)

install(TARGETS boxlift
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    BUNDLE DESTINATION .)

if(NOT APPLE)
    set(packaging "${CMAKE_SOURCE_DIR}/packaging")
    install(FILES "${packaging}/linux/org.boxlift.Boxlift.desktop"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
    install(FILES "${packaging}/linux/org.boxlift.Boxlift.metainfo.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
    set(manual "${CMAKE_BINARY_DIR}/boxlift.1.gz")
    add_custom_command(OUTPUT "${manual}"
        COMMAND gzip -9nc "${packaging}/linux/boxlift.1" > "${manual}"
        DEPENDS "${packaging}/linux/boxlift.1" VERBATIM)
    add_custom_target(manual ALL DEPENDS "${manual}")
    install(FILES "${manual}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

    # The icon as it was drawn, and in the sizes for desktops that do not read drawings.
    set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
    install(FILES "${packaging}/boxlift.svg"
        DESTINATION "${icons}/scalable/apps" RENAME org.boxlift.Boxlift.svg)
    find_program(RSVG_CONVERT rsvg-convert REQUIRED)
    foreach(size 16 22 24 32 48 64 128 256 512)
        set(png "${CMAKE_BINARY_DIR}/icons/${size}.png")
        add_custom_command(OUTPUT "${png}"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${CMAKE_BINARY_DIR}/icons"
            COMMAND "${RSVG_CONVERT}" --width ${size} --height ${size} --output "${png}"
                "${packaging}/boxlift.svg"
            DEPENDS "${packaging}/boxlift.svg" VERBATIM)
        list(APPEND pngs "${png}")
        install(FILES "${png}"
            DESTINATION "${icons}/${size}x${size}/apps" RENAME org.boxlift.Boxlift.png)
    endforeach()
    add_custom_target(icons ALL DEPENDS ${pngs})
endif()

set(CPACK_PACKAGE_NAME boxlift)
set(CPACK_PACKAGE_VENDOR "Boxlift")
set(CPACK_PACKAGE_CONTACT "The Boxlift developers <boxlift@boxlift.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converts video and audio to files that play everywhere")
set(CPACK_PACKAGE_DESCRIPTION
"Boxlift turns video and audio files into MP4, MOV, M4A, or AAC at 128 kbit/s.
Files and folders are dropped on its window, which says what will be done with
each of them, and why. Where the tracks suit the output they are copied
without loss of quality; where they do not, they are encoded again.")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The linked libraries are found by themselves; what QML imports is not linked.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
get_property(qml_packages GLOBAL PROPERTY BOXLIFT_QML_PACKAGES)
list(JOIN qml_packages ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-inter, default-dbus-session-bus | dbus-session-bus")
if(APPLE)
    set(CPACK_GENERATOR DragNDrop)
endif()
include(CPack)
