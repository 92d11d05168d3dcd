# fish completion of marrowctl

# True when the command stands behind the program's name.
function __marrowctl_has_command
    set -l words (commandline -opc)
    test "$words[2]" = $argv[1]
end

function __marrowctl_has_none
    test (count (commandline -opc)) -eq 1
end

# True when one of the fleet's commands stands behind it, or none of them, where none is named.
function __marrowctl_fleet
    set -l words (commandline -opc)
    test "$words[2]" = fleet; or return 1
    test (count $argv) -gt 0; or test (count $words) -eq 2; or return 1
    test (count $argv) -eq 0; or contains -- "$words[3]" $argv
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
complete -c marrowctl -n __marrowctl_has_none -a fleet -d 'start a run on many clients, and watch it'
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
complete -c marrowctl -n '__marrowctl_has_command run' -l via -x -a 'clush pdsh ssh parallel ansible srun' -d 'run it on many clients'
complete -c marrowctl -n '__marrowctl_has_command run' -l hosts -rF -d 'its clients: a file, or names'
complete -c marrowctl -n '__marrowctl_has_command run' -l control -x -a '(__fish_complete_directories)' -d 'folder on the share'
complete -c marrowctl -n '__marrowctl_has_command run' -l run -x -d 'name of the run'
complete -c marrowctl -n '__marrowctl_has_command run' -l give-up -x -d 'clients stop when nothing has come for so long'
complete -c marrowctl -n '__marrowctl_has_command run' -l timeout -x -d 'report what is there after so long'
complete -c marrowctl -n '__marrowctl_has_command run' -l marrowctl -rF -d 'marrowctl on the clients'
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

complete -c marrowctl -n __marrowctl_fleet -a arm -d 'make this machine a client that waits for a run'
complete -c marrowctl -n __marrowctl_fleet -a publish -d 'start all clients that wait, in one minute'
complete -c marrowctl -n __marrowctl_fleet -a watch -d 'show how far a run is, until it is complete'
complete -c marrowctl -n __marrowctl_fleet -a conduct -d 'start one phase after the other'
complete -c marrowctl -n __marrowctl_fleet -a probe -d 'try what a share really does'
complete -c marrowctl -n __marrowctl_fleet -a unlock -d 'show a lock that someone left, or remove it'
complete -c marrowctl -n __marrowctl_fleet -a recipe -d 'print how an engine starts the clients'
set -l folders '(__fish_complete_directories)'
complete -c marrowctl -n '__marrowctl_fleet arm publish watch conduct recipe' -l control -x -a $folders -d 'folder on the share'
complete -c marrowctl -n '__marrowctl_fleet arm publish watch conduct recipe' -l run -x -d 'name of the run'
complete -c marrowctl -n '__marrowctl_fleet publish watch conduct recipe' -l hosts -rF -d 'clients: a file, or names'
complete -c marrowctl -n '__marrowctl_fleet publish watch conduct' -l clients -x -d 'how many clients there are'
complete -c marrowctl -n '__marrowctl_fleet arm' -l detach -d 'come back when the client is armed'
complete -c marrowctl -n '__marrowctl_fleet arm recipe' -l give-up -x -d 'stop when nothing has come for so long'
complete -c marrowctl -n '__marrowctl_fleet arm' -l program -rF -d 'the program that measures'
complete -c marrowctl -n '__marrowctl_fleet publish' -l dry-run -d 'publish nothing'
complete -c marrowctl -n '__marrowctl_fleet publish conduct' -l again -d 'an earlier run may have left files'
complete -c marrowctl -n '__marrowctl_fleet publish conduct' -l now -d 'do not wait for the best second'
complete -c marrowctl -n '__marrowctl_fleet watch conduct' -l timeout -x -d 'stop after so long'
complete -c marrowctl -n '__marrowctl_fleet watch probe' -l json -d 'one JSON document'
complete -c marrowctl -n '__marrowctl_fleet publish conduct' -a '(__marrowctl_settings_files)'
complete -c marrowctl -n '__marrowctl_fleet probe' -l quick -d 'a few seconds'
complete -c marrowctl -n '__marrowctl_fleet probe' -a $folders
complete -c marrowctl -n '__marrowctl_fleet unlock' -l table -x -a '(__marrowctl_tables)' -d 'the results table'
complete -c marrowctl -n '__marrowctl_fleet unlock' -l age -x -d 'a lock that is not older stays'
complete -c marrowctl -n '__marrowctl_fleet unlock' -l yes -d 'remove it'
complete -c marrowctl -n '__marrowctl_fleet recipe' -l marrowctl -rF -d 'marrowctl on the clients'
complete -c marrowctl -n '__marrowctl_fleet recipe' -l image -x -d 'kubernetes: what holds both programs'
complete -c marrowctl -n '__marrowctl_fleet recipe' -l mount -x -a $folders -d 'kubernetes: folder that the pods get'
complete -c marrowctl -n '__marrowctl_fleet recipe' -l claim -x -d 'kubernetes: volume claim behind it'
complete -c marrowctl -n '__marrowctl_fleet recipe' -a 'clush pdsh ssh parallel ansible srun sbatch kubernetes' -d engine
