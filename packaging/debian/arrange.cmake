# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Run by cpack between the installation into a folder and the making of the package: what Debian wants in other places
# or forms than `cmake --install` leaves it in, and files that only a Debian package has.

set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share")
set(doc "${share}/doc/halvik-diagnostic")
set(file_permissions OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

execute_process(COMMAND strip --remove-section=.comment --remove-section=.note
  "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/bin/halvik-diagnostic"
  "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/libexec/halvik-diagnostic/halvik-upload.so"
  "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/libexec/halvik-diagnostic/halvik-diagnostic-window"
  COMMAND_ERROR_IS_FATAL ANY)

# Debian's zsh reads the functions of packages from a folder of its own.
file(MAKE_DIRECTORY "${share}/zsh/vendor-completions")
file(RENAME "${share}/zsh/site-functions/_halvik-diagnostic" "${share}/zsh/vendor-completions/_halvik-diagnostic")
file(REMOVE_RECURSE "${share}/zsh/site-functions")

file(COPY "${CMAKE_CURRENT_LIST_DIR}/changelog" "${CMAKE_CURRENT_LIST_DIR}/copyright"
  DESTINATION "${doc}" FILE_PERMISSIONS ${file_permissions})
# Without the name and the time of the uncompressed file, which differ from build to build.
execute_process(COMMAND gzip --best --no-name "${share}/man/man1/halvik-diagnostic.1" "${doc}/changelog"
  COMMAND_ERROR_IS_FATAL ANY)

# The folders, which cpack made, must not bear the umask of whoever started it.
execute_process(COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr" -type d -exec chmod 755 {} +
  COMMAND_ERROR_IS_FATAL ANY)
