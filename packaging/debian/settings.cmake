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
