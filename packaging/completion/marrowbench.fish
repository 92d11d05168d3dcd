# fish completion of marrowbench

# True when the word to complete is the given one behind the program's name.
function __marrowbench_completes_word
    test (count (commandline -opc)) -eq $argv[1]
end

# The flag counts in any case.
function __marrowbench_has_root
    set -l words (commandline -opc)
    set -q words[2]; and string match -qir -- '^-zzroot$' $words[2]
end

# Files are offered to a command that nothing is known of; folders end in "/".
function __marrowbench_files
    complete -C "__marrowbench_unknown_command "(commandline -ct) | string match -ir -- $argv[1]
end

complete -c marrowbench -f
complete -c marrowbench -n '__marrowbench_completes_word 1' -a '-zzRoot\t"accepted and not used, with a folder"'
complete -c marrowbench -n '__marrowbench_completes_word 1' -a '(__marrowbench_files "^.*(?:/|\.bst)\$")'
complete -c marrowbench -n '__marrowbench_completes_word 2; and __marrowbench_has_root' -a '(__marrowbench_files "^.*/\$")'
complete -c marrowbench -n '__marrowbench_completes_word 3; and __marrowbench_has_root' -a '(__marrowbench_files "^.*(?:/|\.bst)\$")'
