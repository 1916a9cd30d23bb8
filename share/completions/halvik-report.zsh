#compdef halvik-report
# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-report in zsh, and the names of reports.

_arguments \
  '(--html --compare)--json[print everything as JSON]' \
  '(--json --compare)--html[print one page]' \
  '(--json --html)--compare[print what is different]' \
  '(- *)--version[print the version]' \
  '(- *)'{-h,--help}'[print the usage]' \
  '*:report:_files'
