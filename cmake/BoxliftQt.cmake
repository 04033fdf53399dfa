# What the queue and the window take from Qt and QCoro.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg Qml Quick Test)
find_package(QCoro6 REQUIRED COMPONENTS Core)
if(NOT APPLE)
    find_package(Fontconfig REQUIRED)
endif()

# boxlift_require_qml_module(<import uri> <Debian package>): a missing QML module would show only
# when the window is started. The property BOXLIFT_QML_PACKAGES collects the packages.
function(boxlift_require_qml_module uri package)
    string(REPLACE "." "/" path "${uri}")
    if(NOT EXISTS "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_QML}/${path}/qmldir")
        message(SEND_ERROR "The QML module ${uri} is missing: install ${package}")
    endif()
    set_property(GLOBAL APPEND PROPERTY BOXLIFT_QML_PACKAGES ${package})
endfunction()
