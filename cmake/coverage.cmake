# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Counting branches, for scripts/coverage. The platform is not counted: of what differs by system half is never there,
# and the child of a clone would count in memory that is its parent's.

foreach(target IN ITEMS halvik_modules halvik_controller halvik_window halvik-diagnostic ${halvik_helpers})
  target_compile_options(${target} PRIVATE --coverage -O0)
endforeach()

# The counts are written when a process ends, but the program ends in ways that run nothing any more: they are written
# before.
target_sources(halvik_platform PRIVATE tests/unit/support/coverage_flush.cpp)
target_link_options(halvik_platform INTERFACE
  --coverage LINKER:--wrap=_Exit LINKER:--wrap=abort LINKER:--wrap=execv)
