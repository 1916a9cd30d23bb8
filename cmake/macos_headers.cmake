# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Included by scripts/macos, which compiles for macOS on Linux. CMake finds only the headers of each library, through
# a folder of links, because beside them are the headers of Linux.

set(halvik_headers "${CMAKE_BINARY_DIR}/headers")
file(MAKE_DIRECTORY "${halvik_headers}")
file(GLOB halvik_linked /usr/include/uv.h /usr/include/uv /usr/include/*-linux-gnu/curl
  /usr/include/*-linux-gnu/qt6/QtCore /usr/include/*-linux-gnu/qt6/QtGui /usr/include/*-linux-gnu/qt6/QtWidgets)
foreach(linked IN LISTS halvik_linked)
  cmake_path(GET linked FILENAME name)
  file(CREATE_LINK "${linked}" "${halvik_headers}/${name}" SYMBOLIC)
endforeach()

foreach(library IN ITEMS CLI11::CLI11 CURL::libcurl Qt6::Widgets libuv::uv nlohmann_json::nlohmann_json)
  add_library(${library} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${library} INTERFACE "${halvik_headers}" "${halvik_headers}/QtCore"
    "${halvik_headers}/QtGui" "${halvik_headers}/QtWidgets")
endforeach()
set(HALVIK_LIBUV libuv::uv)

macro(halvik_find_headers method package)
  set(${package}_FOUND TRUE)
endmacro()
cmake_language(SET_DEPENDENCY_PROVIDER halvik_find_headers SUPPORTED_METHODS FIND_PACKAGE)

# Archives for macOS need an index that the linker of Linux does not write.
set(CMAKE_CXX_ARCHIVE_CREATE "\"${HALVIK_ZIG}\" ar qcs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")
