#compdef halvik-diagnostic
# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-diagnostic in zsh, and the file of -o=.

_arguments \
  '(-d= --domain=)'{-d=-,--domain=-}'[also test this domain]:domain: ' \
  '(-s --silent)'{-s,--silent}'[run at once, without a window]' \
  '(-i --internet)'{-i,--internet}'[upload the report]' \
  '(-o= --output=)'{-o=-,--output=-}'[write the report to a file]:file:_files' \
  '(-c --console)'{-c,--console}'[print the report]' \
  '(--noskv)--skv[run the tests of the Skivra]' \
  '(--skv)--noskv[leave out the tests of the Skivra]' \
  '(- *)'{-h,--help,-\?}'[print the usage]'
