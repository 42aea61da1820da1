# fish completion for audrel, which takes one option at most

complete -c audrel -f
set -l is_first 'test (count (commandline -opc)) -eq 1'
complete -c audrel -n $is_first -l demo -d 'Record from a private audio server that plays a melody'
complete -c audrel -n $is_first -l help -d 'Print a summary of the options'
complete -c audrel -n $is_first -l version -d 'Print the version'
