# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# The program as an application of macOS: a folder with the program, its icon and what Finder is to know of it.

set(icon "${PROJECT_SOURCE_DIR}/share/macos/halvik-diagnostic.icns")
target_sources(halvik-diagnostic PRIVATE "${icon}")
set_source_files_properties("${icon}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
set_target_properties(halvik-diagnostic PROPERTIES
  MACOSX_BUNDLE ON
  MACOSX_BUNDLE_INFO_PLIST "${PROJECT_SOURCE_DIR}/share/macos/Info.plist.in"
  MACOSX_BUNDLE_GUI_IDENTIFIER example.halvik.Diagnostic
  MACOSX_BUNDLE_BUNDLE_NAME "Halvik Diagnostic"
  MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}"
  MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
  MACOSX_BUNDLE_ICON_FILE halvik-diagnostic.icns)
install(TARGETS halvik-diagnostic BUNDLE DESTINATION .)
# Where the system finds the bundle of a program by the program's own folder.
install(TARGETS ${halvik_helpers} DESTINATION halvik-diagnostic.app/Contents/MacOS)
install(PROGRAMS ${halvik_scripts} DESTINATION halvik-diagnostic.app/Contents/MacOS)
