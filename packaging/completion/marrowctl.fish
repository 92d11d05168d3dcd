# fish completion of marrowctl

# True when the command stands behind the program's name.
function __marrowctl_has_command
    set -l words (commandline -opc)
    test "$words[2]" = $argv[1]
end

function __marrowctl_has_none
    test (count (commandline -opc)) -eq 1
end

# Files are offered to a command that nothing is known of; folders end in "/".
function __marrowctl_settings_files
    complete -C "__marrowctl_unknown_command "(commandline -ct) | string match -ir '^.*(?:/|\.bst)$'
end

function __marrowctl_tables
    complete -C "__marrowctl_unknown_command "(commandline -ct) | string match -ir '^.*(?:/|\.csv)$'
end

set -l findings unknown-allow unknown-method bad-number empty-field line-too-long too-many-tests \
    unintended-chain behind-chain chain-missing chain-cycle not-a-settings-name path-too-long folder-refused \
    folder-complaint exists-already whole-copy-refused copies-onto-itself memory-to-memory negative-size \
    number-wraps size-capped size-unknown done-flag-one no-done-flag comment-indented byte-order-mark \
    unknown-placeholder shared-destination anonymous-rows no-table no-log source-missing reads-own-write \
    no-effect measures-nothing crowded-lock comma-in-path table-is-special space-short

complete -c marrowctl -f
complete -c marrowctl -n __marrowctl_has_none -a check -d 'say what settings files will do, and what is wrong'
complete -c marrowctl -n __marrowctl_has_none -a sweep -d 'write settings files from a matrix'
complete -c marrowctl -n __marrowctl_has_none -a run -d 'check a settings file, run it here, and judge what came of it'
complete -c marrowctl -n __marrowctl_has_none -a report -d 'say what results tables hold'
complete -c marrowctl -n __marrowctl_has_none -a compare -d 'say which tests of two runs became faster or slower'
complete -c marrowctl -s h -l help -d 'show help'
complete -c marrowctl -l version -d 'show the version'

complete -c marrowctl -n '__marrowctl_has_command check' -l host -x -d 'a client, by its host name'
complete -c marrowctl -n '__marrowctl_has_command check' -l hosts -rF -d 'clients: a file, or names'
complete -c marrowctl -n '__marrowctl_has_command check' -l clients -x -d 'how many clients there are'
complete -c marrowctl -n '__marrowctl_has_command check' -l strict -d 'warnings count'
complete -c marrowctl -n '__marrowctl_has_command check' -l summary -d 'totals and findings only'
complete -c marrowctl -n '__marrowctl_has_command check' -l json -d 'one JSON document'
complete -c marrowctl -n '__marrowctl_has_command check' -l format -x -a 'text gcc' -d 'how findings are shown'
complete -c marrowctl -n '__marrowctl_has_command check' -l explain -x -a "$findings" -d 'the story behind a finding'
complete -c marrowctl -n '__marrowctl_has_command check' -a '(__marrowctl_settings_files)'

complete -c marrowctl -n '__marrowctl_has_command sweep' -l method -x -a '(__fish_append , posix ansic stream)' -d interfaces
complete -c marrowctl -n '__marrowctl_has_command sweep' -l kind -x -a '(__fish_append , write read copy)' -d 'kinds of tests'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l chunk -x -d 'bytes of each call'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l size -x -d 'bytes of each file'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l buffer -x -a '(__fish_append , -1 0 1)' -d 'buffer of the interface'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l wait -x -d 'pause after each chunk, milliseconds'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l iterations -x -d 'how often each test runs'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l flush -x -a '(__fish_append , no yes)' -d 'flush after each chunk'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l prealloc -x -a '(__fish_append , no yes)' -d 'reserve the space first'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l dest -rF -d 'where files are written'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l source -rF -d 'file that is read'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l log -rF -d 'text log'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l table -rF -d 'results table'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l neighbour -rF -d 'clients, each of which reads the files of the next'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l output -x -a '(__marrowctl_settings_files)' -d 'settings file to be written'
complete -c marrowctl -n '__marrowctl_has_command sweep' -l force -d 'overwrite what is there'

complete -c marrowctl -n '__marrowctl_has_command run' -l strict -d 'warnings stop it, too'
complete -c marrowctl -n '__marrowctl_has_command run' -l marrowbench -rF -d 'the program that measures'
complete -c marrowctl -n '__marrowctl_has_command run' -a '(__marrowctl_settings_files)'

for command in run report compare
    complete -c marrowctl -n "__marrowctl_has_command $command" -l html -rF -d 'write a page with charts'
    complete -c marrowctl -n "__marrowctl_has_command $command" -l force -d 'overwrite the page'
end
for command in report compare
    set -l chosen "__marrowctl_has_command $command"
    complete -c marrowctl -n $chosen -l settings -x -a '(__marrowctl_settings_files)' -d 'settings file that was run'
    complete -c marrowctl -n $chosen -l hosts -rF -d 'clients: a file, or names'
    complete -c marrowctl -n $chosen -l host-pattern -x -d 'where names of clients stand'
    complete -c marrowctl -n $chosen -l gap -x -d 'minutes after which a new run begins'
    complete -c marrowctl -n $chosen -l all-runs -d 'take all runs together'
    complete -c marrowctl -n $chosen -l json -d 'one JSON document'
    complete -c marrowctl -n $chosen -a '(__marrowctl_tables)'
end
complete -c marrowctl -n '__marrowctl_has_command report' -l clients -x -d 'how many clients there should be'
complete -c marrowctl -n '__marrowctl_has_command report' -l done -x -a '(__fish_complete_directories)' -d 'where the done markers are'
complete -c marrowctl -n '__marrowctl_has_command report' -l link -x -d "speed of each client's link"
complete -c marrowctl -n '__marrowctl_has_command report' -l tidy -d 'a clean table'
complete -c marrowctl -n '__marrowctl_has_command compare' -l fail-if-slower -x -d 'exit status 3 beyond this'
