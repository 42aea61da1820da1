# fish completion for audrel-record

# Names that JSON cannot hold as they are, with quotes or control characters, are left out.
function __audrel_record_applications
    audrel-record --list --json 2>/dev/null |
        string match --regex --groups-only '"name": "([^"\\\\]*)", "bundleIdentifier"'
end

# The ending of a file that is named already decides.
function __audrel_record_formats
    set -l formats (commandline -opc | string match --regex --groups-only '\.(m4a|wav)$')
    string split ' ' (test -n "$formats"; and echo $formats; or echo 'm4a wav')
end

# Whether none of these options stands there, beside those that nothing can be added to.
function __audrel_record_lacks
    set -l words (commandline -opc)
    if contains -- $words[-1] -a --app -f --format -o --output -d --duration # a value comes next
        set --erase words[-1]
    end
    for option in -h --help -V --version $argv
        if string match --quiet -- "$option" $words; or string match --quiet -- "$option=*" $words
            return 1
        end
    end
end

function __audrel_record_repairs
    contains -- --repair (commandline -opc)
end

complete -c audrel-record -f
complete -c audrel-record -n '__audrel_record_lacks --repair -l --list -a --app -f --format -o --output -d --duration' -s l -l list -d 'List the applications that can be recorded'
complete -c audrel-record -n '__audrel_record_lacks --repair -l --list -a --app' -s a -l app -x -a '(__audrel_record_applications)' -d 'Record one application'
complete -c audrel-record -n '__audrel_record_lacks --repair -l --list -f --format' -s f -l format -x -a '(__audrel_record_formats)' -d 'Format of the file'
complete -c audrel-record -n '__audrel_record_lacks --repair -l --list -o --output' -s o -l output -x -a '(__fish_complete_directories (commandline -ct))' -d 'Record to this file, or into this folder'
complete -c audrel-record -n '__audrel_record_lacks --repair -l --list -d --duration' -s d -l duration -x -d 'Stop after exactly this time (90, 0.5, 1:30, 1h2m)'
complete -c audrel-record -n '__audrel_record_lacks --repair --demo' -l demo -d 'Use a private audio server that plays a melody'
complete -c audrel-record -n '__audrel_record_lacks --repair --demo -l --list -a --app -f --format -o --output -d --duration' -l repair -d 'Make recordings whole that were cut off'
complete -c audrel-record -n '__audrel_record_repairs' -F
complete -c audrel-record -n '__audrel_record_repairs; and __audrel_record_lacks --force' -l force -d 'Repair where the file system has no locks'
complete -c audrel-record -n '__audrel_record_lacks --json' -l json -d 'Print the result, or the list, as JSON'
complete -c audrel-record -n '__audrel_record_lacks -q --quiet' -s q -l quiet -d 'Print nothing but errors and warnings'
complete -c audrel-record -n 'test (count (commandline -opc)) -eq 1' -s h -l help -d 'Print a summary of the options'
complete -c audrel-record -n 'test (count (commandline -opc)) -eq 1' -s V -l version -d 'Print the version'
