# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-diagnostic in bash, and the file of -o=.

_halvik_diagnostic() {
  local word=$2 option=
  # Bash takes "-o=report" for three words.
  if [[ $word == = ]]; then
    word=
    option=$3
  elif [[ $3 == = ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $option in
    '')
      mapfile -t COMPREPLY < <(compgen -W '-d= --domain= -s --silent -i --internet -o= --output= -c --console
        --skv --noskv -h --help -?' -- "$word")
      if [[ ${COMPREPLY-} == *= ]]; then
        compopt -o nospace
      fi
      ;;
    -o | --output)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames
      ;;
  esac
}

complete -F _halvik_diagnostic halvik-diagnostic
