# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Read by cpack before it begins. Every file of the package bears the time of the latest entry of the changelog, so that
# the same sources make the same package at any time.

if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND dpkg-parsechangelog --file "${CMAKE_CURRENT_LIST_DIR}/changelog" --show-field Timestamp
    OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{SOURCE_DATE_EPOCH} "${time}")
endif()

# The libraries that the program needs without a window, and those of the window alone.
if(CPACK_PACKAGE_NAME STREQUAL "halvik-diagnostic")
  set(libraries "${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/libraries")
  file(WRITE "${libraries}/debian/control" "Source: halvik-diagnostic\n\nPackage: halvik-diagnostic\nArchitecture: any\n")
  execute_process(
    COMMAND dpkg-shlibdeps -O
      -dDepends -e "${CPACK_HALVIK_BINARY_DIR}/halvik-diagnostic"
        -e "${CPACK_HALVIK_BINARY_DIR}/libexec/halvik-upload.so"
      -dRecommends -e "${CPACK_HALVIK_BINARY_DIR}/libexec/halvik-diagnostic-window"
    WORKING_DIRECTORY "${libraries}" OUTPUT_VARIABLE found COMMAND_ERROR_IS_FATAL ANY)
  foreach(field IN ITEMS Depends Recommends)
    string(REGEX MATCH "shlibs:${field}=([^\n]+)" line "${found}")
    if(NOT line)
      message(FATAL_ERROR "dpkg-shlibdeps prints no ${field}: ${found}")
    endif()
    string(TOUPPER "CPACK_DEBIAN_PACKAGE_${field}" variable)
    set(${variable} "${CMAKE_MATCH_1}, ${${variable}}")
  endforeach()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
endif()
