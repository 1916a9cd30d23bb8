# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Completes the options of halvik-diagnostic in fish, and the file of -o=.

# As arguments, since fish would also offer the value in a word of its own, where the program does not look for it.
function __halvik_diagnostic_values
    printf '%s\talso test this domain\n' -d= --domain=
    printf '%s\twrite the report to a file\n' -o= --output=
end

function __halvik_diagnostic_files
    set -l word (commandline --current-token --cut-at-cursor)
    set -l option (string match --regex -- '^(?:-o|--output)=' $word)
    or return
    for path in (__fish_complete_path (string replace -- $option '' $word))
        echo $option$path
    end
end

complete -c halvik-diagnostic --no-files
complete -c halvik-diagnostic -n 'string match -q -- "-*" (commandline -ct)' -a '(__halvik_diagnostic_values)'
complete -c halvik-diagnostic -a '(__halvik_diagnostic_files)'
# Old-style, as the program knows no letters that share a hyphen.
complete -c halvik-diagnostic -o s -l silent -d 'run at once, without a window'
complete -c halvik-diagnostic -o i -l internet -d 'upload the report'
complete -c halvik-diagnostic -o c -l console -d 'print the report'
complete -c halvik-diagnostic -l skv -d 'run the tests of the Skivra'
complete -c halvik-diagnostic -l noskv -d 'leave out the tests of the Skivra'
complete -c halvik-diagnostic -o h -o '?' -l help -d 'print the usage'
