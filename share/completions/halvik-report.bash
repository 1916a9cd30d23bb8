# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-report in bash, and the names of reports.

_halvik_report() {
  if [[ $2 == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--json --html --compare --version -h --help' -- "$2")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$2")
    compopt -o filenames
  fi
}

complete -F _halvik_report halvik-report
