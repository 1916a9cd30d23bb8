# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# What `cpack` makes of the installed files: a Debian package.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Halvik)
set(CPACK_PACKAGE_CONTACT "Halvik support <support@halvik.example>" CACHE STRING "Who maintains the package")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Starts a fixed plan of diagnostic commands, such as dig, ping and traceroute,
all at once, joins what they print into one report, and sends it to the
support staff of the service. The answer is the address of a results page.
.
It has a window with a start button. From a script, the report can be printed
or written to a file instead.")

# The libraries come by themselves; among their packages, libqt6gui6 holds Qt's plugin for X11. Those of the window are
# only recommended, which settings.cmake sees to: a server needs nothing of a desktop.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_HALVIK_BINARY_DIR "${PROJECT_BINARY_DIR}")
# A tool of the plan that is missing ends every run; without certificates no report can be sent. Debian 12's ping has a
# capability; Debian 13's needs linux-sysctl-defaults, or only root may use it.
string(CONCAT CPACK_DEBIAN_PACKAGE_DEPENDS "bind9-dnsutils, ca-certificates, curl, iputils-ping, "
  "linux-sysctl-defaults | iputils-ping (<< 3:20240905), net-tools, procps, traceroute")
# libproxy-tools reads the desktop's proxy settings, xdg-utils opens links, gio of libglib2.0-bin the saved report,
# hicolor-icon-theme and qt6-svg-plugins (libqt6svg6 on Debian 12) show the icon, and qt6-wayland opens the window
# on Wayland without X11. Everything else works without them.
string(CONCAT CPACK_DEBIAN_PACKAGE_RECOMMENDS "hicolor-icon-theme, libglib2.0-bin, libproxy-tools, "
  "qt6-svg-plugins | libqt6svg6 (<< 6.7.2-5~), qt6-wayland, xdg-utils")

set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/packaging/debian/settings.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/debian/arrange.cmake")
include(CPack)

# The reader of reports is a package of its own.
configure_file(packaging/debian/reader.cmake.in CPackReaderConfig.cmake @ONLY)
