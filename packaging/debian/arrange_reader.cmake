# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# For the package of the reader what arrange.cmake is for that of the program.

set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share")
set(doc "${share}/doc/halvik-report")
set(file_permissions OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

execute_process(COMMAND strip --remove-section=.comment --remove-section=.note
  "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/bin/halvik-report" COMMAND_ERROR_IS_FATAL ANY)
file(MAKE_DIRECTORY "${share}/zsh/vendor-completions")
file(RENAME "${share}/zsh/site-functions/_halvik-report" "${share}/zsh/vendor-completions/_halvik-report")
file(REMOVE_RECURSE "${share}/zsh/site-functions")
file(COPY "${CMAKE_CURRENT_LIST_DIR}/changelog" "${CMAKE_CURRENT_LIST_DIR}/copyright"
  DESTINATION "${doc}" FILE_PERMISSIONS ${file_permissions})
execute_process(COMMAND gzip --best --no-name "${share}/man/man1/halvik-report.1" "${doc}/changelog"
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr" -type d -exec chmod 755 {} +
  COMMAND_ERROR_IS_FATAL ANY)
