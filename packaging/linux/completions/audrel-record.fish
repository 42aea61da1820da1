# fish completion for audrel-record

# Names that JSON cannot hold as they are, with quotes or control characters, are left out.
function __audrel_record_applications
    audrel-record --list --json 2>/dev/null |
        string match --regex --groups-only '"name": "([^"\\\\]*)", "bundleIdentifier"'
end

complete -c audrel-record -f
complete -c audrel-record -l list -d 'List the applications that can be recorded'
complete -c audrel-record -l app -x -a '(__audrel_record_applications)' -d 'Record one application'
complete -c audrel-record -l format -x -a 'm4a wav' -d 'Format of the file'
complete -c audrel-record -l output -r -F -d 'Record to this file'
complete -c audrel-record -l duration -x -d 'Stop after exactly this time (90, 0.5, 1:30, 1h2m)'
complete -c audrel-record -l demo -d 'Record a melody from a private audio server'
complete -c audrel-record -l json -d 'Print the result, or the list, as JSON'
complete -c audrel-record -l quiet -d 'Print nothing but errors and warnings'
complete -c audrel-record -l help -d 'Print a summary of the options'
complete -c audrel-record -l version -d 'Print the version'
