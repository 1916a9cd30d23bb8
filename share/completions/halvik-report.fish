# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-report in fish; files are completed anyway.

complete -c halvik-report -l json -d 'print everything as JSON'
complete -c halvik-report -l html -d 'print one page'
complete -c halvik-report -l compare -d 'print what is different'
complete -c halvik-report -l version -d 'print the version'
complete -c halvik-report -s h -l help -d 'print the usage'
