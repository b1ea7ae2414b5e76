# SPDX-License-Identifier: MIT
complete -c hollin -f -a '(__fish_complete_suffix .dat)'
complete -c hollin -s h -l help -d 'Print help'
complete -c hollin -l version -d 'Print the version'
