# bash completion for audrel-record

# The applications' names, a line each. Programs choose their own, so they are taken for text alone;
# those that JSON cannot hold as they are, with quotes or control characters, are left out.
_audrel_record_applications() {
  audrel-record --list --json 2>/dev/null |
    sed -n 's/^.*"name": "\([^"\\]*\)", "bundleIdentifier".*$/\1/p'
}

_audrel_record() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    --app)
      local typed=${current//\\/} name
      while IFS= read -r name; do
        if [[ ${name,,} == "${typed,,}"* ]]; then
          COMPREPLY+=("$(printf '%q' "$name")")
        fi
      done < <(_audrel_record_applications)
      ;;
    --format) mapfile -t COMPREPLY < <(compgen -W 'm4a wav' -- "$current") ;;
    --output)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
    --duration) ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W '--list --app --format --output --duration --demo --json
        --quiet --help --version' -- "$current")
      ;;
  esac
}

complete -F _audrel_record audrel-record
