# Runs commands so that none outlives the script that sources this, with bash.

supervisedGroup=

# Runs "$@" in a process group of its own, and answers its exit status. When the script is told to
# end meanwhile, so is the whole group.
supervise() {
  set -m
  "$@" </dev/null &
  supervisedGroup=$!
  set +m
  local status=0
  wait "$supervisedGroup" || status=$?
  supervisedGroup=
  return "$status"
}

endSupervised() {
  if [[ -n "$supervisedGroup" ]]; then
    kill -TERM -- "-$supervisedGroup" 2>/dev/null || true
    wait "$supervisedGroup" 2>/dev/null || true
  fi
}

trap 'endSupervised; exit 130' INT
trap 'endSupervised; exit 143' TERM
trap 'endSupervised; exit 129' HUP
