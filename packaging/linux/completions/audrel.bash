# bash completion for audrel, which takes one option at most

_audrel() {
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W '--demo --help --version' -- "${COMP_WORDS[1]}")
  fi
}

complete -F _audrel audrel
