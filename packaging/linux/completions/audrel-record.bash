# bash completion for audrel-record

# The applications' names, a line each. Programs choose their own, so they are taken for text alone;
# those that JSON cannot hold as they are, with quotes or control characters, are left out.
_audrel_record_applications() {
  audrel-record --list --json 2>/dev/null |
    sed -n 's/^.*"name": "\([^"\\]*\)", "bundleIdentifier".*$/\1/p'
}

# Offers those names that begin with what was typed, fit for the quotes in which that stands.
_audrel_record_offer_applications() {
  local typed=$1 quote= name
  if [[ $typed == [\'\"]* ]]; then
    quote=${typed:0:1} typed=${typed:1}
  else
    typed=${typed//\\/}
  fi
  while IFS= read -r name; do
    [[ ${name,,} == "${typed,,}"* ]] || continue
    case $quote in
      \') [[ $name == *\'* ]] || COMPREPLY+=("$name") ;;
      \") [[ $name == *[\$\`!]* ]] || COMPREPLY+=("$name") ;;  # which would still mean something
      *) COMPREPLY+=("$(printf '%q' "$name")") ;;
    esac
  done < <(_audrel_record_applications)
}

_audrel_record() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local options='--list --app --format --output --duration --demo --repair --json --quiet' formats='m4a wav'
  local word repairs=
  COMPREPLY=()
  # "--app=Web" is three words here.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  if ((COMP_CWORD == 1)); then
    options+=' --help --version'
  fi
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      -h | --help | -V | --version) return ;;
      -l | --list) options='--demo --json --quiet' ;;
      -a | --app) options=${options/--app/} ;;
      -f | --format) options=${options/--format/} ;;
      -o | --output) options=${options/--output/} ;;
      -d | --duration) options=${options/--duration/} ;;
      -q | --quiet) options=${options/--quiet/} ;;
      --repair) repairs=yes options='--force --json --quiet' ;;
      --demo | --json | --force) options=${options/$word/} ;;
      *.m4a | *.wav) formats=${word##*.} ;;
    esac
    case $word in
      -[afod] | --app | --format | --output | --duration) options=${options/--list/} options=${options/--repair/} ;;
      --demo) options=${options/--repair/} ;;
    esac
  done
  case $previous in
    -a | --app) _audrel_record_offer_applications "$current" ;;
    -f | --format) mapfile -t COMPREPLY < <(compgen -W "$formats" -- "$current") ;;
    -o | --output) # what is there already is not written over
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      ;;
    -d | --duration) ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
      if [[ $repairs && $current != -* ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
      fi
      ;;
  esac
}

complete -F _audrel_record audrel-record
