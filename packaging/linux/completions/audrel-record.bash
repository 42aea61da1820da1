# bash completion for audrel-record

_audrel_record() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local IFS=$'\n'
  case $previous in
    --app)
      local names
      names=$(audrel-record --list --json 2>/dev/null |
        sed -n 's/.*"name": "\(\([^"\\]\|\\.\)*\)", "bundleIdentifier".*/\1/p')
      mapfile -t COMPREPLY < <(compgen -W "$names" -- "$current" | sed 's/ /\\ /g')
      ;;
    --format) mapfile -t COMPREPLY < <(compgen -W $'m4a\nwav' -- "$current") ;;
    --output) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    --duration) ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W \
        $'--list\n--app\n--format\n--output\n--duration\n--demo\n--json\n--quiet\n--help\n--version' \
        -- "$current")
      ;;
  esac
}

complete -F _audrel_record audrel-record
