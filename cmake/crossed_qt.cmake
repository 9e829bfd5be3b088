# What a build of the windows for another system takes of this one: Qt's programs (moc, uic, rcc); Qt
# itself and libxlsxwriter as packaging/windows/qt builds them, once.
execute_process(COMMAND ${CMAKE_SOURCE_DIR}/packaging/windows/qt
    OUTPUT_VARIABLE HOUSE_QT OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
list(APPEND CMAKE_FIND_ROOT_PATH ${HOUSE_QT})
file(GLOB Qt6HostInfo_DIR /usr/lib/*/cmake/Qt6HostInfo)
cmake_path(GET Qt6HostInfo_DIR PARENT_PATH QT_HOST_PATH_CMAKE_DIR)
set(QT_HOST_PATH /usr)
set(ENV{PKG_CONFIG_LIBDIR} ${HOUSE_QT}/lib/pkgconfig)
enable_language(RC)
# That of this system packs resources as it is able to unpack them.
set(CMAKE_AUTORCC_OPTIONS --no-zstd)
